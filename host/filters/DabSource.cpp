#include "host/filters/DabSource.h"

#include "host/ce/Ce.h"
#include "host/wire/LayerTwo.h"

#include <utility>

namespace filters {

namespace {

// Content types of MOT, EN 301 234 6.1: image, and of images JFIF.
constexpr int kContentImage = 2;
constexpr int kImageJpeg = 1;
// Without a sound frame for so long something is missing.
constexpr ce::Millis kSilenceMs = 500;

} // namespace

DabSource::DabSource(ce::Clock& clock, const Outputs& outputs, medmb::Broadcast& broadcast)
    : FilterBase(CLSID_DABSource), clock_(clock), broadcast_(broadcast), wake_(clock), reception_(outputs.status) {
    auto out = std::make_unique<SampleOutput<SoundUnit>>(*this, kDABSourcePin,
                                                         dshow::MediaType(MEDIATYPE_Audio, kSubtypeLayerTwo));
    out_ = out.get();
    AddPin(std::move(out));
}

DabSource::~DabSource() {
    StopWorker();
}

void* DabSource::FindInterface(REFIID iid) {
    if (iid == IID_IPadDataSource)
        return static_cast<IPadDataSource*>(&pad_);
    if (iid == IID_IAMFilterMiscFlags)
        return static_cast<IAMFilterMiscFlags*>(&flags_);
    return nullptr;
}

HRESULT DabSource::OnPause() {
    if (worker_.joinable()) {
        // What is queued further down is old when the graph runs again.
        paused_ = true;
        out_->DeliverBeginFlush();
    }
    return S_OK;
}

HRESULT DabSource::OnRun(REFERENCE_TIME) {
    if (worker_.joinable()) {
        out_->DeliverEndFlush();
        paused_ = false;
        wake_.Raise();
        return S_OK;
    }
    quit_ = false;
    paused_ = false;
    worker_ = clock_.StartWorker([this] { Work(); });
    return S_OK;
}

HRESULT DabSource::OnStop() {
    StopWorker();
    return S_OK;
}

void DabSource::StopWorker() {
    if (!worker_.joinable())
        return;
    quit_ = true;
    out_->DeliverBeginFlush();
    wake_.Raise();
    worker_.join();
    out_->DeliverEndFlush();
}

void DabSource::Work() {
    gap_ = true;
    labelWaits_ = slideWaits_ = false;
    silentAt_ = clock_.Now() + kSilenceMs;
    reception_.Begin(broadcast_);
    medmb::BroadcastReader reader = broadcast_.Attach();
    const bool sameService = reader.Attached() && reader.Generation() == generation_;
    generation_ = reader.Generation();
    {
        const std::scoped_lock lock(guard_);
        hasLabel_ = hasLabel_ && sameService;
    }
    broadcast_.SetNotify([this] { wake_.Raise(); });
    medmb::BroadcastItem item;
    // Sound that queued up while the graph was stopped is old.
    while (sameService && !quit_ && reader.TryRead(item) == medmb::ReadResult::Item)
        if (item.kind != medmb::ItemKind::Audio)
            Take(item);
    labelRepeats_ = hasLabel_; // the viewer forgot it at the stop, and it does not come again until it changes
    while (!quit_) {
        while (!quit_ && reader.Attached() && reader.TryRead(item) == medmb::ReadResult::Item)
            Take(item);
        if (quit_)
            break;
        Look();
        (void)wake_.Wait(silentAt_);
    }
    broadcast_.SetNotify(nullptr);
    reception_.Report(ReceptionState::kIdle);
}

void DabSource::Look() {
    if (clock_.Now() >= silentAt_) {
        silentAt_ = clock_.Now() + kSilenceMs;
        reception_.ReportMissing(broadcast_);
    }
    Announce();
}

void DabSource::Take(const medmb::BroadcastItem& item) {
    if (item.kind == medmb::ItemKind::Audio) {
        TakeFrame(item);
    } else if (item.kind == medmb::ItemKind::Text && item.text) {
        {
            const std::scoped_lock lock(guard_);
            label_ = MakePadLabel(item.text->utf8);
            hasLabel_ = true;
        }
        labelWaits_ = true;
    } else if (item.kind == medmb::ItemKind::Slide && item.slide) {
        TakeSlide(*item.slide);
    }
    Announce();
}

// The view heeds labels and slides only while it plays, so what came during a pause is told when it is over.
void DabSource::Announce() {
    if (paused_)
        return;
    if (std::exchange(labelWaits_, false))
        NotifyEvent(IDMB_EVENT_PAD, 0, 0);
    if (std::exchange(slideWaits_, false))
        NotifyEvent(IDMB_EVENT_MOT, 0, 0);
}

void DabSource::TakeFrame(const medmb::BroadcastItem& item) {
    const auto header = wire::ParseLayerTwoHeader(item.bytes);
    // Told before what the frame's programme-associated data bring: the view takes no label before it is on air.
    if (header && !item.damaged) {
        silentAt_ = clock_.Now() + kSilenceMs;
        const bool weak = broadcast_.Signal() == medmb::SignalState::Weak;
        reception_.Report(weak ? ReceptionState::kWeak : ReceptionState::kPlaying);
        labelWaits_ |= std::exchange(labelRepeats_, false);
    }
    gap_ |= item.discontinuity;
    if (paused_) {
        gap_ = true;
        return;
    }
    if (header && (!format_ || format_->sampleRate != header->sampleRate || format_->channels != header->Channels())) {
        AudioFormat format;
        format.codec = AudioCodec::kLayerTwo;
        format.sampleRate = header->sampleRate;
        format.channels = header->Channels();
        format.samplesPerUnit = wire::kLayerTwoSamples;
        format_ = std::make_shared<const AudioFormat>(std::move(format));
    }
    if (!format_)
        return;
    SoundUnit sample;
    sample.format = format_;
    sample.unit.time = static_cast<Ticks>(item.time) * kTicksPerMs;
    sample.unit.live = true;
    sample.unit.randomAccess = true;
    sample.unit.discontinuity = std::exchange(gap_, false);
    // A damaged frame goes out without bytes: better silent than decoded.
    if (header && !item.damaged)
        sample.unit.bytes = item.bytes;
    if (out_->Deliver(sample) != S_OK)
        gap_ = true;
}

// The view decodes JPEG alone; anything else would only take the present slide away.
void DabSource::TakeSlide(const medmb::RadioSlide& slide) {
    if (slide.contentType != kContentImage || slide.contentSubtype != kImageJpeg)
        return;
    ce::Ce* system = ce::Ce::Current();
    if (system != nullptr && system->files().Replace(kSlideFile, slide.body))
        slideWaits_ = true;
}

STDMETHODIMP DabSource::PadFace::FetchPadInfo(PadInfo** record) {
    if (record == nullptr)
        return E_POINTER;
    *record = nullptr;
    const std::scoped_lock lock(owner_.guard_);
    if (!owner_.hasLabel_)
        return S_OK;
    if (!owner_.record_)
        owner_.record_ = std::make_unique<PadInfo>();
    owner_.label_.Put(*owner_.record_);
    *record = owner_.record_.get();
    return S_OK;
}

} // namespace filters
