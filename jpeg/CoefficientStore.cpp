#include "jpeg/CoefficientStore.h"

#include "jpeg/Transform.h"

namespace jpeg {

Status CoefficientStore::Open(const Frame& frame, int reduction) {
    kept = KeptCount(reduction);
    const bool needsHistory = reduction < 3;
    const std::uint64_t blockBytes =
        static_cast<std::uint64_t>(kept) * sizeof(std::int16_t) + (needsHistory ? sizeof(std::uint64_t) : 0);
    std::uint64_t bytes = 0;
    for (int i = 0; i < frame.componentCount; ++i) {
        planes[i].blocksPerLine = frame.BlocksPerLine(i);
        planes[i].blockLines = frame.BlockLines(i);
        bytes += static_cast<std::uint64_t>(BlockCount(i)) * blockBytes;
    }
    if (bytes > kMaxCoefficientBytes) {
        return Status::kOutOfMemory;
    }
    for (int i = 0; i < frame.componentCount; ++i) {
        const auto blocks = static_cast<std::uint64_t>(BlockCount(i));
        if (!planes[i].values.Allocate(blocks * static_cast<std::uint64_t>(kept)) ||
            (needsHistory && !planes[i].history.Allocate(blocks))) {
            return Status::kOutOfMemory;
        }
    }
    return Status::kOk;
}

} // namespace jpeg
