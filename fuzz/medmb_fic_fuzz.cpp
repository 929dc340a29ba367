// Fast information groups behind right check sums: the decoder must stay in bounds and answer every question.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <set>

#include "host/medmb/BlockScan.h"
#include "host/wire/Crc.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    medmb::FicDecoder fic;
    const wire::ByteSpan bytes(data, size);
    for (std::size_t at = 0; at < size; at += wire::kFibDataBytes) {
        const wire::ByteSpan part = bytes.subspan(at, std::min(wire::kFibDataBytes, size - at));
        wire::ByteVector fib(part.begin(), part.end());
        fib.resize(wire::kFibDataBytes, 0xFF);
        wire::Append16(fib, wire::Crc16(fib));
        fic.PushFic(fib);
    }
    if (fic.FibErrors() != 0)
        std::abort();
    medmb::BlockReport report;
    report.ensemble = fic.Model();
    std::set<std::pair<bool, std::uint32_t>> ids;
    for (const medmb::Service& service : report.ensemble.services) {
        if (!ids.insert({service.longId, service.id}).second)
            std::abort();
        (void)service.Scrambled();
        (void)service.SlideshowType();
    }
    (void)fic.Complete({1, 2});
    _tag_DMB_CHANNEL_INFO info;
    medmb::FillChannelInfo(report, info);
    return 0;
}
