// A graph of the real filters on a clock that the test moves, with ports that remember.
#pragma once

#include "graph/DMBFilterControl.h"
#include "graph/DMBFilterIds.h"
#include "host/ce/Ce.h"
#include "host/ce/TemporaryFolder.h"
#include "host/dshow/ClassTable.h"
#include "host/dshow/ComObject.h"
#include "host/dshow/ComPtr.h"
#include "host/filters/PresentationClock.h"
#include "host/filters/Register.h"

#include <atomic>
#include <filesystem>
#include <map>
#include <mutex>

namespace filters_test {

struct ShownPicture {
    std::shared_ptr<const filters::Picture> picture;
    ce::Millis at = 0;
    std::optional<filters::Ticks> heard; // what the sound's clock said then
};

class MemoryScreen final : public filters::VideoPort {
public:
    explicit MemoryScreen(ce::Clock& clock) : clock_(clock) {}
    void Show(const std::shared_ptr<const filters::Picture>& picture) override {
        ShownPicture shown{picture, clock_.Now(), {}};
        const std::scoped_lock lock(guard_);
        filters::Ticks now = 0;
        if (master_ != nullptr && master_->StreamTime(&now) == filters::ClockState::kRunning)
            shown.heard = now;
        shown_.push_back(std::move(shown));
    }
    void Clear() override { cleared_ = true; }
    void Place(const RECT& rectangle, bool visible) override {
        place = rectangle;
        isVisible = visible;
    }
    [[nodiscard]] std::vector<ShownPicture> Shown() const {
        const std::scoped_lock lock(guard_);
        return shown_;
    }
    void Forget() {
        const std::scoped_lock lock(guard_);
        shown_.clear();
    }
    void Follow(filters::IPresentationClock* master) {
        const std::scoped_lock lock(guard_);
        master_ = master;
    }
    RECT place{};
    bool isVisible = true;

private:
    ce::Clock& clock_;
    mutable std::mutex guard_;
    std::vector<ShownPicture> shown_;
    filters::IPresentationClock* master_ = nullptr;
    std::atomic<bool> cleared_{false};
};

class MemoryTap final : public filters::SoundTap {
public:
    explicit MemoryTap(ce::Clock& clock) : clock_(clock) {}
    void OnSound(std::span<const std::int16_t> frames) override {
        const std::scoped_lock lock(guard_);
        if (samples_.empty())
            since_ = clock_.Now();
        samples_.insert(samples_.end(), frames.begin(), frames.end());
    }
    // When the first of the samples was heard; the others follow without a gap.
    [[nodiscard]] ce::Millis Since() const {
        const std::scoped_lock lock(guard_);
        return since_;
    }
    void Forget() {
        const std::scoped_lock lock(guard_);
        samples_.clear();
    }
    [[nodiscard]] std::vector<std::int16_t> Samples() const {
        const std::scoped_lock lock(guard_);
        return samples_;
    }

private:
    ce::Clock& clock_;
    mutable std::mutex guard_;
    std::vector<std::int16_t> samples_;
    ce::Millis since_ = 0;
};

class MemoryStatus final : public filters::StatusPort {
public:
    void OnReception(filters::ReceptionState state) override {
        const std::scoped_lock lock(guard_);
        states_.push_back(state);
    }
    void OnCaptureFailed(HRESULT reason) override {
        const std::scoped_lock lock(guard_);
        failures_.push_back(reason);
    }
    void OnFileLost() override { ++lost_; }
    [[nodiscard]] int FilesLost() const { return lost_; }
    [[nodiscard]] std::vector<filters::ReceptionState> States() const {
        const std::scoped_lock lock(guard_);
        return states_;
    }
    [[nodiscard]] std::vector<HRESULT> Failures() const {
        const std::scoped_lock lock(guard_);
        return failures_;
    }

private:
    mutable std::mutex guard_;
    std::vector<filters::ReceptionState> states_;
    std::vector<HRESULT> failures_;
    std::atomic<int> lost_ = 0;
};

// The system: clock, files, class table, broadcast, ports.
template <class Clock> struct World {
    World() {
        std::filesystem::create_directory(folder / "root");
        std::filesystem::create_directory(folder / "card");
        system.files().AddMount({u"\\", folder / "root"});
        system.files().AddMount({u"\\SDMMC Card", folder / "card", ce::Mount::Writing::InPlace, true});
        filters::Register(classes, clock, {device, &tap, &screen, &status}, broadcast);
    }

    Clock clock;
    ce::TemporaryFolder folder;
    ce::Ce system{clock};
    dshow::ClassTable classes{clock};
    medmb::Broadcast broadcast;
    MemoryScreen screen{clock};
    MemoryTap tap{clock};
    MemoryStatus status;
    filters::SoundDevice* device = nullptr;
};

// A graph built by the module's own controller.
struct Session {
    Session() {
        (void)CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder, graph.OutVoid());
        control = dshow::QueryFor<IMediaControl>(graph.Get(), IID_IMediaControl);
        events = dshow::QueryFor<IMediaEventEx>(graph.Get(), IID_IMediaEventEx);
        controller = std::make_unique<CDMBFilterControl>(graph.Get());
    }
    // Stops and takes the filters out; nobody may hold one of them.
    HRESULT Close(MemoryScreen& screen) {
        (void)control->Stop();
        screen.Follow(nullptr);
        master = {};
        return controller->CloseDMBFilters();
    }
    // Codes that came since the last call, each with how often it came.
    std::map<LONG, int> TakeEvents() {
        std::map<LONG, int> codes;
        LONG code = 0;
        LONG_PTR first = 0;
        LONG_PTR second = 0;
        while (SUCCEEDED(events->GetEvent(&code, &first, &second, 0))) {
            events->FreeEventParams(code, first, second);
            ++codes[code];
        }
        return codes;
    }
    template <class Interface> dshow::ComPtr<Interface> Of(const WCHAR* name, REFIID iid) {
        dshow::ComPtr<IBaseFilter> filter;
        if (FAILED(graph->FindFilterByName(name, filter.Out())))
            return {};
        return dshow::QueryFor<Interface>(filter.Get(), iid);
    }
    void FollowSound(MemoryScreen& screen) {
        master = Of<filters::IPresentationClock>(kAudioRendererName, filters::kPresentationClockId);
        screen.Follow(master.Get());
    }

    dshow::ComPtr<IGraphBuilder> graph;
    dshow::ComPtr<IMediaControl> control;
    dshow::ComPtr<IMediaEventEx> events;
    std::unique_ptr<CDMBFilterControl> controller;
    dshow::ComPtr<filters::IPresentationClock> master;
};

} // namespace filters_test
