#include "host/filters/VideoDecoderFilter.h"

#include "graph/DMBFilterIds.h"

namespace filters {

VideoDecoderFilter::VideoDecoderFilter() : FilterBase(CLSID_DMBVideoDecoder) {
    AddPin(std::make_unique<SampleInput<PictureUnit>>(*this, kInPin, dshow::MediaType(MEDIATYPE_Video, kSubtypeH264),
                                                      static_cast<SampleReceiver<PictureUnit>&>(*this)));
    auto out =
        std::make_unique<SampleOutput<PictureSample>>(*this, kOutPin, dshow::MediaType(MEDIATYPE_Video, kSubtypeI420));
    out_ = out.get();
    AddPin(std::move(out));
}

HRESULT VideoDecoderFilter::OnSample(const PictureUnit& sample) {
    if (State() == State_Stopped)
        return S_FALSE;
    const std::scoped_lock lock(streaming_);
    // A picture that nobody takes is decoded all the same: later ones refer to it.
    decoder_.Push(sample.unit, [this](Picture picture) { (void)Deliver(std::move(picture)); });
    return S_OK;
}

void VideoDecoderFilter::OnEndOfStream() {
    {
        const std::scoped_lock lock(streaming_);
        decoder_.Drain([this](Picture picture) { (void)Deliver(std::move(picture)); });
    }
    out_->DeliverEnd();
}

HRESULT VideoDecoderFilter::Deliver(Picture picture) {
    return out_->Deliver(std::make_shared<const Picture>(std::move(picture)));
}

} // namespace filters
