// What a transport stream carries: programme association, programme map, and for a sync layer stream the object
// descriptors (ETSI TS 102 428 5, ISO/IEC 13818-1 2.4.4 and 2.11, ISO/IEC 14496-1 7.2).
#pragma once

#include "host/filters/Formats.h"
#include "host/filters/SectionAssembler.h"
#include "host/wire/Mpeg4Descriptors.h"
#include "host/wire/PsiSection.h"

#include <map>
#include <optional>
#include <set>

namespace filters {

// How the units of a stream lie in its PES packets.
enum class UnitLayout : std::uint8_t {
    kSyncLayer, // SL packets
    kPlain,     // the PES payload is the unit, or several
    // Frames of sound lie anyhow:
    kAdts,      // with ADTS headers
    kLatm,      // in LATM with its synchronisation layer
    kMpegAudio, // of MPEG audio
};

template <class Format> struct ProgramStream {
    std::uint16_t pid = 0;
    UnitLayout layout = UnitLayout::kPlain;
    std::optional<wire::SlConfig> sl{};
    Format format{};
    bool operator==(const ProgramStream&) const = default;
};

struct Program {
    std::uint16_t number = 0;
    std::uint16_t clockPid = 0x1FFF;
    std::optional<ProgramStream<VideoFormat>> video;
    // Where frames lie anyhow the format stays empty: they tell it.
    std::optional<ProgramStream<AudioFormat>> audio;
    bool operator==(const Program&) const = default;
};

// A section as it came, with its check sum right.
struct TableSection {
    std::uint16_t pid = 0;
    Bytes bytes;
};

class ProgramTables {
public:
    // Does this PID carry tables, as far as is known?
    [[nodiscard]] bool IsTable(std::uint16_t pid) const { return assemblers_.contains(pid); }
    // Takes a packet of such a PID. True when the programme has become known or has changed.
    [[nodiscard]] bool Push(const wire::TsPacket& packet, bool gap);

    // The first programme with picture or sound, once all of it is known.
    [[nodiscard]] const std::optional<Program>& Current() const { return program_; }
    // There is a programme, but nothing in it that can be decoded here.
    [[nodiscard]] bool IsForeign() const { return foreign_ && !map_; }
    // The tables last received, in the order in which a receiver needs them.
    [[nodiscard]] std::vector<TableSection> Sections() const;
    [[nodiscard]] std::uint64_t DamagedSections() const { return damaged_; }

    ProgramTables();

private:
    void TakeSection(std::uint16_t pid, ByteSpan bytes);
    void TakePat(const wire::PsiSection& section);
    void TakePmt(std::uint16_t pid, const wire::PsiSection& section);
    void TakeObjects(std::uint16_t pid, const wire::PsiSection& section);
    void Derive();
    void DeriveStream(const wire::Pmt::Stream& stream, Program& program, bool& complete) const;

    std::map<std::uint16_t, SectionAssembler> assemblers_;
    // By PID and by table id, extension and number.
    std::map<std::uint16_t, std::map<std::uint32_t, Bytes>> sections_;
    std::set<std::uint16_t> mapPids_;
    std::vector<std::uint16_t> tableOrder_; // PIDs as they became known
    std::optional<std::uint16_t> mapPid_;   // of the programme chosen
    std::optional<wire::Pmt> map_;
    std::optional<wire::SlConfig> objectSl_;                  // of the object descriptor stream
    std::map<std::uint16_t, std::uint16_t> elementaryIds_;    // PID -> ES_ID
    std::map<std::uint16_t, wire::EsDescriptor> descriptors_; // by ES_ID
    std::optional<Program> program_;
    unsigned objectRounds_ = 0; // object descriptor sections since the map changed
    bool foreign_ = false;      // a map without anything known has been met
    bool changed_ = false;
    std::uint64_t damaged_ = 0;
};

} // namespace filters
