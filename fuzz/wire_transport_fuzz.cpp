// Transport packets, sections, MPEG-4 descriptors, PES and SL headers from any bytes.
#include <algorithm>
#include <cstdint>
#include <span>

#include "host/wire/Mpeg4Objects.h"
#include "host/wire/Pes.h"
#include "host/wire/PsiSection.h"
#include "host/wire/SlPacket.h"
#include "host/wire/TsPacket.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> bytes(data, size);
    if (size >= wire::kTsPacketSize)
        (void)wire::TsPacket::Parse(bytes.first(wire::kTsPacketSize));
    if (const auto section = wire::PsiSection::Parse(bytes)) {
        (void)wire::Pat::Parse(*section);
        (void)wire::Pmt::Parse(*section);
    }
    (void)wire::PesHeader::Parse(bytes);
    (void)wire::IodDescriptor::Parse(bytes);
    (void)wire::ObjectDescriptorUpdate::Parse(bytes);
    (void)wire::EsDescriptor::Parse(bytes);
    (void)wire::DecoderConfig::Parse(bytes);
    if (const auto config = wire::SlConfig::Parse(bytes))
        (void)wire::SlHeader::Parse(bytes.subspan(std::min<std::size_t>(size, 16)), *config);
    return 0;
}
