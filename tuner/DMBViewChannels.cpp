// The view's channel list: rebuilding it from a scan, and the display name of a frequency.
#include "platform/velshell/VelDocument.h"
#include "view/DMBView.h"

void CVelDMBView::UpdateChList(int save) {
    m_ChannelList.RemoveAllRecords();
    m_nChannelCount = 0;
    for (const ChannelRecord& record : RecordsOfScan(scanResults, foundBlockCount)) {
        m_ChannelList.AppendRecord(record);
        ++m_nChannelCount;
    }
    if (save != 0)
        m_ChannelList.SaveChannelList((WString(GetDocument()->GetProfileDirectory()) + kChannelListFileName).c_str());
}

WString CVelDMBView::GetChannelName(int frequency) const {
    return FormatChannelName(frequency);
}
