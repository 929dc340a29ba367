// The channel list: television, radio, and the recordings on the card.
#pragma once

#include "platform/velshell/VelFileDialog.h"

// Tabs, which are the session types of what they list.
enum ChannelListTab : int { kTabDMB = 0, kTabDAB = 1, kTabFiles = 2 };

class CDMBChListDlg final : public CVelFileDialog {
public:
    CDMBChListDlg(GView* parent, const WCHAR* folder, int startTab);

    const GMessageMap* GetMessageMap() const override;
    const WCHAR* GetResourceName() const override;
    int OnInitDialog() override;
    void OnDraw(HDC dc) override;
    int GetVisibleRows() override;

    // Appends a line to a channel tab; before DoModal.
    void AddLine(ChannelListTab tab, const WString& line);
    [[nodiscard]] const WString& GetLine(ChannelListTab tab, int line) const;
    // The tab on return.
    [[nodiscard]] int GetTab() const { return m_nTab; }

    static const GMessageMap messageMap;

private:
    void OnClickTab(UINT id);
    void ApplyTab(bool refresh);
    void ShowRowFaces();
    LRESULT OnListRefresh(WPARAM wParam, LPARAM lParam);

    friend struct DMBChListRows; // the rows of the message map
    friend class DMBViewPeer;

    static constexpr int kChannelTabs = 2;

    int m_nTab;
    GButton* m_pTabs[3] = {};
    std::vector<WString> m_arrLines[kChannelTabs];
    ItemList m_Items[kChannelTabs];
};
