#include "host/app/dmbtv/commands/Channels.h"

#include "host/app/dmbtv/ViewLook.h"
#include "host/ce/Text.h"
#include "tuner/ChannelTable.h"

namespace dmbtv {

std::vector<KnownChannel> ChannelsOf(const CVelDMBView& view) {
    std::vector<KnownChannel> channels;
    KnownChannel known;
    while (DMBViewPeer::Channels(view).GetRecordAt(known.position, known.record)) {
        known.channel = ce::ToUtf8(FormatChannelName(static_cast<int>(known.record.frequency)));
        known.label = ce::ToUtf8(WidenChannelLabel(known.record));
        channels.push_back(known);
        ++known.position;
    }
    return channels;
}

const char* KindName(LONG kind) {
    return kind == kKindDMB ? "tv" : kind == kKindDAB ? "radio" : "other";
}

} // namespace dmbtv
