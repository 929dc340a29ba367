// The channel list of the open view, as commands show and search it.
#pragma once

#include <string>
#include <vector>

#include "tuner/ChannelRecord.h"

class CVelDMBView;

namespace dmbtv {

struct KnownChannel {
    int position = 0;    // in the list; what the view is asked for
    std::string channel; // "[CH12]"
    std::string label;   // UTF-8
    ChannelRecord record{};
};

[[nodiscard]] std::vector<KnownChannel> ChannelsOf(const CVelDMBView& view);
// "tv", "radio", or "other" for what the viewer does not list.
[[nodiscard]] const char* KindName(LONG kind);

} // namespace dmbtv
