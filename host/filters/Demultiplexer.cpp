#include "host/filters/Demultiplexer.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace filters {

namespace {

// Some four seconds of the largest sub-channel: more than tables may take to come round.
constexpr std::size_t kHeldBytes = 512 * 1024;
constexpr Ticks kUsualPicture = kTicksPerSecond / 30;
// From arrival to presentation, while the stream has not shown its own delay.
constexpr Ticks kUsualLead = kTicksPerSecond / 2;
// So many stamps in a row without a place, or so many jumps within so many packets: no clock to follow.
constexpr unsigned kMisplacedLimit = 24;
constexpr std::size_t kJumpLimit = 4;
constexpr std::uint64_t kJumpWindow = 1500;
constexpr Ticks kLeadSmoothing = 8;

} // namespace

void Demultiplexer::Push(ByteSpan bytes) {
    ++counters_.packets;
    const auto packet = wire::TsPacket::Parse(bytes);
    if (!packet || packet->header.transportError) {
        ++counters_.damagedPackets;
        ++routed_;
        return;
    }
    const std::uint16_t pid = packet->header.pid;
    if (tables_.IsTable(pid) && packet->hasPayload && packet->header.scrambling == 0) {
        const Order order = OrderOf(*packet);
        if (order != Order::kRepeated && tables_.Push(*packet, order == Order::kAfterGap))
            Adopt();
    }
    if (!program_)
        Hold(bytes);
    else
        Route(*packet);
}

void Demultiplexer::Hold(ByteSpan packet) {
    if (held_.size() >= kHeldBytes)
        held_.erase(held_.begin(),
                    held_.begin() + static_cast<std::ptrdiff_t>(kHeldBytes / 2 / packet.size() * packet.size()));
    held_.insert(held_.end(), packet.begin(), packet.end());
}

void Demultiplexer::Adopt() {
    const Program& next = *tables_.Current();
    const bool first = !program_;
    const auto before = std::exchange(program_, next);
    if (first || before->video != next.video) {
        video_ = Lane{};
        video_.discontinuity = !first;
        avc_.reset();
        if (next.video) {
            video_.assembler = UnitAssembler(next.video->sl);
            avc_ = AvcConfiguration::Parse(next.video->format.configuration);
        }
        video_.unitTicks = kUsualPicture;
    }
    if (first || before->audio != next.audio) {
        audio_ = Lane{};
        audio_.discontinuity = !first;
        audioFormat_ = {};
        if (next.audio) {
            audio_.assembler = UnitAssembler(next.audio->sl);
            audioFormat_ = next.audio->format;
            audio_.unitTicks = audioFormat_.UnitTicks();
            audio_.framer = SoundFramer(next.audio->layout);
        }
    }
    Announce();
    if (!first)
        return;
    const Bytes held = std::exchange(held_, {});
    for (std::size_t at = 0; at < held.size(); at += wire::kTsPacketSize) {
        if (const auto packet = wire::TsPacket::Parse(ByteSpan(held).subspan(at, wire::kTsPacketSize)))
            Route(*packet);
    }
}

void Demultiplexer::Announce() {
    AudioFormat audio = audioFormat_;
    if (program_->audio && IsFramed(program_->audio->layout) && audio.sampleRate == 0)
        audio.codec = AudioCodec::kAac; // or another one: the first frame will tell
    const bool hasAudio = program_->audio && audio.codec != AudioCodec::kUnsupported;
    listener_.OnStreams(program_->video ? &program_->video->format : nullptr, hasAudio ? &audio : nullptr);
}

void Demultiplexer::Route(const wire::TsPacket& packet) {
    ++routed_;
    if (packet.header.pid == program_->clockPid)
        TakeReference(packet.header);
    const bool isVideo = program_->video && program_->video->pid == packet.header.pid;
    const bool isAudio = program_->audio && program_->audio->pid == packet.header.pid;
    if ((!isVideo && !isAudio) || !packet.hasPayload)
        return;
    if (packet.header.scrambling != 0) {
        ++counters_.scrambledPackets;
        ++scrambledRun_;
        (isVideo ? video_ : audio_).assembler.Drop();
        return;
    }
    scrambledRun_ = 0;
    const Order order = OrderOf(packet);
    if (order == Order::kRepeated)
        return;
    const bool gap = order == Order::kAfterGap;
    counters_.gaps += gap ? 1 : 0;
    if (isVideo)
        video_.assembler.Push(packet, gap, [this](CodedUnit unit) { TakeVideo(std::move(unit)); });
    else
        audio_.assembler.Push(packet, gap, [this](CodedUnit unit) { TakeAudio(std::move(unit)); });
}

