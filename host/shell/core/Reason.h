// Why a view shows no picture or gives no sound.
#pragma once

#include "platform/types.h"

namespace shell {

// Also the numbers of its texts in the table VelReason; an icon for each, in this order, is in the skin.
enum class Reason : WORD {
    None = 0,
    Source,  // there is nothing to receive from
    Sync,    // the receiver sends no broadcast
    Service, // the broadcast has no such service
    Scrambled,
    Decoder, // coded in a way that is not known
    WeakSignal,
    File,      // a recording that cannot be opened or holds nothing
    NoPicture, // a service of sound only, where a picture is looked for
};
inline constexpr int kReasonCount = 8; // without None

struct ReasonShown {
    Reason reason = Reason::None;
    bool radio = false; // it is a radio's; lies beside the station's picture when that shows
    friend constexpr bool operator==(const ReasonShown&, const ReasonShown&) = default;
};

} // namespace shell
