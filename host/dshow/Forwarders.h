// Picture, sound and position interfaces that hand every call on.
//
// The graph offers these interfaces always and hands the calls to the filter that really has them. A filter
// that has such an interface derives from the same class and overrides what it means; the rest answers
// E_NOTIMPL.
//
// Portable, like FilterBase.
#pragma once

#include "host/dshow/ComObject.h"
#include "platform/dshow_api.h"

namespace dshow {

// Target() is where calls go; without one they answer Absent().
template <class Interface, class Base> class Forwarder : public Base {
public:
    using Base::Base;

protected:
    ~Forwarder() = default;
    virtual Interface* Target() { return nullptr; }
    virtual HRESULT Absent() { return E_NOTIMPL; }

    template <class... Parameters, class... Arguments>
    HRESULT Forward(HRESULT (STDMETHODCALLTYPE Interface::*method)(Parameters...), Arguments... arguments) {
        Interface* target = Target();
        return target != nullptr ? (target->*method)(arguments...) : Absent();
    }
};

class VideoWindowFace : public Forwarder<IVideoWindow, NoDispatch<Face<IVideoWindow>>> {
public:
    using Forwarder::Forwarder;
    STDMETHODIMP put_Caption(BSTR caption) override { return Forward(&IVideoWindow::put_Caption, caption); }
    STDMETHODIMP get_Caption(BSTR* caption) override { return Forward(&IVideoWindow::get_Caption, caption); }
    STDMETHODIMP put_WindowStyle(LONG windowStyle) override {
        return Forward(&IVideoWindow::put_WindowStyle, windowStyle);
    }
    STDMETHODIMP get_WindowStyle(LONG* windowStyle) override {
        return Forward(&IVideoWindow::get_WindowStyle, windowStyle);
    }
    STDMETHODIMP put_WindowStyleEx(LONG windowStyleEx) override {
        return Forward(&IVideoWindow::put_WindowStyleEx, windowStyleEx);
    }
    STDMETHODIMP get_WindowStyleEx(LONG* windowStyleEx) override {
        return Forward(&IVideoWindow::get_WindowStyleEx, windowStyleEx);
    }
    STDMETHODIMP put_AutoShow(LONG autoShow) override { return Forward(&IVideoWindow::put_AutoShow, autoShow); }
    STDMETHODIMP get_AutoShow(LONG* autoShow) override { return Forward(&IVideoWindow::get_AutoShow, autoShow); }
    STDMETHODIMP put_WindowState(LONG windowState) override {
        return Forward(&IVideoWindow::put_WindowState, windowState);
    }
    STDMETHODIMP get_WindowState(LONG* windowState) override {
        return Forward(&IVideoWindow::get_WindowState, windowState);
    }
    STDMETHODIMP put_BackgroundPalette(LONG backgroundPalette) override {
        return Forward(&IVideoWindow::put_BackgroundPalette, backgroundPalette);
    }
    STDMETHODIMP get_BackgroundPalette(LONG* backgroundPalette) override {
        return Forward(&IVideoWindow::get_BackgroundPalette, backgroundPalette);
    }
    STDMETHODIMP put_Visible(LONG visible) override { return Forward(&IVideoWindow::put_Visible, visible); }
    STDMETHODIMP get_Visible(LONG* visible) override { return Forward(&IVideoWindow::get_Visible, visible); }
    STDMETHODIMP put_Left(LONG left) override { return Forward(&IVideoWindow::put_Left, left); }
    STDMETHODIMP get_Left(LONG* left) override { return Forward(&IVideoWindow::get_Left, left); }
    STDMETHODIMP put_Width(LONG width) override { return Forward(&IVideoWindow::put_Width, width); }
    STDMETHODIMP get_Width(LONG* width) override { return Forward(&IVideoWindow::get_Width, width); }
    STDMETHODIMP put_Top(LONG top) override { return Forward(&IVideoWindow::put_Top, top); }
    STDMETHODIMP get_Top(LONG* top) override { return Forward(&IVideoWindow::get_Top, top); }
    STDMETHODIMP put_Height(LONG height) override { return Forward(&IVideoWindow::put_Height, height); }
    STDMETHODIMP get_Height(LONG* height) override { return Forward(&IVideoWindow::get_Height, height); }
    STDMETHODIMP put_Owner(OAHWND owner) override { return Forward(&IVideoWindow::put_Owner, owner); }
    STDMETHODIMP get_Owner(OAHWND* owner) override { return Forward(&IVideoWindow::get_Owner, owner); }
    STDMETHODIMP put_MessageDrain(OAHWND drain) override { return Forward(&IVideoWindow::put_MessageDrain, drain); }
    STDMETHODIMP get_MessageDrain(OAHWND* drain) override { return Forward(&IVideoWindow::get_MessageDrain, drain); }
    STDMETHODIMP get_BorderColor(LONG* color) override { return Forward(&IVideoWindow::get_BorderColor, color); }
    STDMETHODIMP put_BorderColor(LONG color) override { return Forward(&IVideoWindow::put_BorderColor, color); }
    STDMETHODIMP get_FullScreenMode(LONG* fullScreenMode) override {
        return Forward(&IVideoWindow::get_FullScreenMode, fullScreenMode);
    }
    STDMETHODIMP put_FullScreenMode(LONG fullScreenMode) override {
        return Forward(&IVideoWindow::put_FullScreenMode, fullScreenMode);
    }
    STDMETHODIMP SetWindowForeground(LONG focus) override { return Forward(&IVideoWindow::SetWindowForeground, focus); }
    STDMETHODIMP NotifyOwnerMessage(OAHWND window, LONG message, LONG_PTR wParam, LONG_PTR lParam) override {
        return Forward(&IVideoWindow::NotifyOwnerMessage, window, message, wParam, lParam);
    }
    STDMETHODIMP SetWindowPosition(LONG left, LONG top, LONG width, LONG height) override {
        return Forward(&IVideoWindow::SetWindowPosition, left, top, width, height);
    }
    STDMETHODIMP GetWindowPosition(LONG* left, LONG* top, LONG* width, LONG* height) override {
        return Forward(&IVideoWindow::GetWindowPosition, left, top, width, height);
    }
    STDMETHODIMP GetMinIdealImageSize(LONG* width, LONG* height) override {
        return Forward(&IVideoWindow::GetMinIdealImageSize, width, height);
    }
    STDMETHODIMP GetMaxIdealImageSize(LONG* width, LONG* height) override {
        return Forward(&IVideoWindow::GetMaxIdealImageSize, width, height);
    }
    STDMETHODIMP GetRestorePosition(LONG* left, LONG* top, LONG* width, LONG* height) override {
        return Forward(&IVideoWindow::GetRestorePosition, left, top, width, height);
    }
    STDMETHODIMP HideCursor(LONG hideCursor) override { return Forward(&IVideoWindow::HideCursor, hideCursor); }
    STDMETHODIMP IsCursorHidden(LONG* cursorHidden) override {
        return Forward(&IVideoWindow::IsCursorHidden, cursorHidden);
    }
};

class BasicVideoFace : public Forwarder<IBasicVideo, NoDispatch<Face<IBasicVideo>>> {
public:
    using Forwarder::Forwarder;
    STDMETHODIMP get_AvgTimePerFrame(REFTIME* avgTimePerFrame) override {
        return Forward(&IBasicVideo::get_AvgTimePerFrame, avgTimePerFrame);
    }
    STDMETHODIMP get_BitRate(LONG* bitRate) override { return Forward(&IBasicVideo::get_BitRate, bitRate); }
    STDMETHODIMP get_BitErrorRate(LONG* bitErrorRate) override {
        return Forward(&IBasicVideo::get_BitErrorRate, bitErrorRate);
    }
    STDMETHODIMP get_VideoWidth(LONG* videoWidth) override { return Forward(&IBasicVideo::get_VideoWidth, videoWidth); }
    STDMETHODIMP get_VideoHeight(LONG* videoHeight) override {
        return Forward(&IBasicVideo::get_VideoHeight, videoHeight);
    }
    STDMETHODIMP put_SourceLeft(LONG sourceLeft) override { return Forward(&IBasicVideo::put_SourceLeft, sourceLeft); }
    STDMETHODIMP get_SourceLeft(LONG* sourceLeft) override { return Forward(&IBasicVideo::get_SourceLeft, sourceLeft); }
    STDMETHODIMP put_SourceWidth(LONG sourceWidth) override {
        return Forward(&IBasicVideo::put_SourceWidth, sourceWidth);
    }
    STDMETHODIMP get_SourceWidth(LONG* sourceWidth) override {
        return Forward(&IBasicVideo::get_SourceWidth, sourceWidth);
    }
    STDMETHODIMP put_SourceTop(LONG sourceTop) override { return Forward(&IBasicVideo::put_SourceTop, sourceTop); }
    STDMETHODIMP get_SourceTop(LONG* sourceTop) override { return Forward(&IBasicVideo::get_SourceTop, sourceTop); }
    STDMETHODIMP put_SourceHeight(LONG sourceHeight) override {
        return Forward(&IBasicVideo::put_SourceHeight, sourceHeight);
    }
    STDMETHODIMP get_SourceHeight(LONG* sourceHeight) override {
        return Forward(&IBasicVideo::get_SourceHeight, sourceHeight);
    }
    STDMETHODIMP put_DestinationLeft(LONG destinationLeft) override {
        return Forward(&IBasicVideo::put_DestinationLeft, destinationLeft);
    }
    STDMETHODIMP get_DestinationLeft(LONG* destinationLeft) override {
        return Forward(&IBasicVideo::get_DestinationLeft, destinationLeft);
    }
    STDMETHODIMP put_DestinationWidth(LONG destinationWidth) override {
        return Forward(&IBasicVideo::put_DestinationWidth, destinationWidth);
    }
    STDMETHODIMP get_DestinationWidth(LONG* destinationWidth) override {
        return Forward(&IBasicVideo::get_DestinationWidth, destinationWidth);
    }
    STDMETHODIMP put_DestinationTop(LONG destinationTop) override {
        return Forward(&IBasicVideo::put_DestinationTop, destinationTop);
    }
    STDMETHODIMP get_DestinationTop(LONG* destinationTop) override {
        return Forward(&IBasicVideo::get_DestinationTop, destinationTop);
    }
    STDMETHODIMP put_DestinationHeight(LONG destinationHeight) override {
        return Forward(&IBasicVideo::put_DestinationHeight, destinationHeight);
    }
    STDMETHODIMP get_DestinationHeight(LONG* destinationHeight) override {
        return Forward(&IBasicVideo::get_DestinationHeight, destinationHeight);
    }
    STDMETHODIMP SetSourcePosition(LONG left, LONG top, LONG width, LONG height) override {
        return Forward(&IBasicVideo::SetSourcePosition, left, top, width, height);
    }
    STDMETHODIMP GetSourcePosition(LONG* left, LONG* top, LONG* width, LONG* height) override {
        return Forward(&IBasicVideo::GetSourcePosition, left, top, width, height);
    }
    STDMETHODIMP SetDefaultSourcePosition() override { return Forward(&IBasicVideo::SetDefaultSourcePosition); }
    STDMETHODIMP SetDestinationPosition(LONG left, LONG top, LONG width, LONG height) override {
        return Forward(&IBasicVideo::SetDestinationPosition, left, top, width, height);
    }
    STDMETHODIMP GetDestinationPosition(LONG* left, LONG* top, LONG* width, LONG* height) override {
        return Forward(&IBasicVideo::GetDestinationPosition, left, top, width, height);
    }
    STDMETHODIMP SetDefaultDestinationPosition() override {
        return Forward(&IBasicVideo::SetDefaultDestinationPosition);
    }
    STDMETHODIMP GetVideoSize(LONG* width, LONG* height) override {
        return Forward(&IBasicVideo::GetVideoSize, width, height);
    }
    STDMETHODIMP GetVideoPaletteEntries(LONG startIndex, LONG entries, LONG* retrieved, LONG* palette) override {
        return Forward(&IBasicVideo::GetVideoPaletteEntries, startIndex, entries, retrieved, palette);
    }
    STDMETHODIMP GetCurrentImage(LONG* bufferSize, LONG* image) override {
        return Forward(&IBasicVideo::GetCurrentImage, bufferSize, image);
    }
    STDMETHODIMP IsUsingDefaultSource() override { return Forward(&IBasicVideo::IsUsingDefaultSource); }
    STDMETHODIMP IsUsingDefaultDestination() override { return Forward(&IBasicVideo::IsUsingDefaultDestination); }
};

class BasicAudioFace : public Forwarder<IBasicAudio, NoDispatch<Face<IBasicAudio>>> {
public:
    using Forwarder::Forwarder;
    STDMETHODIMP put_Volume(LONG volume) override { return Forward(&IBasicAudio::put_Volume, volume); }
    STDMETHODIMP get_Volume(LONG* volume) override { return Forward(&IBasicAudio::get_Volume, volume); }
    STDMETHODIMP put_Balance(LONG balance) override { return Forward(&IBasicAudio::put_Balance, balance); }
    STDMETHODIMP get_Balance(LONG* balance) override { return Forward(&IBasicAudio::get_Balance, balance); }
};

class MediaPositionFace : public Forwarder<IMediaPosition, NoDispatch<Face<IMediaPosition>>> {
public:
    using Forwarder::Forwarder;
    STDMETHODIMP get_Duration(REFTIME* length) override { return Forward(&IMediaPosition::get_Duration, length); }
    STDMETHODIMP put_CurrentPosition(REFTIME time) override {
        return Forward(&IMediaPosition::put_CurrentPosition, time);
    }
    STDMETHODIMP get_CurrentPosition(REFTIME* time) override {
        return Forward(&IMediaPosition::get_CurrentPosition, time);
    }
    STDMETHODIMP get_StopTime(REFTIME* time) override { return Forward(&IMediaPosition::get_StopTime, time); }
    STDMETHODIMP put_StopTime(REFTIME time) override { return Forward(&IMediaPosition::put_StopTime, time); }
    STDMETHODIMP get_PrerollTime(REFTIME* time) override { return Forward(&IMediaPosition::get_PrerollTime, time); }
    STDMETHODIMP put_PrerollTime(REFTIME time) override { return Forward(&IMediaPosition::put_PrerollTime, time); }
    STDMETHODIMP put_Rate(double rate) override { return Forward(&IMediaPosition::put_Rate, rate); }
    STDMETHODIMP get_Rate(double* rate) override { return Forward(&IMediaPosition::get_Rate, rate); }
    STDMETHODIMP CanSeekForward(LONG* canSeekForward) override {
        return Forward(&IMediaPosition::CanSeekForward, canSeekForward);
    }
    STDMETHODIMP CanSeekBackward(LONG* canSeekBackward) override {
        return Forward(&IMediaPosition::CanSeekBackward, canSeekBackward);
    }
};

class MediaSeekingFace : public Forwarder<IMediaSeeking, Face<IMediaSeeking>> {
public:
    using Forwarder::Forwarder;
    STDMETHODIMP GetCapabilities(DWORD* capabilities) override {
        return Forward(&IMediaSeeking::GetCapabilities, capabilities);
    }
    STDMETHODIMP CheckCapabilities(DWORD* capabilities) override {
        return Forward(&IMediaSeeking::CheckCapabilities, capabilities);
    }
    STDMETHODIMP IsFormatSupported(const GUID* format) override {
        return Forward(&IMediaSeeking::IsFormatSupported, format);
    }
    STDMETHODIMP QueryPreferredFormat(GUID* format) override {
        return Forward(&IMediaSeeking::QueryPreferredFormat, format);
    }
    STDMETHODIMP GetTimeFormat(GUID* format) override { return Forward(&IMediaSeeking::GetTimeFormat, format); }
    STDMETHODIMP IsUsingTimeFormat(const GUID* format) override {
        return Forward(&IMediaSeeking::IsUsingTimeFormat, format);
    }
    STDMETHODIMP SetTimeFormat(const GUID* format) override { return Forward(&IMediaSeeking::SetTimeFormat, format); }
    STDMETHODIMP GetDuration(LONGLONG* duration) override { return Forward(&IMediaSeeking::GetDuration, duration); }
    STDMETHODIMP GetStopPosition(LONGLONG* stop) override { return Forward(&IMediaSeeking::GetStopPosition, stop); }
    STDMETHODIMP GetCurrentPosition(LONGLONG* current) override {
        return Forward(&IMediaSeeking::GetCurrentPosition, current);
    }
    STDMETHODIMP ConvertTimeFormat(LONGLONG* target, const GUID* targetFormat, LONGLONG source,
                                   const GUID* sourceFormat) override {
        return Forward(&IMediaSeeking::ConvertTimeFormat, target, targetFormat, source, sourceFormat);
    }
    STDMETHODIMP SetPositions(LONGLONG* current, DWORD currentFlags, LONGLONG* stop, DWORD stopFlags) override {
        return Forward(&IMediaSeeking::SetPositions, current, currentFlags, stop, stopFlags);
    }
    STDMETHODIMP GetPositions(LONGLONG* current, LONGLONG* stop) override {
        return Forward(&IMediaSeeking::GetPositions, current, stop);
    }
    STDMETHODIMP GetAvailable(LONGLONG* earliest, LONGLONG* latest) override {
        return Forward(&IMediaSeeking::GetAvailable, earliest, latest);
    }
    STDMETHODIMP SetRate(double rate) override { return Forward(&IMediaSeeking::SetRate, rate); }
    STDMETHODIMP GetRate(double* rate) override { return Forward(&IMediaSeeking::GetRate, rate); }
    STDMETHODIMP GetPreroll(LONGLONG* preroll) override { return Forward(&IMediaSeeking::GetPreroll, preroll); }
};

} // namespace dshow