void Demultiplexer::TakeReference(const wire::TsHeader& header) {
    if (!header.pcr || !clock_.OnReference(*header.pcr, header.discontinuity, routed_))
        return;
    ++counters_.clockJumps;
    video_.assembler.MarkClockJump();
    audio_.assembler.MarkClockJump();
    jumps_.push_back(counters_.packets);
    if (jumps_.size() < kJumpLimit)
        return;
    const bool restless = jumps_.back() - jumps_.front() < kJumpWindow;
    jumps_.pop_front();
    if (restless)
        LoseClock();
}

void Demultiplexer::LoseClock() {
    jumps_.clear();
    video_.misplaced = 0;
    audio_.misplaced = 0;
    listener_.OnClockLost();
}

// ISO/IEC 13818-1 2.4.3.3: the counter goes up with every packet that has a payload; a packet may come twice.
Demultiplexer::Order Demultiplexer::OrderOf(const wire::TsPacket& packet) {
    const auto [entry, isNew] = continuity_.try_emplace(packet.header.pid);
    Continuity& last = entry->second;
    const std::uint8_t counter = packet.header.continuity;
    Order order = Order::kNext;
    if (!isNew && !packet.header.discontinuity && ((last.counter + 1) & 0x0F) != counter)
        order = last.counter == counter && std::ranges::equal(last.payload, packet.payload) ? Order::kRepeated
                                                                                            : Order::kAfterGap;
    last.counter = counter;
    last.payload.assign(packet.payload.begin(), packet.payload.end());
    return order;
}

// --- units

void Demultiplexer::TakeVideo(CodedUnit unit) {
    if (program_->video->layout == UnitLayout::kSyncLayer) {
        EmitVideo(unit.bytes, unit, true);
        return;
    }
    const std::vector<std::size_t> starts = AvcUnitStarts(unit.bytes);
    for (std::size_t i = 0; i < starts.size(); ++i) {
        const std::size_t end = i + 1 < starts.size() ? starts[i + 1] : unit.bytes.size();
        EmitVideo(ByteSpan(unit.bytes).subspan(starts[i], end - starts[i]), unit, i == 0);
        unit.lossBefore = false;
    }
}

void Demultiplexer::EmitVideo(ByteSpan bytes, const CodedUnit& coded, bool stamped) {
    video_.discontinuity |= coded.lossBefore;
    auto stream = ToByteStream(bytes, avc_ ? &*avc_ : nullptr);
    if (!stream) {
        video_.discontinuity = true;
        return;
    }
    AccessUnit unit;
    const AvcUnitInfo info = InspectAvcUnit(*stream);
    unit.bytes = std::move(*stream);
    unit.randomAccess = info.randomAccess || (coded.randomAccess && info.hasParameterSets);
    if (!SetTime(video_, audio_, stamped ? &coded : nullptr, program_->video->sl, unit))
        return;
    ++counters_.videoUnits;
    listener_.OnVideo(std::move(unit));
}

void Demultiplexer::TakeAudio(CodedUnit unit) {
    if (IsFramed(program_->audio->layout)) {
        TakeFrames(unit);
    } else if (audioFormat_.codec != AudioCodec::kUnsupported) {
        audio_.discontinuity |= unit.lossBefore;
        EmitAudio(unit.bytes, unit, true);
    }
}

// A stamp belongs to the first frame that begins in its packet.
void Demultiplexer::TakeFrames(const CodedUnit& unit) {
    if (unit.lossBefore)
        audio_.framer.Reset();
    audio_.discontinuity |= unit.lossBefore;
    bool stamped = false;
    audio_.framer.Push(unit.bytes, [&](const SoundFrame& frame) {
        if (frame.format != audioFormat_) {
            audioFormat_ = frame.format;
            audio_.unitTicks = audioFormat_.UnitTicks();
            Announce();
        }
        EmitAudio(frame.bytes, unit, frame.beginsHere && !stamped);
        stamped |= frame.beginsHere;
    });
}

