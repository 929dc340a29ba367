#include "host/filters/ParserFilter.h"

#include "host/filters/FileFeed.h"
#include "host/filters/LiveFeed.h"

#include <algorithm>

namespace filters {

namespace {
constexpr LONGLONG kUnitsPerMs = 10000;
constexpr DWORD kPositioningMask = 3;
constexpr DWORD kNoPositioning = 0;
constexpr DWORD kAbsolutePositioning = 1;
} // namespace

ParserFilter::ParserFilter(ce::Clock& clock, const Outputs& outputs, medmb::Broadcast& broadcast)
    : FilterBase(CLSID_DMBParser), clock_(clock), outputs_(outputs), broadcast_(broadcast),
      tee_(clock, [this](HRESULT reason) {
          if (outputs_.status != nullptr)
              outputs_.status->OnCaptureFailed(reason);
      }) {
    auto picture = std::make_unique<SampleOutput<PictureUnit>>(*this, kParserVideoPin,
                                                               dshow::MediaType(MEDIATYPE_Video, kSubtypeH264));
    auto sound = std::make_unique<SampleOutput<SoundUnit>>(*this, kParserAudioPin,
                                                           dshow::MediaType(MEDIATYPE_Audio, kSubtypeMpeg4Audio));
    picture_ = picture.get();
    sound_ = sound.get();
    AddPin(std::move(picture));
    AddPin(std::move(sound));
    stream_ = std::make_unique<ParserStream>(*picture_, *sound_);
}

ParserFilter::~ParserFilter() {
    if (feed_)
        feed_->Stop();
}

void* ParserFilter::FindInterface(REFIID iid) {
    if (iid == IID_IFileSourceFilter)
        return static_cast<IFileSourceFilter*>(&file_);
    if (iid == IID_IDMBCapture)
        return static_cast<IDMBCapture*>(&capture_);
    if (iid == IID_IDMBStreamControl)
        return static_cast<IDMBStreamControl*>(&control_);
    if (iid == IID_IMediaSeeking)
        return static_cast<IMediaSeeking*>(&seeking_);
    if (iid == IID_IAMFilterMiscFlags)
        return static_cast<IAMFilterMiscFlags*>(&flags_);
    return nullptr;
}

// --- states

void ParserFilter::MakeFeed() {
    if (feed_)
        return;
    FeedHost host{clock_,
                  *stream_,
                  *picture_,
                  *sound_,
                  outputs_.status,
                  [this](LONG code) { NotifyEvent(code, 0, 0); },
                  [this] { return Presented(); }};
    if (path_.empty())
        feed_ = std::make_unique<LiveFeed>(std::move(host), broadcast_, tee_);
    else
        feed_ = std::make_unique<FileFeed>(std::move(host), path_);
}

std::optional<Ticks> ParserFilter::Presented() {
    Ticks now = 0;
    const auto clock = dshow::QueryFor<IPresentationClock>(Clock().Get(), kPresentationClockId);
    if (clock && clock->StreamTime(&now) == ClockState::kRunning)
        return now;
    return std::nullopt;
}

HRESULT ParserFilter::OnPause() {
    MakeFeed();
    feed_->Pause();
    return S_OK;
}

HRESULT ParserFilter::OnRun(REFERENCE_TIME) {
    feed_->Run();
    return S_OK;
}

HRESULT ParserFilter::OnStop() {
    feed_->Stop();
    return S_OK;
}

HRESULT ParserFilter::OnGetState(DWORD) {
    return State() == State_Paused && path_.empty() ? VFW_S_CANT_CUE : S_OK;
}

// --- file

STDMETHODIMP ParserFilter::FileFace::Load(LPCOLESTR path, const AM_MEDIA_TYPE*) {
    if (path == nullptr)
        return E_POINTER;
    if (owner_.State() != State_Stopped)
        return VFW_E_NOT_STOPPED;
    owner_.path_ = path;
    owner_.feed_.reset();
    owner_.MakeFeed();
    std::uint64_t now = 0;
    std::int64_t whole = 0;
    owner_.feed_->Position(now, whole);
    return whole > 0 ? S_OK : S_FALSE; // it opens anyhow: what it lacks shows when it runs
}

STDMETHODIMP ParserFilter::FileFace::GetCurFile(LPOLESTR* path, AM_MEDIA_TYPE* type) {
    if (path == nullptr)
        return E_POINTER;
    if (type != nullptr)
        *type = AM_MEDIA_TYPE{};
    const std::size_t units = owner_.path_.size() + 1;
    *path = static_cast<LPOLESTR>(CoTaskMemAlloc(units * sizeof(WCHAR)));
    if (*path == nullptr)
        return E_OUTOFMEMORY;
    std::copy_n(owner_.path_.c_str(), units, *path);
    return S_OK;
}

// --- capture and parameters

STDMETHODIMP ParserFilter::CaptureFace::StartCapture() {
    if (!owner_.path_.empty() || owner_.State() == State_Stopped)
        return VFW_E_WRONG_STATE;
    return owner_.tee_.Start();
}

STDMETHODIMP ParserFilter::StreamFace::SetParam(int id, void* block) {
    if (block == nullptr)
        return E_POINTER;
    if (id != kParamApplyAudioInfo)
        return E_INVALIDARG;
    return owner_.stream_->AdoptAudio(*static_cast<const DMBAudioInfo*>(block));
}

STDMETHODIMP ParserFilter::StreamFace::GetParam(int id, void* result) {
    if (result == nullptr)
        return E_POINTER;
    if (id != kParamAudioInfo)
        return E_INVALIDARG;
    info_ = owner_.stream_->AnnouncedAudio();
    *static_cast<DMBAudioInfo**>(result) = &info_;
    return S_OK;
}

STDMETHODIMP ParserFilter::StreamFace::GetPosition(ULONGLONG* now, LONGLONG* whole) {
    if (now == nullptr || whole == nullptr)
        return E_POINTER;
    owner_.MakeFeed();
    std::uint64_t position = 0;
    std::int64_t length = 0;
    owner_.feed_->Position(position, length);
    *now = position;
    *whole = length;
    return S_OK;
}

STDMETHODIMP ParserFilter::StreamFace::SetPosition(LONGLONG milliseconds) {
    owner_.MakeFeed();
    return owner_.feed_->Seek(milliseconds);
}

// --- seeking

STDMETHODIMP ParserFilter::SeekingFace::GetDuration(LONGLONG* duration) {
    ULONGLONG now = 0;
    const HRESULT result = owner_.control_.GetPosition(&now, duration);
    if (SUCCEEDED(result))
        *duration *= kUnitsPerMs;
    return result;
}

STDMETHODIMP ParserFilter::SeekingFace::GetCurrentPosition(LONGLONG* current) {
    if (current == nullptr)
        return E_POINTER;
    ULONGLONG now = 0;
    LONGLONG whole = 0;
    const HRESULT result = owner_.control_.GetPosition(&now, &whole);
    *current = static_cast<LONGLONG>(now) * kUnitsPerMs;
    return result;
}

STDMETHODIMP ParserFilter::SeekingFace::SetPositions(LONGLONG* current, DWORD currentFlags, LONGLONG*,
                                                     DWORD stopFlags) {
    if ((stopFlags & kPositioningMask) != kNoPositioning)
        return E_NOTIMPL;
    if ((currentFlags & kPositioningMask) == kNoPositioning)
        return S_OK;
    if ((currentFlags & kPositioningMask) != kAbsolutePositioning)
        return E_NOTIMPL;
    if (current == nullptr)
        return E_POINTER;
    return owner_.control_.SetPosition(*current / kUnitsPerMs);
}

} // namespace filters
