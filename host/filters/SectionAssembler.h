// Sections out of the transport packets of one PID, ISO/IEC 13818-1 2.4.4.
#pragma once

#include "host/filters/PacketSync.h"
#include "host/wire/TsPacket.h"

#include <functional>

namespace filters {

class SectionAssembler {
public:
    // Takes the bytes of one whole section of the length that it says; its check sum is not looked at.
    using Sink = std::function<void(ByteSpan)>;

    // `gap`: packets are missing before this one.
    void Push(const wire::TsPacket& packet, bool gap, const Sink& sink);

private:
    void TakeWhole(const Sink& sink);

    Bytes section_;
    bool started_ = false;
};

} // namespace filters
