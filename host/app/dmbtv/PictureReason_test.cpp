#include "host/app/dmbtv/PictureReason.h"

#include <gtest/gtest.h>

namespace dmbtv {

using filters::ReceptionState;
using medmb::BlockState;
using shell::Reason;

// Rows: what the filters report; columns: television, radio, a recording, nothing chosen.
TEST(PictureReason, WhatTheFiltersReport) {
    struct Row {
        ReceptionState reception;
        Reason television, radio, recording;
    };
    for (const Row& row : {Row{ReceptionState::kIdle, Reason::None, Reason::None, Reason::None},
                           Row{ReceptionState::kWaiting, Reason::None, Reason::None, Reason::None},
                           Row{ReceptionState::kPlaying, Reason::None, Reason::None, Reason::None},
                           Row{ReceptionState::kSoundOnly, Reason::NoPicture, Reason::None, Reason::NoPicture},
                           Row{ReceptionState::kWeak, Reason::None, Reason::None, Reason::None},
                           Row{ReceptionState::kNoService, Reason::Service, Reason::Service, Reason::Service},
                           Row{ReceptionState::kNoSource, Reason::Source, Reason::Source, Reason::Source},
                           Row{ReceptionState::kNoSync, Reason::Sync, Reason::Sync, Reason::Sync},
                           Row{ReceptionState::kNoSignal, Reason::WeakSignal, Reason::WeakSignal, Reason::WeakSignal},
                           Row{ReceptionState::kScrambled, Reason::Scrambled, Reason::Scrambled, Reason::Scrambled},
                           Row{ReceptionState::kNoDecoder, Reason::Decoder, Reason::Decoder, Reason::Decoder},
                           Row{ReceptionState::kNoFile, Reason::File, Reason::File, Reason::File}}) {
        SCOPED_TRACE(static_cast<int>(row.reception));
        ReceptionLook look;
        look.playMode = kPlayModePlaying;
        look.reception = row.reception;
        look.session = kSessionDMB;
        EXPECT_EQ(WhyNoPicture(look), (shell::ReasonShown{row.television, false}));
        look.session = kSessionDAB;
        EXPECT_EQ(WhyNoPicture(look), (shell::ReasonShown{row.radio, true}));
        look.session = kSessionFile;
        EXPECT_EQ(WhyNoPicture(look), (shell::ReasonShown{row.recording, false}));
        look.session = kSessionNone;
        EXPECT_EQ(WhyNoPicture(look), shell::ReasonShown{});
        look.session = kSessionDMB;
        look.scanning = true;
        EXPECT_EQ(WhyNoPicture(look), shell::ReasonShown{});
    }
}

// Nothing runs: only the tuner and the view can tell, and only while the session is stopped.
TEST(PictureReason, WhatTheTunerMissed) {
    struct Row {
        BlockState tuning;
        bool noSignal;
        Reason wanted;
    };
    for (const Row& row :
         {Row{BlockState::NoSource, false, Reason::Source}, Row{BlockState::NoSync, false, Reason::Sync},
          Row{BlockState::NoServices, false, Reason::Service}, Row{BlockState::Ok, false, Reason::None},
          Row{BlockState::Cancelled, false, Reason::None}, Row{BlockState::Ok, true, Reason::WeakSignal},
          Row{BlockState::NoSource, true, Reason::Source}}) {
        SCOPED_TRACE(static_cast<int>(row.tuning));
        ReceptionLook look;
        look.session = kSessionDMB;
        look.tuning = row.tuning;
        look.noSignal = row.noSignal;
        EXPECT_EQ(WhyNoPicture(look).reason, row.wanted);
        look.playMode = kPlayModePaused;
        EXPECT_EQ(WhyNoPicture(look).reason, Reason::None);
        look.playMode = kPlayModeStopped;
        look.session = kSessionFile;
        EXPECT_EQ(WhyNoPicture(look).reason, Reason::None);
    }
}

// A radio that the view has stopped: the tuner's counters tell, looked at a second apart.
TEST(PictureReason, WhatAStoppedRadioMisses) {
    using medmb::SignalState;
    StoppedRadio radio;
    medmb::StageCounters counters;
    counters.frames = 100;
    EXPECT_EQ(radio.Look(SignalState::Lost, counters, 5000), ReceptionState::kNoSignal);
    EXPECT_EQ(radio.Look(SignalState::Lost, counters, 5500), ReceptionState::kNoSignal);
    EXPECT_EQ(radio.Look(SignalState::Lost, counters, 6000), ReceptionState::kNoSource);
    counters.bytesSkipped = 5000;
    EXPECT_EQ(radio.Look(SignalState::Lost, counters, 6500), ReceptionState::kNoSource);
    EXPECT_EQ(radio.Look(SignalState::Lost, counters, 7000), ReceptionState::kNoSync);
    counters.frames = 120;
    EXPECT_EQ(radio.Look(SignalState::Weak, counters, 8000), ReceptionState::kNoSignal);
    // Another loss, later.
    EXPECT_EQ(radio.Look(SignalState::Lost, counters, 60000), ReceptionState::kNoSignal);
    EXPECT_EQ(radio.Look(SignalState::Lost, counters, 61000), ReceptionState::kNoSource);
}

} // namespace dmbtv
