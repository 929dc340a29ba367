#include "host/dshow/ComObject.h"

namespace dshow {

namespace {
std::atomic<LONG> liveObjects{0};
}

LONG LiveObjects() {
    return liveObjects;
}

void CountLiveObject(LONG change) {
    liveObjects += change;
}

} // namespace dshow
