#include "host/filters/SectionAssembler.h"

#include "host/wire/PsiSection.h"

namespace filters {

namespace {
constexpr std::uint8_t kStuffing = 0xFF; // in place of a table id: nothing more in this packet
}

void SectionAssembler::Push(const wire::TsPacket& packet, bool gap, const Sink& sink) {
    if (gap)
        started_ = false;
    ByteSpan payload = packet.payload;
    if (packet.header.payloadUnitStart) {
        if (payload.empty() || payload[0] >= payload.size()) {
            started_ = false;
            return;
        }
        // The pointer field: what lies before its target ends the section under way.
        const std::size_t pointer = payload[0];
        if (started_) {
            section_.insert(section_.end(), payload.begin() + 1, payload.begin() + 1 + static_cast<int>(pointer));
            TakeWhole(sink);
        }
        section_.clear();
        started_ = true;
        payload = payload.subspan(1 + pointer);
    }
    if (!started_)
        return;
    section_.insert(section_.end(), payload.begin(), payload.end());
    TakeWhole(sink);
}

void SectionAssembler::TakeWhole(const Sink& sink) {
    std::size_t at = 0;
    while (started_) {
        const ByteSpan rest = ByteSpan(section_).subspan(at);
        if (rest.empty() || rest[0] == kStuffing) {
            started_ = false;
            break;
        }
        const auto size = wire::PsiSection::SizeOf(rest);
        if (!size || *size > rest.size())
            break;
        sink(rest.first(*size));
        at += *size;
    }
    section_.erase(section_.begin(), section_.begin() + static_cast<std::ptrdiff_t>(at));
    if (!started_)
        section_.clear();
}

} // namespace filters
