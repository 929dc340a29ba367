#include "host/filters/SoundDecoderFilter.h"

#include "graph/DMBFilterIds.h"

namespace filters {

SoundDecoderFilter::SoundDecoderFilter(REFCLSID classId, REFGUID codedSubtype) : FilterBase(classId) {
    AddPin(std::make_unique<SampleInput<SoundUnit>>(*this, kInPin, dshow::MediaType(MEDIATYPE_Audio, codedSubtype),
                                                    static_cast<SampleReceiver<SoundUnit>&>(*this)));
    auto out =
        std::make_unique<SampleOutput<SoundBlock>>(*this, kOutPin, dshow::MediaType(MEDIATYPE_Audio, kSubtypePcm));
    out_ = out.get();
    AddPin(std::move(out));
}

HRESULT SoundDecoderFilter::OnSample(const SoundUnit& sample) {
    if (State() == State_Stopped)
        return S_FALSE;
    const std::scoped_lock lock(streaming_);
    if (format_ != sample.format) {
        const bool changed = !format_ || !sample.format || *format_ != *sample.format;
        format_ = sample.format;
        if (changed && format_)
            (void)decoder_.SetFormat(*format_);
    }
    HRESULT result = S_OK;
    decoder_.Push(sample.unit, [&](const SoundBlock& block) {
        if (result == S_OK)
            result = out_->Deliver(block);
    });
    return result;
}

void SoundDecoderFilter::OnBeginFlush() {
    out_->DeliverBeginFlush();
}

void SoundDecoderFilter::OnEndFlush() {
    {
        const std::scoped_lock lock(streaming_);
        decoder_.Flush();
    }
    out_->DeliverEndFlush();
}

HRESULT SoundDecoderFilter::OnStop() {
    const std::scoped_lock lock(streaming_);
    decoder_.Flush();
    return S_OK;
}

} // namespace filters
