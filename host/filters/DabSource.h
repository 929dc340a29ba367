// "MES DAB Source Filter": the tuned radio service. Sound frames go out of pin "1"; labels go into the PAD record and
// pictures into the slide file, each followed by its event.
#pragma once

#include "graph/DMBFilterIds.h"
#include "host/ce/Clock.h"
#include "host/filters/PadRecord.h"
#include "host/filters/Reception.h"
#include "host/filters/Samples.h"
#include "host/medmb/Broadcast.h"

#include <atomic>
#include <mutex>
#include <thread>

namespace filters {

inline constexpr const WCHAR* kSlideFile = WTEXT("\\MotBody.dat");

class DabSource final : public dshow::FilterBase {
public:
    DabSource(ce::Clock& clock, const Outputs& outputs, medmb::Broadcast& broadcast);

protected:
    ~DabSource() override;
    HRESULT OnPause() override;
    HRESULT OnRun(REFERENCE_TIME start) override;
    HRESULT OnStop() override;
    HRESULT OnGetState(DWORD) override { return State() == State_Paused ? VFW_S_CANT_CUE : S_OK; }
    void* FindInterface(REFIID iid) override;

private:
    void StopWorker();
    void Work();
    void Look();
    void Take(const medmb::BroadcastItem& item);
    void Announce();
    void TakeFrame(const medmb::BroadcastItem& item);
    void TakeSlide(const medmb::RadioSlide& slide);

    class PadFace final : public dshow::Face<IPadDataSource> {
    public:
        explicit PadFace(DabSource& owner) : Face(owner), owner_(owner) {}
        STDMETHODIMP Reserved1() override { return E_NOTIMPL; }
        STDMETHODIMP Reserved2() override { return E_NOTIMPL; }
        STDMETHODIMP FetchPadInfo(PadInfo** record) override;

    private:
        DabSource& owner_;
    };
    class FlagsFace final : public dshow::Face<IAMFilterMiscFlags> {
    public:
        using Face::Face;
        STDMETHODIMP_(ULONG) GetMiscFlags() override { return AM_FILTER_MISC_FLAGS_IS_SOURCE; }
    };

    ce::Clock& clock_;
    medmb::Broadcast& broadcast_;
    PadFace pad_{*this};
    FlagsFace flags_{*this};
    SampleOutput<SoundUnit>* out_;
    ce::Signal wake_;
    std::thread worker_;
    std::atomic<bool> quit_{false};
    std::atomic<bool> paused_{false};
    // The worker's.
    std::shared_ptr<const AudioFormat> format_;
    bool gap_ = false;
    std::uint32_t generation_ = 0; // of the service that was read last
    bool labelRepeats_ = false;    // with the first good frame
    Reception reception_;
    ce::Millis silentAt_ = 0; // when a sound frame will have been missing for too long
    // Events that nobody would have heeded during a pause.
    bool labelWaits_ = false;
    bool slideWaits_ = false;

    std::mutex guard_; // of the label
    PadLabel label_;
    bool hasLabel_ = false;
    // Belongs to whoever fetches, valid until the next fetch; no streaming thread writes it.
    std::unique_ptr<PadInfo> record_;
};

} // namespace filters
