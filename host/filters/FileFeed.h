// Packets of a recording, as fast as the renderers take them.
#pragma once

#include "host/filters/Feed.h"
#include "host/filters/Reception.h"
#include "host/filters/Recording.h"

#include <mutex>

namespace filters {

class FileFeed final : public Feed {
public:
    // A file that cannot be opened ends at once when it is run.
    FileFeed(FeedHost host, const WString& path);
    ~FileFeed() override { Stop(); }

    void Position(std::uint64_t& now, std::int64_t& whole) override;
    HRESULT Seek(std::int64_t milliseconds) override;

private:
    void Work() override;
    void OnPause() override;
    void MoveTo(Ticks time);
    void Step();
    void SettleOrigin();
    void ReportAudioChange();
    [[nodiscard]] std::optional<Ticks> TakeSeek();
    [[nodiscard]] Ticks PresentedTime();

    Recording recording_;
    const bool opened_;

    // The worker's; they survive a stop, so that a run goes on where the one before ended.
    PacketSync sync_;
    Bytes packets_; // read, in order
    std::size_t at_ = 0;
    std::uint64_t byteMoved_ = 0; // where reading began after the last move
    bool started_ = false;
    bool changeWaits_ = false;
    bool lossTold_ = false;
    Reception reception_;
    std::optional<Ticks> segment_; // to be told when the origin is known

    std::mutex guard_; // of all below
    std::optional<Ticks> seek_;
    std::optional<Ticks> origin_; // the line's place of the file's beginning
    std::optional<Ticks> resumeAt_;
    Ticks shown_ = 0; // last known time
    bool ended_ = false;
};

} // namespace filters
