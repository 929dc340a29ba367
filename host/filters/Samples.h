// What travels over a link between two filters of this room, and the pins that carry it.
//
// An input pin offers ISampleSink of its kind of sample; the output pin asks for it when the link is made. Receive is called on
// the streaming thread and may wait while the receiver is full; it waits no longer once a flush has begun or the receiver
// stops. S_OK: taken. S_FALSE: not wanted now, the sample is lost.
#pragma once

#include "host/dshow/FilterBase.h"
#include "host/filters/Demultiplexer.h"
#include "host/filters/Picture.h"
#include "host/filters/SoundDecoder.h"

#include <functional>
#include <memory>

namespace filters {

// A unit of the picture.
struct PictureUnit {
    AccessUnit unit;
};
// A unit of the sound with its format, which may differ from that of the unit before.
struct SoundUnit {
    AccessUnit unit;
    std::shared_ptr<const AudioFormat> format;
};
using PictureSample = std::shared_ptr<const Picture>;

template <class Sample> struct ISampleSink : IUnknown { STDMETHOD(Receive)(const Sample& sample) PURE; };

template <class Sample> inline constexpr IID kSinkId{};
template <>
inline constexpr IID kSinkId<PictureUnit> = {0x3B7C1E01,
                                             0x52A4,
                                             0x4D0C,
                                             {0x9C, 0x11, 0x6E, 0x0F, 0x1D, 0x2A, 0x77, 0x01}};
template <>
inline constexpr IID kSinkId<SoundUnit> = {0x3B7C1E02,
                                           0x52A4,
                                           0x4D0C,
                                           {0x9C, 0x11, 0x6E, 0x0F, 0x1D, 0x2A, 0x77, 0x02}};
template <>
inline constexpr IID kSinkId<PictureSample> = {0x3B7C1E03,
                                               0x52A4,
                                               0x4D0C,
                                               {0x9C, 0x11, 0x6E, 0x0F, 0x1D, 0x2A, 0x77, 0x03}};
template <>
inline constexpr IID kSinkId<SoundBlock> = {0x3B7C1E04,
                                            0x52A4,
                                            0x4D0C,
                                            {0x9C, 0x11, 0x6E, 0x0F, 0x1D, 0x2A, 0x77, 0x04}};

// Media subtypes: each link has its own, so that a graph never joins what does not fit.
inline constexpr GUID kSubtypeH264 = {0x34363248, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
inline constexpr GUID kSubtypeI420 = {0x30323449, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
inline constexpr GUID kSubtypeMpeg4Audio = {0x000000FF,
                                            0x0000,
                                            0x0010,
                                            {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
inline constexpr GUID kSubtypeLayerTwo = {0x00000050, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
inline constexpr GUID kSubtypePcm = {0x00000001, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

// What a filter does with what comes in.
template <class Sample> class SampleReceiver {
public:
    virtual HRESULT OnSample(const Sample& sample) = 0;
    virtual void OnEndOfStream() = 0;
    // From any thread; what waits in OnSample returns.
    virtual void OnBeginFlush() = 0;
    // What was received before has no meaning any more.
    virtual void OnEndFlush() = 0;
    // Times from here on; what is earlier is not to be presented.
    virtual void OnNewSegment(Ticks start) = 0;

protected:
    ~SampleReceiver() = default;
};

template <class Sample> class SampleInput final : public dshow::PinBase {
public:
    SampleInput(dshow::FilterBase& filter, WString id, dshow::MediaType type, SampleReceiver<Sample>& receiver)
        : PinBase(filter, PINDIR_INPUT, std::move(id), {std::move(type)}), receiver_(receiver), face_(*this) {}

    STDMETHODIMP EndOfStream() override {
        receiver_.OnEndOfStream();
        return S_OK;
    }
    STDMETHODIMP BeginFlush() override {
        receiver_.OnBeginFlush();
        return S_OK;
    }
    STDMETHODIMP EndFlush() override {
        receiver_.OnEndFlush();
        return S_OK;
    }
    STDMETHODIMP NewSegment(REFERENCE_TIME start, REFERENCE_TIME, double) override {
        receiver_.OnNewSegment((start * 9 + 500) / 1000);
        return S_OK;
    }

protected:
    void* FindInterface(REFIID iid) override {
        return iid == kSinkId<Sample> ? static_cast<ISampleSink<Sample>*>(&face_) : nullptr;
    }

private:
    class SinkFace final : public dshow::Face<ISampleSink<Sample>> {
    public:
        explicit SinkFace(SampleInput& pin) : dshow::Face<ISampleSink<Sample>>(pin), pin_(pin) {}
        STDMETHODIMP Receive(const Sample& sample) override { return pin_.receiver_.OnSample(sample); }

    private:
        SampleInput& pin_;
    };

    SampleReceiver<Sample>& receiver_;
    SinkFace face_;
};

template <class Sample> class SampleOutput final : public dshow::PinBase {
public:
    SampleOutput(dshow::FilterBase& filter, WString id, dshow::MediaType type)
        : PinBase(filter, PINDIR_OUTPUT, std::move(id), {std::move(type)}) {}

    // S_FALSE when nobody takes it.
    HRESULT Deliver(const Sample& sample) { return sink_ ? sink_->Receive(sample) : S_FALSE; }
    void DeliverEnd() {
        if (Peer() != nullptr)
            Peer()->EndOfStream();
    }
    void DeliverBeginFlush() {
        if (Peer() != nullptr)
            Peer()->BeginFlush();
    }
    void DeliverEndFlush() {
        if (Peer() != nullptr)
            Peer()->EndFlush();
    }
    void DeliverSegment(Ticks start) {
        if (Peer() != nullptr)
            Peer()->NewSegment(start * 1000 / 9, 0, 1.0);
    }

protected:
    // A filter of another house has no such door; the link stands, but nothing flows.
    HRESULT OnConnected() override {
        sink_ = dshow::QueryFor<ISampleSink<Sample>>(Peer(), kSinkId<Sample>);
        return S_OK;
    }
    void OnDisconnecting() override { sink_ = {}; }

private:
    dshow::ComPtr<ISampleSink<Sample>> sink_;
};

} // namespace filters
