#include "host/filters/Feed.h"

namespace filters {

void Feed::Run() {
    if (IsStarted()) {
        OnResume();
        paused_ = false;
        wake_.Raise();
        return;
    }
    quit_ = false;
    paused_ = false;
    worker_ = host_.clock.StartWorker([this] { Work(); });
}

void Feed::Pause() {
    if (!IsStarted())
        return;
    OnPause();
    paused_ = true;
    wake_.Raise();
}

void Feed::Stop() {
    if (!IsStarted())
        return;
    OnStopping();
    quit_ = true;
    // The worker may wait for room further down.
    BeginFlush();
    wake_.Raise();
    worker_.join();
    EndFlush();
}

void Feed::BeginFlush() {
    host_.picture.DeliverBeginFlush();
    host_.sound.DeliverBeginFlush();
}

void Feed::EndFlush() {
    host_.picture.DeliverEndFlush();
    host_.sound.DeliverEndFlush();
}

} // namespace filters