void Demultiplexer::EmitAudio(ByteSpan bytes, const CodedUnit& coded, bool stamped) {
    AccessUnit unit;
    unit.bytes.assign(bytes.begin(), bytes.end());
    unit.randomAccess = true;
    if (!SetTime(audio_, video_, stamped ? &coded : nullptr, program_->audio->sl, unit))
        return;
    ++counters_.audioUnits;
    listener_.OnAudio(std::move(unit));
}

// --- times

bool Demultiplexer::SetTime(Lane& lane, const Lane& other, const CodedUnit* stamps,
                            const std::optional<wire::SlConfig>& sl, AccessUnit& unit) {
    std::optional<Ticks> time;
    if (stamps != nullptr && stamps->stamp && sl)
        time = clock_.Place(*stamps->stamp, sl->timeStampLength, sl->timeStampResolution, stamps->olderClock);
    else if (stamps != nullptr && stamps->pts)
        time = clock_.Place(*stamps->pts, 33, kTicksPerSecond, stamps->olderClock);
    const bool hasStamp = stamps != nullptr && (stamps->stamp || stamps->pts);
    if (time) {
        lane.misplaced = 0;
        // The picture's rate shows in its stamps; a sound frame's length is known.
        if (&lane == &video_ && lane.lastStamp && !lane.discontinuity) {
            const Ticks each = (*time - *lane.lastStamp) / static_cast<Ticks>(lane.sinceStamp);
            if (each > 0 && each <= kTicksPerSecond)
                lane.unitTicks = each;
        }
        lane.lastStamp = time;
        lane.sinceStamp = 0;
        if (const auto now = clock_.Now())
            lane.lead = lane.lead ? *lane.lead + (*time - *now - *lane.lead) / kLeadSmoothing : *time - *now;
    } else {
        if (hasStamp && ++lane.misplaced == kMisplacedLimit)
            LoseClock();
        time = GuessTime(lane, other);
    }
    if (!time)
        return false;
    ++lane.sinceStamp;
    lane.lastTime = time;
    unit.time = *time;
    unit.lead = clock_.Now() ? *time - *clock_.Now() : 0;
    unit.discontinuity = std::exchange(lane.discontinuity, false);
    return true;
}

// A unit without a stamp follows the one before; when units are missing in between, the clock tells how many.
std::optional<Ticks> Demultiplexer::GuessTime(const Lane& lane, const Lane& other) const {
    const auto now = clock_.Now();
    const Ticks lead = lane.lead.value_or(other.lead.value_or(kUsualLead));
    if (!lane.lastTime)
        return now ? std::optional(*now + lead) : std::nullopt;
    const Ticks next = *lane.lastTime + lane.unitTicks;
    if (!lane.discontinuity || !now || lane.unitTicks <= 0)
        return next;
    const Ticks late = *now + lead - next;
    return late <= 0 ? next : next + (late + lane.unitTicks / 2) / lane.unitTicks * lane.unitTicks;
}

// --- ends

void Demultiplexer::Finish() {
    if (!program_)
        return;
    video_.assembler.Finish([this](CodedUnit unit) { TakeVideo(std::move(unit)); });
    audio_.assembler.Finish([this](CodedUnit unit) { TakeAudio(std::move(unit)); });
}

void Demultiplexer::MarkGap() {
    continuity_.clear();
    video_.assembler.Drop();
    audio_.assembler.Drop();
}

void Demultiplexer::Restart() {
    MarkGap();
    held_.clear();
    clock_.Reset();
    jumps_.clear();
    scrambledRun_ = 0;
    for (Lane* lane : {&video_, &audio_}) {
        lane->lastTime.reset();
        lane->lastStamp.reset();
        lane->lead.reset();
        lane->misplaced = 0;
        lane->framer.Reset();
        lane->discontinuity = true;
    }
}

} // namespace filters
