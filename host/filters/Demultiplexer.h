// The stages from transport packets to access units:
//
//   PacketSync        bytes -> packets (files only)
//   Demultiplexer     packet -> its stream; continuity; what came before the tables is kept and read again
//   SectionAssembler  -> sections     ProgramTables  -> what the streams are
//   UnitAssembler     -> coded units  AvcUnits, SoundFramer -> whole units of one framing
//   ClockLine         -> times on one line
//
// No stage reads, writes or waits: packets in, typed results to the listener.
#pragma once

#include "host/filters/AvcUnits.h"
#include "host/filters/ClockLine.h"
#include "host/filters/ProgramTables.h"
#include "host/filters/SoundFramer.h"
#include "host/filters/UnitAssembler.h"

#include <deque>
#include <map>

namespace filters {

// One picture's or one sound frame's bytes. Pictures are byte streams with start codes, whatever the transmitter
// uses; an AAC frame has no header, one of MPEG audio has.
struct AccessUnit {
    Bytes bytes;
    Ticks time = 0; // of presentation, on the line
    // How much later than the transmitter's clock at the unit's arrival that is; 0 when there is no such clock.
    Ticks lead = 0;
    bool randomAccess = false;
    bool discontinuity = false; // units before this one are missing
    bool live = false;          // a transmitter sets the pace
};

class DemuxListener {
public:
    // The streams are known, or have changed. A stream that is not there is null.
    virtual void OnStreams(const VideoFormat* video, const AudioFormat* audio) = 0;
    virtual void OnVideo(AccessUnit unit) = 0;
    virtual void OnAudio(AccessUnit unit) = 0;
    // The stream's times make no sense any more: the pieces have to be put together anew.
    virtual void OnClockLost() = 0;

protected:
    ~DemuxListener() = default;
};

struct DemuxCounters {
    std::uint64_t packets = 0;
    std::uint64_t damagedPackets = 0; // transport error, or no packet at all
    std::uint64_t scrambledPackets = 0;
    std::uint64_t gaps = 0; // of the continuity counters
    std::uint64_t videoUnits = 0;
    std::uint64_t audioUnits = 0;
    std::uint64_t clockJumps = 0;
};

class Demultiplexer {
public:
    explicit Demultiplexer(DemuxListener& listener) : listener_(listener) {}

    // One packet of 188 bytes.
    void Push(ByteSpan packet);
    // The end: gives the last units.
    void Finish();
    // Another place of the same stream follows: all but the tables is forgotten, and the line begins anew.
    void Restart();
    // Something may be missing from here on; the line goes on.
    void MarkGap();

    [[nodiscard]] const ProgramTables& Tables() const { return tables_; }
    // The streams' packets are scrambled at present.
    [[nodiscard]] bool IsScrambled() const { return scrambledRun_ >= kScrambledProof; }
    [[nodiscard]] const DemuxCounters& Counters() const { return counters_; }
    // Where the stream's clock is, on the line.
    [[nodiscard]] std::optional<Ticks> Now() const { return clock_.Now(); }
    // What is being taken apart; null while it is not known.
    [[nodiscard]] const Program* Streams() const { return program_ ? &*program_ : nullptr; }

private:
    static constexpr unsigned kScrambledProof = 8;

    // What a stream of units needs while it passes.
    struct Lane {
        UnitAssembler assembler;
        bool discontinuity = false;
        std::optional<Ticks> lastTime;  // of the unit before
        std::optional<Ticks> lastStamp; // of the last unit that had one
        unsigned sinceStamp = 0;        // units since that one, itself included
        Ticks unitTicks = 0;            // how long a unit lasts, as far as is known
        std::optional<Ticks> lead;      // of units with a stamp, smoothed
        unsigned misplaced = 0;         // stamps in a row that belong to no clock
        SoundFramer framer;             // of frames that lie anyhow
    };

    enum class Order : std::uint8_t { kNext, kRepeated, kAfterGap };
    struct Continuity {
        std::uint8_t counter = 0;
        Bytes payload;
    };

    void Hold(ByteSpan packet);
    void Adopt();
    void Announce();
    void Route(const wire::TsPacket& packet);
    void TakeReference(const wire::TsHeader& header);
    [[nodiscard]] Order OrderOf(const wire::TsPacket& packet);
    void TakeVideo(CodedUnit unit);
    void EmitVideo(ByteSpan bytes, const CodedUnit& unit, bool stamped);
    void TakeAudio(CodedUnit unit);
    void TakeFrames(const CodedUnit& unit);
    void EmitAudio(ByteSpan bytes, const CodedUnit& unit, bool stamped);
    // Fills in time, lead and discontinuity; false when the unit has no place on the line.
    [[nodiscard]] bool SetTime(Lane& lane, const Lane& other, const CodedUnit* stamps,
                               const std::optional<wire::SlConfig>& sl, AccessUnit& unit);
    [[nodiscard]] std::optional<Ticks> GuessTime(const Lane& lane, const Lane& other) const;
    void LoseClock();

    DemuxListener& listener_;
    ProgramTables tables_;
    std::optional<Program> program_;
    std::optional<AvcConfiguration> avc_;
    AudioFormat audioFormat_;
    Lane video_;
    Lane audio_;
    ClockLine clock_;
    std::map<std::uint16_t, Continuity> continuity_;
    Bytes held_; // packets that came before the tables
    unsigned scrambledRun_ = 0;
    std::uint64_t routed_ = 0;        // packets since the programme is known, those held before included
    std::deque<std::uint64_t> jumps_; // the latest, as counts of packets
    DemuxCounters counters_;
};

} // namespace filters
