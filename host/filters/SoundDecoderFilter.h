// "MES BSAC Decoder" and "MP3 Decoder Filter": coded sound in, samples out. Both take whatever the stream says: the first
// one BSAC or AAC, the second one layer II.
#pragma once

#include "host/filters/Samples.h"

#include <atomic>
#include <mutex>

namespace filters {

class SoundDecoderFilter final : public dshow::FilterBase, private SampleReceiver<SoundUnit> {
public:
    SoundDecoderFilter(REFCLSID classId, REFGUID codedSubtype);

private:
    HRESULT OnSample(const SoundUnit& sample) override;
    void OnEndOfStream() override { out_->DeliverEnd(); }
    void OnBeginFlush() override;
    void OnEndFlush() override;
    void OnNewSegment(Ticks start) override { out_->DeliverSegment(start); }
    HRESULT OnStop() override;

    SampleOutput<SoundBlock>* out_;
    std::mutex streaming_; // held while a sample is worked on
    SoundDecoder decoder_;
    std::shared_ptr<const AudioFormat> format_;
};

} // namespace filters
