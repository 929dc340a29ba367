#include "host/app/dmbtv/PictureReason.h"

#include "host/filters/Reception.h"

namespace dmbtv {

namespace {

using filters::ReceptionState;
using shell::Reason;

// Nothing runs: the tuner could not tune, or the view has stopped a session without signal.
Reason WhenIdle(const ReceptionLook& look) {
    if (look.playMode != kPlayModeStopped || look.session == kSessionFile)
        return Reason::None;
    switch (look.tuning) {
    case medmb::BlockState::NoSource:
        return Reason::Source;
    case medmb::BlockState::NoSync:
        return Reason::Sync;
    case medmb::BlockState::NoServices:
        return Reason::Service;
    case medmb::BlockState::Ok:
    case medmb::BlockState::Cancelled:
        break;
    }
    return look.noSignal ? Reason::WeakSignal : Reason::None;
}

Reason ReasonOf(const ReceptionLook& look) {
    switch (look.reception) {
    case ReceptionState::kIdle:
        return WhenIdle(look);
    case ReceptionState::kSoundOnly:
        return look.session == kSessionDAB ? Reason::None : Reason::NoPicture;
    case ReceptionState::kNoService:
        return Reason::Service;
    case ReceptionState::kNoSource:
        return Reason::Source;
    case ReceptionState::kNoSync:
        return Reason::Sync;
    case ReceptionState::kNoSignal:
        return Reason::WeakSignal;
    case ReceptionState::kScrambled:
        return Reason::Scrambled;
    case ReceptionState::kNoDecoder:
        return Reason::Decoder;
    case ReceptionState::kNoFile:
        return Reason::File;
    case ReceptionState::kWaiting:
    case ReceptionState::kPlaying:
    case ReceptionState::kWeak: // damaged, but seen
        break;
    }
    return Reason::None;
}

} // namespace

ReceptionState StoppedRadio::Look(medmb::SignalState signal, const medmb::StageCounters& counters, ce::Millis now) {
    constexpr ce::Millis kApart = 1000;
    if (now - seenAt >= kApart) {
        const bool first = seenAt == 0 || now - seenAt > 2 * kApart; // the counters of another time tell nothing
        state = first ? ReceptionState::kNoSignal : filters::WhatIsMissing(signal, false, seen, counters);
        seen = counters;
        seenAt = now;
    }
    return state;
}

shell::ReasonShown WhyNoPicture(const ReceptionLook& look) {
    if (look.session == kSessionNone || look.scanning)
        return {};
    return {ReasonOf(look), look.session == kSessionDAB};
}

} // namespace dmbtv
