#include "host/medmb/FrameSource.h"

namespace medmb {

namespace {

constexpr std::size_t kChunkBytes = 64 * 1024;

} // namespace

ReadStatus ByteFrameSource::Next(Millis limit) {
    restarted = false;
    for (;;) {
        frame = framer.Next();
        if (frame) {
            restarted = restartPending;
            restartPending = false;
            return ReadStatus::Data;
        }
        if (!held.empty()) {
            // Everything from before the restart is handed out: now what came after it.
            framer.Reset();
            framer.Push(held);
            held.clear();
            restartPending = true;
            continue;
        }
        if (ended)
            return ReadStatus::End;
        chunk.resize(kChunkBytes);
        std::size_t count = 0;
        const ReadStatus status = input->Read(chunk, count, limit);
        if (status == ReadStatus::End) {
            ended = true;
            framer.Finish();
        } else if (status != ReadStatus::Data) {
            return status;
        } else if (input->TakeRestart()) {
            held.assign(chunk.begin(), chunk.begin() + static_cast<std::ptrdiff_t>(count));
            framer.Finish();
        } else {
            framer.Push(wire::ByteSpan(chunk).first(count));
        }
    }
}

} // namespace medmb
