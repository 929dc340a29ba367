// What a script may see of the view beyond its screen.
#pragma once

#include "view/DMBView.h"

class DMBViewPeer {
public:
    // The session type of the selection: 0 television, 1 radio, 2 a recording, -1 none.
    [[nodiscard]] static int CurrentType(const CVelDMBView& view) {
        if (view.m_nFileIndex >= 0)
            return kSessionFile;
        ChannelRecord record;
        const bool found = view.m_nCurChannel >= 0 && view.m_ChannelList.GetRecordAt(view.m_nCurChannel, record);
        return found ? record.kind : kSessionNone;
    }
};
