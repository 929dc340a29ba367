// The debug dialog: which rows of the channel table a scan visits, and the signal-quality display.
#pragma once

#include "platform/velshell/VelDialog.h"
#include "tuner/ChannelTable.h"

class CVelDMBView;

class CDMBDebugDlg final : public CVelDialog {
public:
    explicit CDMBDebugDlg(CVelDMBView* view);

    const GMessageMap* GetMessageMap() const override;
    const WCHAR* GetResourceName() const override;
    int OnInitDialog() override;
    void OnOK() override;

    static const GMessageMap messageMap;

private:
    void OnClickRow(UINT id);
    void OnClickSNR(UINT id);

    friend struct DMBDebugRows; // the rows of the message map
    friend class DMBViewPeer;

    CVelDMBView* m_pView; // not owned
    UINT m_uSNRDebug = 0; // working copies of the view's settings
    BYTE m_ScanFrequency[kChannelTableRows] = {};
};
