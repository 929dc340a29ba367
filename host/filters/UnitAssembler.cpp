#include "host/filters/UnitAssembler.h"

#include "host/wire/SlPacket.h"

#include <utility>

namespace filters {

namespace {

// Far above any picture that this receiver plays; a stream without ends may not eat the memory.
constexpr std::size_t kLargestUnit = 4u << 20;
constexpr std::size_t kPesPrefix = 6; // start code, stream id, length

} // namespace

void UnitAssembler::Push(const wire::TsPacket& packet, bool gap, const Sink& sink) {
    if (gap)
        Drop();
    if (packet.header.payloadUnitStart) {
        EndPes(sink);
        inPes_ = true;
        pesRandomAccess_ = packet.header.randomAccess;
        pesOlderClock_ = false;
    }
    if (!inPes_)
        return;
    pes_.insert(pes_.end(), packet.payload.begin(), packet.payload.end());
    if (pesSize_ == 0 && pes_.size() >= kPesPrefix) {
        const std::size_t length = static_cast<std::size_t>(pes_[4]) << 8 | pes_[5];
        pesSize_ = length == 0 ? 0 : kPesPrefix + length;
    }
    if (pes_.size() > kLargestUnit)
        Drop();
    else if (pesSize_ != 0 && pes_.size() >= pesSize_)
        EndPes(sink);
}

void UnitAssembler::Finish(const Sink& sink) {
    EndPes(sink);
    if (unit_ && config_ && config_->useAccessUnitStart && !config_->useAccessUnitEnd)
        EndUnit(sink);
}

void UnitAssembler::Drop() {
    if (inPes_ || unit_)
        ++lost_;
    inPes_ = false;
    pes_.clear();
    pesSize_ = 0;
    unit_.reset();
    lastSequence_.reset();
    lossBefore_ = true;
}

void UnitAssembler::MarkClockJump() {
    pesOlderClock_ = inPes_;
    if (unit_)
        unit_->olderClock = true;
}

void UnitAssembler::LoseUnit() {
    ++lost_;
    unit_.reset();
    lossBefore_ = true;
}

// The PES packet under way is over: whole, or cut short by the start of the next.
void UnitAssembler::EndPes(const Sink& sink) {
    if (!std::exchange(inPes_, false)) {
        pes_.clear();
        pesSize_ = 0;
        return;
    }
    const Bytes pes = std::exchange(pes_, {});
    const std::size_t wanted = std::exchange(pesSize_, 0);
    const auto header = wire::PesHeader::Parse(pes);
    if (!header || header->scrambling != 0 || wanted > pes.size() || (wanted != 0 && wanted < header->size)) {
        LoseUnit();
        return;
    }
    const ByteSpan whole = wanted == 0 ? ByteSpan(pes) : ByteSpan(pes).first(wanted);
    TakePes(*header, whole.subspan(header->size), sink);
}

void UnitAssembler::TakePes(const wire::PesHeader& header, ByteSpan payload, const Sink& sink) {
    if (config_ && config_->predefined == 0) {
        TakeSlPacket(header, payload, sink);
        return;
    }
    if (payload.empty())
        return;
    unit_.emplace();
    unit_->bytes.assign(payload.begin(), payload.end());
    unit_->pts = header.pts;
    unit_->olderClock = pesOlderClock_;
    unit_->randomAccess = pesRandomAccess_;
    EndUnit(sink);
}

void UnitAssembler::TakeSlPacket(const wire::PesHeader& pes, ByteSpan payload, const Sink& sink) {
    const auto header = wire::SlHeader::Parse(payload, *config_);
    if (!header) {
        LoseUnit();
        return;
    }
    if (header->idle || header->paddingOnly)
        return;
    if (config_->packetSequenceLength > 0) {
        const std::uint32_t mask = (1u << config_->packetSequenceLength) - 1;
        if (lastSequence_ == header->packetSequence)
            return; // sent twice
        if (lastSequence_ && ((*lastSequence_ + 1) & mask) != header->packetSequence)
            LoseUnit();
        lastSequence_ = header->packetSequence;
    }
    if (header->accessUnitStart) {
        if (unit_ && config_->useAccessUnitEnd)
            LoseUnit(); // its end never came
        else if (unit_)
            EndUnit(sink);
        unit_.emplace();
        unitSize_ = header->accessUnitLength;
        unit_->stamp = header->compositionTime ? header->compositionTime : header->decodingTime;
        unit_->pts = pes.pts;
        unit_->olderClock = pesOlderClock_;
        unit_->randomAccess = header->randomAccess || pesRandomAccess_;
    }
    if (!unit_)
        return; // the middle of a unit whose beginning is missing
    const ByteSpan data = payload.subspan(header->size);
    if (unit_->bytes.size() + data.size() > kLargestUnit) {
        LoseUnit();
        return;
    }
    unit_->bytes.insert(unit_->bytes.end(), data.begin(), data.end());
    // Without flags every packet is a whole unit; with a start flag alone a unit lasts to the next start.
    const bool ends = config_->useAccessUnitEnd ? header->accessUnitEnd : !config_->useAccessUnitStart;
    if (ends || (unitSize_ != 0 && unit_->bytes.size() >= unitSize_))
        EndUnit(sink);
}

void UnitAssembler::EndUnit(const Sink& sink) {
    CodedUnit unit = std::move(*unit_);
    unit_.reset();
    if (unit.bytes.empty())
        return;
    unit.lossBefore = std::exchange(lossBefore_, false);
    sink(std::move(unit));
}

} // namespace filters
