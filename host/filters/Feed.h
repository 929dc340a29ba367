// Where the parser's packets come from: the tuner or a file. A feed has one worker, from the first Run to the Stop; while
// paused it stays but delivers nothing.
#pragma once

#include "host/ce/Clock.h"
#include "host/filters/CaptureTee.h"
#include "host/filters/Outputs.h"
#include "host/filters/ParserStream.h"
#include "host/filters/PresentationClock.h"

#include <atomic>
#include <functional>
#include <thread>

namespace filters {

// What a feed needs of its filter. `notify` and `presented` may be called from the worker.
struct FeedHost {
    ce::Clock& clock;
    ParserStream& stream;
    SampleOutput<PictureUnit>& picture;
    SampleOutput<SoundUnit>& sound;
    StatusPort* status;
    std::function<void(LONG code)> notify;
    // The place on the stream's line that is heard now, if any.
    std::function<std::optional<Ticks>()> presented;
};

class Feed {
public:
    explicit Feed(FeedHost host) : host_(std::move(host)), wake_(host_.clock) {}
    virtual ~Feed() = default;
    Feed(const Feed&) = delete;
    Feed& operator=(const Feed&) = delete;

    // From stopped or paused.
    void Run();
    void Pause();
    void Stop();
    [[nodiscard]] bool IsStarted() const { return worker_.joinable(); }

    // Milliseconds since the beginning, and of the whole; 0 where there is no such thing.
    virtual void Position(std::uint64_t& now, std::int64_t& whole) = 0;
    virtual HRESULT Seek(std::int64_t milliseconds) = 0;

protected:
    virtual void Work() = 0;
    // On the caller's thread, before the worker goes on after a pause, and before it stops.
    virtual void OnResume() {}
    virtual void OnPause() {}
    virtual void OnStopping() {}
    void BeginFlush();
    void EndFlush();

    FeedHost host_;
    ce::Signal wake_;
    std::atomic<bool> quit_{false};
    std::atomic<bool> paused_{false};

private:
    std::thread worker_;
};

} // namespace filters
