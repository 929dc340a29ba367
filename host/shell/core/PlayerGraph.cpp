// CVelPlayerView and its filter graph: the interfaces that the base holds, and what it does with them.
#include "platform/velshell/VelPlayerView.h"

#include "host/shell/core/ShellCore.h"
#include "platform/dshow_api.h"

#include <cmath>

namespace {

// The graph posts this message for each of its events.
constexpr LONG kGraphEventMessage = WM_USER + 1;
constexpr LONG kSilence = -10000; // hundredths of a decibel

// Half of the scale sounds about half as loud: the square of the share, 40 decibels for a tenth.
LONG HundredthsOf(int percent) {
    return percent <= 0 ? kSilence : static_cast<LONG>(std::lround(4000 * std::log10(percent / 100.0)));
}

template <typename Interface> void Release(Interface*& pointer) {
    if (pointer) {
        pointer->Release();
        pointer = nullptr;
    }
}

// Asks the graph for an interface unless the view has it already.
template <typename Interface> bool Obtain(IGraphBuilder* graph, const IID& id, Interface*& pointer) {
    if (pointer) {
        return true;
    }
    void* found = nullptr;
    if (FAILED(graph->QueryInterface(id, &found))) {
        return false;
    }
    pointer = static_cast<Interface*>(found);
    return true;
}

} // namespace

int CVelPlayerView::ConnectInterface() {
    if (!m_pGraph) {
        return 0;
    }
    const bool control = Obtain(m_pGraph, IID_IMediaControl, m_pControl);
    const bool event = Obtain(m_pGraph, IID_IMediaEventEx, m_pEvent);
    // Picture, position and sound are welcome but not needed.
    (void)Obtain(m_pGraph, IID_IVideoWindow, m_pVideoWindow);
    (void)Obtain(m_pGraph, IID_IMediaSeeking, m_pSeeking);
    (void)Obtain(m_pGraph, IID_IBasicAudio, m_pAudio);
    if (!control || !event) {
        return 0;
    }
    const shell::ShellCore* core = shell::ShellCore::Current();
    if (core && (core->muted || core->volume < 100)) {
        ForceMute(core->muted); // a new graph plays at full volume
    }
    return SUCCEEDED(m_pEvent->SetNotifyWindow(reinterpret_cast<OAHWND>(m_hWnd), kGraphEventMessage, 0));
}

void CVelPlayerView::ReleaseInterface(int /*argument*/) {
    if (m_pEvent) {
        m_pEvent->SetNotifyWindow(0, 0, 0);
    }
    Release(m_pEvent);
    Release(m_pVideoWindow);
    Release(m_pControl);
    Release(m_pSeeking);
    Release(m_pAudio);
}

void CVelPlayerView::Destroy() {
    ReleaseInterface(0);
    Release(m_pEvent);
    Release(m_pVideoWindow);
    Release(m_pControl);
    Release(m_pSeeking);
    Release(m_pAudio);
    Release(m_pGraph);
    CVelToolView::Destroy();
}

void CVelPlayerView::MoveVideoWindow(const RECT* rect) {
    if (m_pVideoWindow && rect) {
        m_pVideoWindow->SetWindowPosition(rect->left, rect->top, rect->right - rect->left, rect->bottom - rect->top);
    }
}

void CVelPlayerView::Play() {
    if (m_pControl && SUCCEEDED(m_pControl->Run())) {
        SetPlayMode(kPlayModePlaying);
    }
}

void CVelPlayerView::Pause() {
    if (m_pControl && SUCCEEDED(m_pControl->Pause())) {
        SetPlayMode(kPlayModePaused);
    }
}

int CVelPlayerView::Stop() {
    if (m_pControl && SUCCEEDED(m_pControl->Stop())) {
        SetPlayMode(kPlayModeStopped);
    }
    return 1;
}

void CVelPlayerView::Jump(int milliseconds) {
    if (m_pSeeking) {
        constexpr LONGLONG kUnitsPerMillisecond = 10000;
        constexpr DWORD kAbsolute = 1, kUnchanged = 0;
        LONGLONG position = milliseconds * kUnitsPerMillisecond;
        m_pSeeking->SetPositions(&position, kAbsolute, nullptr, kUnchanged);
    }
}

void CVelPlayerView::Resume() {
    Play();
}

void CVelPlayerView::ForceMute(int mute) {
    if (m_pAudio) {
        const shell::ShellCore* core = shell::ShellCore::Current();
        m_pAudio->put_Volume(mute ? kSilence : HundredthsOf(core ? core->volume : 100));
    }
}
