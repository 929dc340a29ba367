// What the program may see of the view beyond its screen.
#pragma once

#include <algorithm>

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
    [[nodiscard]] static bool IsScanning(const CVelDMBView& view) { return view.m_bScanning != 0; }
    // Does the view itself say that there is no signal?
    [[nodiscard]] static bool HasNoSignal(const CVelDMBView& view) { return view.m_bNoSignal != 0; }
    // Has a scan ever left a channel list, be it an empty one?
    [[nodiscard]] static bool HasListFile(const CVelDMBView& view) { return view.m_nChannelCount >= 0; }
    [[nodiscard]] static int ChannelCount(const CVelDMBView& view) { return std::max<int>(view.m_nChannelCount, 0); }
    [[nodiscard]] static int CurrentChannel(const CVelDMBView& view) { return view.m_nCurChannel; }
    [[nodiscard]] static const ChannelList& Channels(const CVelDMBView& view) { return view.m_ChannelList; }
    // The record-time setting, for one recording: nothing is stored.
    [[nodiscard]] static LONG& RecordTime(CVelDMBView& view) { return view.m_uRecordTime; }
    // The position in the channel list of the service that stands at `place` (from 0) among those of a kind, or -1.
    [[nodiscard]] static int PositionOf(const CVelDMBView& view, int kind, int place) {
        ChannelRecord record;
        for (int position = 0; view.m_ChannelList.GetRecordAt(position, record); ++position) {
            if (record.kind == kind && place-- == 0)
                return position;
        }
        return -1;
    }
};
