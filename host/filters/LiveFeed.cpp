#include "host/filters/LiveFeed.h"

namespace filters {

void LiveFeed::Position(std::uint64_t& now, std::int64_t& whole) {
    now = IsStarted() ? static_cast<std::uint64_t>(host_.clock.Now() - started_) : 0;
    whole = 0;
}

// What is queued further down is old when the graph runs again, so it goes now, and nothing more is taken until then.
void LiveFeed::OnPause() {
    BeginFlush();
}

void LiveFeed::OnResume() {
    EndFlush();
}

void LiveFeed::Work() {
    started_ = host_.clock.Now();
    deadline_ = host_.clock.Now() + kNoSignalMs;
    noSignal_ = false;
    reception_.Begin(broadcast_);
    host_.stream.BeginRun(true);
    host_.stream.MarkGap();
    medmb::BroadcastReader reader = broadcast_.Attach();
    broadcast_.SetNotify([this] { wake_.Raise(); });
    while (!quit_) {
        Drain(reader);
        if (quit_)
            break;
        if (host_.clock.Now() >= deadline_) {
            noSignal_ = true;
            deadline_ += kNoSignalMs;
            reception_.ReportMissing(broadcast_);
            host_.notify(IDMB_EVENT_NO_SIGNAL);
        }
        (void)wake_.Wait(deadline_);
    }
    broadcast_.SetNotify(nullptr);
    reception_.Report(ReceptionState::kIdle);
}

void LiveFeed::Drain(medmb::BroadcastReader& reader) {
    medmb::BroadcastItem item;
    while (!quit_ && reader.Attached() && reader.TryRead(item) == medmb::ReadResult::Item) {
        if (item.kind == medmb::ItemKind::Packets)
            Take(item);
    }
}

void LiveFeed::Take(const medmb::BroadcastItem& item) {
    ParserStream& stream = host_.stream;
    stream.SetDropping(paused_);
    if (item.discontinuity)
        stream.MarkGap();
    bool sound = false; // a packet that the outer code could not mend is no signal
    const ByteSpan bytes(item.bytes);
    for (std::size_t at = 0; at + wire::kTsPacketSize <= bytes.size() && !quit_; at += wire::kTsPacketSize) {
        const ByteSpan packet = bytes.subspan(at, wire::kTsPacketSize);
        sound |= packet[0] == wire::kTsSyncByte && (packet[1] & 0x80) == 0;
        stream.Push(packet);
        tee_.Offer(packet, stream.Demux().Tables());
    }
    if (stream.TakeAudioChange())
        host_.notify(IDMB_EVENT_AUDIO_CHANGE);
    if (stream.TakeClockLost())
        host_.notify(IDMB_EVENT_TIME_RESET);
    if (!sound)
        return;
    deadline_ = host_.clock.Now() + kNoSignalMs;
    reception_.Report(stream.State(), broadcast_.Signal() == medmb::SignalState::Weak);
    if (std::exchange(noSignal_, false))
        host_.notify(IDMB_EVENT_SIGNAL);
}

} // namespace filters
