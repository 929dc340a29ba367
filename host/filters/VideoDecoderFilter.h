// "MES Video Decoder": H.264 access units in, pictures out.
#pragma once

#include "host/filters/PictureDecoder.h"
#include "host/filters/Samples.h"

#include <mutex>

namespace filters {

class VideoDecoderFilter final : public dshow::FilterBase, private SampleReceiver<PictureUnit> {
public:
    VideoDecoderFilter();

private:
    HRESULT OnSample(const PictureUnit& sample) override;
    void OnEndOfStream() override;
    void OnBeginFlush() override { out_->DeliverBeginFlush(); }
    // The decoder keeps its pictures: a sender that goes on elsewhere marks its next unit.
    void OnEndFlush() override { out_->DeliverEndFlush(); }
    void OnNewSegment(Ticks start) override { out_->DeliverSegment(start); }
    HRESULT Deliver(Picture picture);

    SampleOutput<PictureSample>* out_;
    std::mutex streaming_; // held while a sample is worked on
    PictureDecoder decoder_;
};

} // namespace filters
