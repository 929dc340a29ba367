// Packets of the tuned service as they arrive.
#pragma once

#include "host/filters/Feed.h"
#include "host/filters/Reception.h"
#include "host/medmb/Broadcast.h"

namespace filters {

class LiveFeed final : public Feed {
public:
    LiveFeed(FeedHost host, medmb::Broadcast& broadcast, CaptureTee& tee)
        : Feed(std::move(host)), broadcast_(broadcast), tee_(tee), reception_(host_.status) {}
    ~LiveFeed() override { Stop(); }

    void Position(std::uint64_t& now, std::int64_t& whole) override;
    HRESULT Seek(std::int64_t) override { return E_NOTIMPL; }

    // Without packets for so long there is no signal; it is reported anew each time.
    static constexpr ce::Millis kNoSignalMs = 500;

private:
    void Work() override;
    void OnPause() override;
    void OnResume() override;
    void Drain(medmb::BroadcastReader& reader);
    void Take(const medmb::BroadcastItem& item);

    medmb::Broadcast& broadcast_;
    CaptureTee& tee_;
    std::atomic<ce::Millis> started_{0};
    // The worker's.
    ce::Millis deadline_ = 0; // of the next report of no signal
    bool noSignal_ = false;
    Reception reception_;
};

} // namespace filters
