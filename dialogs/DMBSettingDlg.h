// The settings dialog: recording length, aspect ratio, and the door to the debug dialog.
#pragma once

#include "platform/velshell/VelDialog.h"

class CVelDMBView;

class CDMBSettingDlg final : public CVelDialog {
public:
    explicit CDMBSettingDlg(CVelDMBView* view);

    const GMessageMap* GetMessageMap() const override;
    const WCHAR* GetResourceName() const override;
    int OnInitDialog() override;
    void OnOK() override;

    static const GMessageMap messageMap;

private:
    void OnClickDebug();
    void OnClickLength(UINT id);
    void OnClickRatio(UINT id);
    void ShowRecordTime(int redraw);

    friend struct DMBSettingRows; // the rows of the message map
    friend class DMBViewPeer;

    GButton* m_pRecordTimeText = nullptr; // shows the chosen length
    UINT m_uRecordTime = 0;               // working copies of the view's settings
    UINT m_uRatioOnOff = 0;
    CVelDMBView* m_pView;   // opened the dialog; not owned
    bool m_bLoaded = false; // the working copies were read from the view; without them OK stores nothing
};
