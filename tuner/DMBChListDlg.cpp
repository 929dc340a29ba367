#include "tuner/DMBChListDlg.h"

#include <iterator>

#include "platform/gdi.h"

namespace {

constexpr UINT kTabButtons = 60; // 60 television, 61 radio, 62 files
constexpr UINT kRows = 40;       // 40 to 49
constexpr int kRowCount = 10;
constexpr int kWideRows = 5; // the first five have a face for each kind of tab
constexpr UINT kListFrame = 1;
constexpr UINT kFolderBar = 30;

// Left margin of a row's text, in pixels.
constexpr int kChannelMargin = 16;
constexpr int kFileMargin = 86;

// Pictures of a row's set.
constexpr int kFileFace = 0;
constexpr int kChannelFace = 1;

} // namespace

CDMBChListDlg::CDMBChListDlg(GView* parent, const WCHAR* folder, int startTab)
    : CVelFileDialog(parent, folder, kListTypeRecordings), m_nTab(startTab) {}

struct DMBChListRows {
    static constexpr GMessageEntry kRows[] = {
        GMap::OnCommandRange<&CDMBChListDlg::OnClickTab>(kTabButtons, kTabButtons + 2),
        GMap::OnMessage<&CDMBChListDlg::OnListRefresh>(WM_LIST_REFRESH),
    };
};

const GMessageMap CDMBChListDlg::messageMap = {&CVelFileDialog::messageMap, DMBChListRows::kRows,
                                               static_cast<UINT>(std::size(DMBChListRows::kRows))};

const GMessageMap* CDMBChListDlg::GetMessageMap() const {
    return &messageMap;
}

const WCHAR* CDMBChListDlg::GetResourceName() const {
    return WTEXT("VelDMBChList");
}

void CDMBChListDlg::AddLine(ChannelListTab tab, const WString& line) {
    m_arrLines[tab].push_back(line);
}

const WString& CDMBChListDlg::GetLine(ChannelListTab tab, int line) const {
    return m_arrLines[tab].at(static_cast<std::size_t>(line));
}

int CDMBChListDlg::OnInitDialog() {
    if (!CVelFileDialog::OnInitDialog())
        return 0;
    for (UINT tab = 0; tab < std::size(m_pTabs); ++tab)
        m_pTabs[tab] = Find(kTabButtons + tab);
    for (int tab = 0; tab < kChannelTabs; ++tab)
        SetItemCount(m_Items[tab], static_cast<int>(m_arrLines[tab].size()));
    ApplyTab(false);
    return 1;
}

int CDMBChListDlg::GetVisibleRows() {
    return m_nTab == kTabFiles ? CVelFileDialog::GetVisibleRows() : kRowCount;
}

void CDMBChListDlg::OnDraw(HDC dc) {
    if (m_nTab == kTabFiles)
        CVelFileDialog::OnDraw(dc);
    else
        CVelDialog::OnDraw(dc);
}

void CDMBChListDlg::OnClickTab(UINT id) {
    const int tab = static_cast<int>(id - kTabButtons);
    if (tab == m_nTab)
        return;
    m_nTab = tab;
    ApplyTab(true);
}

void CDMBChListDlg::ApplyTab(bool refresh) {
    for (int tab = 0; tab < static_cast<int>(std::size(m_pTabs)); ++tab) {
        if (m_pTabs[tab] == nullptr)
            continue;
        const bool current = tab == m_nTab;
        m_pTabs[tab]->SetSelected(current ? 1 : 0, 0);
        m_pTabs[tab]->SetState(current ? kButtonPressed : kButtonNormal, 1);
    }
    const bool files = m_nTab == kTabFiles;
    m_pLines = files ? &m_arrFileLines : &m_arrLines[m_nTab];
    m_pItems = files ? &m_FileItems : &m_Items[m_nTab];
    ShowRowFaces();

    RECT dirty{};
    if (GButton* frame = Find(kListFrame)) {
        frame->SetState(m_nTab, 0);
        UnionRect(&dirty, &dirty, &frame->GetRect());
    }
    if (GButton* bar = Find(kFolderBar)) {
        bar->SetState(files ? kButtonPressed : kButtonNormal, 0);
        UnionRect(&dirty, &dirty, &bar->GetRect());
    }
    InvalidateRect(m_hWnd, &dirty, FALSE);
    if (refresh)
        PostMessageW(m_hWnd, WM_LIST_REFRESH, 0, 0);
    else
        UpdateRows();
}

void CDMBChListDlg::ShowRowFaces() {
    const bool files = m_nTab == kTabFiles;
    for (int row = 0; row < kRowCount; ++row) {
        GButton* button = Find(kRows + static_cast<UINT>(row));
        if (button == nullptr)
            continue;
        if (row >= kWideRows) {
            button->Show(files ? 0 : 1, 0);
            continue;
        }
        const GImageSet* faces = button->GetImageSet();
        const GImage* face = faces != nullptr ? faces->GetImage(files ? kFileFace : kChannelFace) : nullptr;
        if (face != nullptr) {
            button->SetBackground(face, 0);
            RECT rect = button->GetRect();
            rect.right = rect.left + face->GetWidth();
            button->SetRect(rect, 0);
        }
        button->SetMargin(files ? kFileMargin : kChannelMargin, 0);
    }
}

LRESULT CDMBChListDlg::OnListRefresh(WPARAM, LPARAM) {
    if (m_nTab == kTabFiles)
        ReadFolder();
    else
        SetItemCount(m_Items[m_nTab], static_cast<int>(m_arrLines[m_nTab].size()));
    UpdateRows();
    return 0;
}
