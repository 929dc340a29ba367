#include "host/filters/Reception.h"
#include "tests/filters/FilterWorld.h"

#include <gtest/gtest.h>

using namespace filters;
using medmb::SignalState;

TEST(Reception, TellsWhatIsMissing) {
    struct Case {
        SignalState signal;
        bool scrambled;
        std::uint64_t frames;       // since the look before
        std::uint64_t bytesSkipped; // likewise
        ReceptionState wanted;
    };
    constexpr Case kCases[] = {
        {SignalState::NoService, false, 0, 0, ReceptionState::kNoService},
        {SignalState::NoService, true, 9, 9, ReceptionState::kNoService},
        {SignalState::Waiting, false, 0, 0, ReceptionState::kNoSource},
        {SignalState::Waiting, false, 0, 800, ReceptionState::kNoSync},
        {SignalState::Waiting, false, 3, 800, ReceptionState::kNoSignal},
        {SignalState::Lost, false, 0, 0, ReceptionState::kNoSource},
        {SignalState::Lost, false, 0, 800, ReceptionState::kNoSync},
        {SignalState::Lost, false, 20, 800, ReceptionState::kNoSignal},
        {SignalState::Good, false, 0, 0, ReceptionState::kNoSignal},
        {SignalState::Weak, false, 20, 0, ReceptionState::kNoSignal},
        {SignalState::Good, true, 20, 0, ReceptionState::kScrambled},
        {SignalState::Ended, false, 0, 0, ReceptionState::kNoSource},
    };
    medmb::StageCounters before;
    before.frames = 100;
    before.bytesSkipped = 7;
    for (const Case& c : kCases) {
        medmb::StageCounters now = before;
        now.frames += c.frames;
        now.bytesSkipped += c.bytesSkipped;
        EXPECT_EQ(WhatIsMissing(c.signal, c.scrambled, before, now), c.wanted) << (&c - kCases);
    }
}

TEST(Reception, TellsChangesOnly) {
    filters_test::MemoryStatus port;
    Reception reception(&port);
    medmb::Broadcast broadcast;
    reception.Begin(broadcast);
    reception.Report(StreamState::kUnknown, false);
    reception.Report(StreamState::kPicture, false);
    reception.Report(StreamState::kPicture, false);
    reception.Report(StreamState::kPicture, true);
    reception.Report(StreamState::kSound, false);
    reception.Report(StreamState::kForeign, false);
    reception.Report(StreamState::kScrambled, true);
    reception.ReportMissing(broadcast);
    reception.Report(ReceptionState::kIdle);
    reception.Report(ReceptionState::kIdle);
    using enum ReceptionState;
    EXPECT_EQ(port.States(),
              (std::vector{kWaiting, kPlaying, kWeak, kSoundOnly, kNoDecoder, kScrambled, kNoService, kIdle}));
}

TEST(Reception, NobodyNeedListen) {
    Reception reception(nullptr);
    reception.Report(ReceptionState::kPlaying);
}
