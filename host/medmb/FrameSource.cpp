#include "host/medmb/FrameSource.h"

namespace medmb {

namespace {

constexpr std::size_t kChunkBytes = 64 * 1024;

} // namespace

ReadStatus ByteFrameSource::Next(Millis limit) {
    restarted = false;
    for (bool hasRead = false;; hasRead = true) {
        frame = framer.Next();
        if (!frame && !held.empty()) {
            // Everything from before the restart is handed out: now what came after it.
            framer.Reset();
            framer.Push(held);
            held.clear();
            restartPending = true;
            frame = framer.Next();
        }
        if (frame) {
            restarted = restartPending;
            restartPending = false;
            anyInTurn = true;
            return ReadStatus::Data;
        }
        if (ended)
            return ReadStatus::End;
        // What flows need not be ETI: the caller's limits count all the same.
        if (hasRead)
            return ReadStatus::Waiting;
        chunk.resize(kChunkBytes);
        std::size_t count = 0;
        const ReadStatus status = input->Read(chunk, count, limit);
        if (status == ReadStatus::End) {
            ended = true;
            framer.Finish();
        } else if (status != ReadStatus::Data) {
            return status;
        } else if (input->TakeRestart()) {
            // A file without a single frame would go round for ever. One that had frames may get them back.
            any = any || anyInTurn;
            ended = file && !any;
            anyInTurn = false;
            if (!ended)
                held.assign(chunk.begin(), chunk.begin() + static_cast<std::ptrdiff_t>(count));
            framer.Finish();
        } else {
            framer.Push(wire::ByteSpan(chunk).first(count));
        }
    }
}

} // namespace medmb
