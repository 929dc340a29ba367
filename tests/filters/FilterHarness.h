// One filter between a scripted upstream and a scripted downstream pin: samples are pushed in by hand and come out into a list.
//
//   FilterHarness<PictureUnit, PictureSample> harness(filter, kInPin, kOutPin, types...);
//   harness.Start();
//   harness.up.Deliver(unit);
//   harness.down.samples ...
#pragma once

#include "host/filters/Samples.h"

#include <mutex>

namespace filters_test {

inline constexpr CLSID kScriptedClass = {0x3B7C1E20, 0x52A4, 0x4D0C, {0x9C, 0x11, 0x6E, 0x0F, 0x1D, 0x2A, 0x77, 0x20}};

// Sends what the test says.
template <class Sample> class ScriptedSource final : public dshow::FilterBase {
public:
    explicit ScriptedSource(dshow::MediaType type) : FilterBase(kScriptedClass) {
        auto out = std::make_unique<filters::SampleOutput<Sample>>(*this, WTEXT("Out"), std::move(type));
        pin = out.get();
        AddPin(std::move(out));
    }
    filters::SampleOutput<Sample>* pin;
};

// Keeps what comes.
template <class Sample> class ScriptedSink final : public dshow::FilterBase, private filters::SampleReceiver<Sample> {
public:
    explicit ScriptedSink(dshow::MediaType type) : FilterBase(kScriptedClass) {
        auto in = std::make_unique<filters::SampleInput<Sample>>(*this, WTEXT("In"), std::move(type),
                                                                 static_cast<filters::SampleReceiver<Sample>&>(*this));
        pin = in.get();
        AddPin(std::move(in));
    }
    filters::SampleInput<Sample>* pin;
    // One thread at a time reads them: the test, when the sender rests.
    std::vector<Sample> samples;
    int ends = 0;
    int begunFlushes = 0;
    int endedFlushes = 0;
    std::vector<filters::Ticks> segments;
    HRESULT answer = S_OK;

private:
    HRESULT OnSample(const Sample& sample) override {
        samples.push_back(sample);
        return answer;
    }
    void OnEndOfStream() override { ++ends; }
    void OnBeginFlush() override { ++begunFlushes; }
    void OnEndFlush() override { ++endedFlushes; }
    void OnNewSegment(filters::Ticks start) override { segments.push_back(start); }
};

[[nodiscard]] inline dshow::ComPtr<IPin> PinOf(IBaseFilter& filter, const WCHAR* id) {
    dshow::ComPtr<IPin> pin;
    (void)filter.FindPin(id, pin.Out());
    return pin;
}

} // namespace filters_test
