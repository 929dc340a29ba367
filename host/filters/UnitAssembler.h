// Access units out of the transport packets of one stream: PES packets (ISO/IEC 13818-1 2.4.3.6), in them, where the
// stream has a sync layer, SL packets (ISO/IEC 14496-1 7.3.2.4), and out of these the units.
#pragma once

#include "host/filters/PacketSync.h"
#include "host/wire/Mpeg4Descriptors.h"
#include "host/wire/Pes.h"
#include "host/wire/TsPacket.h"

#include <functional>
#include <optional>

namespace filters {

struct CodedUnit {
    Bytes bytes;
    std::optional<std::uint64_t> stamp; // composition time in the sync layer's ticks
    std::optional<std::uint64_t> pts;   // of the PES packet, 90 kHz, 33 bits
    bool randomAccess = false;          // the stream says so
    bool lossBefore = false;            // something is missing between the unit before and this one
    bool olderClock = false;            // its stamps are of the clock before the last jump
};

class UnitAssembler {
public:
    using Sink = std::function<void(CodedUnit)>;

    // Without a configuration every PES packet is a unit.
    UnitAssembler() = default;
    explicit UnitAssembler(std::optional<wire::SlConfig> config) : config_(config) {}

    // `gap`: packets of this stream are missing before this one.
    void Push(const wire::TsPacket& packet, bool gap, const Sink& sink);
    // No packet follows: the unit under way ends if it may.
    void Finish(const Sink& sink);
    // What was under way is lost.
    void Drop();
    // The clock jumped; what is under way has stamps of the clock before.
    void MarkClockJump();

    [[nodiscard]] std::uint64_t LostUnits() const { return lost_; }

private:
    void EndPes(const Sink& sink);
    void TakePes(const wire::PesHeader& header, ByteSpan payload, const Sink& sink);
    void TakeSlPacket(const wire::PesHeader& header, ByteSpan payload, const Sink& sink);
    void EndUnit(const Sink& sink);
    void LoseUnit();

    std::optional<wire::SlConfig> config_;
    Bytes pes_;
    std::size_t pesSize_ = 0; // wanted, header included; 0: until the next one begins
    bool inPes_ = false;
    bool pesRandomAccess_ = false;
    bool pesOlderClock_ = false;

    std::optional<CodedUnit> unit_; // under way
    std::size_t unitSize_ = 0;      // wanted, 0 unknown
    std::optional<std::uint32_t> lastSequence_;
    bool lossBefore_ = false;
    std::uint64_t lost_ = 0;
};

} // namespace filters
