#include "host/filters/ProgramTables.h"

#include "host/wire/Mpeg4Objects.h"
#include "host/wire/SlPacket.h"

#include <algorithm>
#include <utility>

namespace filters {

namespace {

// The carousel has shown all its objects after so many sections; a stream that is still unknown then stays so.
constexpr unsigned kEnoughObjectRounds = 4;

std::uint32_t KeyOf(const wire::PsiSection& section) {
    return static_cast<std::uint32_t>(section.tableId) << 24 | static_cast<std::uint32_t>(section.extension) << 8 |
           section.number;
}

// Of sound outside a sync layer, ISO/IEC 13818-1 table 2-34.
std::optional<UnitLayout> FramingOf(std::uint8_t streamType) {
    switch (streamType) {
    case wire::kStreamTypeMpeg1Audio:
    case wire::kStreamTypeMpeg2Audio:
        return UnitLayout::kMpegAudio;
    case wire::kStreamTypeAdtsAac:
        return UnitLayout::kAdts;
    case wire::kStreamTypeLatmAac:
        return UnitLayout::kLatm;
    default:
        return std::nullopt;
    }
}

std::optional<std::uint16_t> ElementaryIdOf(const wire::Pmt::Stream& stream) {
    for (const wire::PsiDescriptor& descriptor : stream.descriptors) {
        if (descriptor.tag == wire::kPsiTagSl && descriptor.body.size() >= 2)
            return static_cast<std::uint16_t>(descriptor.body[0] << 8 | descriptor.body[1]);
    }
    return std::nullopt;
}

// The objects of an access unit of the object descriptor stream: a list of commands. Some multiplexers send the objects
// without the command around them, which has the same tag.
std::vector<wire::EsDescriptor> StreamsOf(ByteSpan unit) {
    std::vector<wire::EsDescriptor> streams;
    const auto take = [&](std::vector<wire::ObjectDescriptor>& objects) {
        for (wire::ObjectDescriptor& object : objects)
            std::ranges::move(object.streams, std::back_inserter(streams));
    };
    if (auto update = wire::ObjectDescriptorUpdate::Parse(unit))
        take(update->objects);
    if (!streams.empty())
        return streams;
    while (!unit.empty()) {
        const auto inner = wire::Mp4Descriptor::Take(unit);
        if (!inner)
            break;
        if (inner->tag != wire::kTagObjectDescriptor)
            continue;
        if (auto object = wire::ObjectDescriptor::Parse(inner->body))
            std::ranges::move(object->streams, std::back_inserter(streams));
    }
    return streams;
}

} // namespace

ProgramTables::ProgramTables() {
    assemblers_[wire::kPatPid];
    tableOrder_.push_back(wire::kPatPid);
}

bool ProgramTables::Push(const wire::TsPacket& packet, bool gap) {
    const std::uint16_t pid = packet.header.pid;
    const auto found = assemblers_.find(pid);
    if (found == assemblers_.end())
        return false;
    changed_ = false;
    std::vector<Bytes> sections;
    found->second.Push(packet, gap, [&](ByteSpan bytes) { sections.emplace_back(bytes.begin(), bytes.end()); });
    for (const Bytes& bytes : sections)
        TakeSection(pid, bytes);
    return std::exchange(changed_, false);
}

void ProgramTables::TakeSection(std::uint16_t pid, ByteSpan bytes) {
    const auto section = wire::PsiSection::Parse(bytes);
    if (!section) {
        ++damaged_;
        return;
    }
    if (!section->current)
        return;
    Bytes& kept = sections_[pid][KeyOf(*section)];
    const bool repeated = std::ranges::equal(kept, bytes);
    if (!repeated)
        kept.assign(bytes.begin(), bytes.end());
    if (section->tableId == wire::kTableIdObjectDescriptors) {
        TakeObjects(pid, *section);
        return;
    }
    if (repeated)
        return;
    if (pid == wire::kPatPid && section->tableId == wire::kTableIdPat)
        TakePat(*section);
    else if (section->tableId == wire::kTableIdPmt && mapPids_.contains(pid))
        TakePmt(pid, *section);
}

void ProgramTables::TakePat(const wire::PsiSection& section) {
    const auto pat = wire::Pat::Parse(section);
    if (!pat)
        return;
    mapPids_.clear();
    for (const auto& program : pat->programs) {
        if (program.number == 0 || program.mapPid == wire::kNullPid)
            continue;
        mapPids_.insert(program.mapPid);
        if (assemblers_.try_emplace(program.mapPid).second)
            tableOrder_.push_back(program.mapPid);
    }
    if (mapPid_ && !mapPids_.contains(*mapPid_)) {
        mapPid_.reset(); // another programme is to be chosen
        map_.reset();
        descriptors_.clear();
        for (const std::uint16_t pid : mapPids_)
            sections_.erase(pid);
    }
}

void ProgramTables::TakePmt(std::uint16_t pid, const wire::PsiSection& section) {
    auto map = wire::Pmt::Parse(section);
    if (!map || (mapPid_ && *mapPid_ != pid))
        return;
    // Several programmes may share a PID; the first one that came stays.
    if (map_ && mapPid_ == pid && map_->program != map->program)
        return;
    const bool plays = std::ranges::any_of(map->streams, [](const wire::Pmt::Stream& stream) {
        return stream.type == wire::kStreamTypeSlPes || stream.type == wire::kStreamTypeH264 ||
               FramingOf(stream.type).has_value();
    });
    if (!plays) {
        foreign_ = true;
        return;
    }
    mapPid_ = pid;
    objectSl_.reset();
    objectRounds_ = 0;
    elementaryIds_.clear();
    std::optional<std::uint16_t> objectId;
    for (const wire::PsiDescriptor& descriptor : map->descriptors) {
        if (descriptor.tag != wire::kPsiTagIod)
            continue;
        const auto iod = wire::IodDescriptor::Parse(descriptor.body);
        if (!iod)
            continue;
        for (const wire::EsDescriptor& stream : iod->streams) {
            descriptors_[stream.esId] = stream;
            if (stream.decoder.streamType == wire::kStreamObjectDescriptor) {
                objectId = stream.esId;
                objectSl_ = stream.sl;
            }
        }
    }
    for (const wire::Pmt::Stream& stream : map->streams) {
        if (const auto id = ElementaryIdOf(stream))
            elementaryIds_[stream.pid] = *id;
        if (stream.type == wire::kStreamTypeSlSections && assemblers_.try_emplace(stream.pid).second)
            tableOrder_.push_back(stream.pid);
    }
    map_ = std::move(map);
    // Objects that came before the map are read now.
    for (const auto& [tablePid, sections] : std::map(sections_)) {
        for (const auto& [key, bytes] : sections) {
            const auto kept = wire::PsiSection::Parse(bytes);
            if (kept && kept->tableId == wire::kTableIdObjectDescriptors)
                TakeObjects(tablePid, *kept);
        }
    }
    Derive();
}

void ProgramTables::TakeObjects(std::uint16_t /*pid*/, const wire::PsiSection& section) {
    ByteSpan body = section.body;
    std::vector<wire::EsDescriptor> streams;
    if (objectSl_) {
        if (const auto header = wire::SlHeader::Parse(body, *objectSl_))
            streams = StreamsOf(body.subspan(header->size));
    }
    // Some multiplexers leave the sync layer header out.
    if (streams.empty())
        streams = StreamsOf(body);
    for (wire::EsDescriptor& stream : streams)
        descriptors_[stream.esId] = std::move(stream);
    ++objectRounds_;
    if (map_)
        Derive();
}

void ProgramTables::Derive() {
    Program program;
    program.number = map_->program;
    program.clockPid = map_->pcrPid;
    bool complete = true;
    for (const wire::Pmt::Stream& stream : map_->streams)
        DeriveStream(stream, program, complete);
    if (program.video && program.audio)
        complete = true;
    // What was known stays known while a changed map waits for its objects.
    if (!complete && objectRounds_ < kEnoughObjectRounds)
        return;
    if (program_ != program) {
        program_ = std::move(program);
        changed_ = true;
    }
}

void ProgramTables::DeriveStream(const wire::Pmt::Stream& stream, Program& program, bool& complete) const {
    if (stream.type == wire::kStreamTypeH264 && !program.video) {
        program.video = {stream.pid, UnitLayout::kPlain, std::nullopt, {}};
        return;
    }
    if (const auto framing = FramingOf(stream.type); framing && !program.audio) {
        program.audio = {stream.pid, *framing, std::nullopt, {}};
        return;
    }
    if (stream.type != wire::kStreamTypeSlPes)
        return;
    const auto id = elementaryIds_.find(stream.pid);
    const auto es = id == elementaryIds_.end() ? descriptors_.end() : descriptors_.find(id->second);
    if (es == descriptors_.end()) {
        complete = false;
        return;
    }
    const wire::DecoderConfig& decoder = es->second.decoder;
    const auto& sl = es->second.sl;
    if (decoder.streamType == wire::kStreamVisual && decoder.objectType == wire::kObjectTypeH264 && !program.video)
        program.video = {stream.pid, UnitLayout::kSyncLayer, sl, {decoder.specificInfo}};
    else if (decoder.streamType == wire::kStreamAudio && !program.audio)
        program.audio = {stream.pid, UnitLayout::kSyncLayer, sl, AudioFormatOf(decoder.specificInfo)};
}

std::vector<TableSection> ProgramTables::Sections() const {
    std::vector<TableSection> list;
    for (const std::uint16_t pid : tableOrder_) {
        const auto found = sections_.find(pid);
        if (found == sections_.end())
            continue;
        for (const auto& [key, bytes] : found->second)
            list.push_back({pid, bytes});
    }
    return list;
}

} // namespace filters
