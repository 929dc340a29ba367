// The list dialog: rows over whatever lines are current, a folder's files to begin with.
#include "host/shell/core/ShellCore.h"
#include "platform/velshell/VelFileDialog.h"

#include <algorithm>

using shell::ShellCore;

namespace {

constexpr UINT kFirstRow = 40; // elements 40 to 49
constexpr int kRowLimit = 10;
constexpr int kFileRows = 5;
constexpr UINT kPageUp = 51;
constexpr UINT kPageDown = 52;

constexpr UINT kKeyPageUp = 33, kKeyPageDown = 34, kKeyUp = 38, kKeyDown = 40;

} // namespace

const GRuntimeClass CVelFileDialog::classCVelFileDialog = {"CVelFileDialog", nullptr, &CVelDialog::classCVelDialog};

const GMessageMap CVelFileDialog::messageMap = [] {
    static const GMessageEntry rows[] = {
        GMap::OnCommandRange<&CVelFileDialog::OnClickRow>(kFirstRow, kFirstRow + kRowLimit - 1),
        GMap::OnCommandRange<&CVelFileDialog::OnClickPage>(kPageUp, kPageDown),
        GMap::OnKeyUp<&CVelFileDialog::OnKeyUp>(),
        GMap::OnMessage<&CVelFileDialog::OnRefresh>(WM_LIST_REFRESH),
    };
    return GMessageMap{&CVelDialog::messageMap, rows, 4};
}();

CVelFileDialog::CVelFileDialog(GView* parent, const WCHAR* folder, int fileType)
    : CVelDialog(parent), m_strFolder(folder), m_nFileType(fileType) {}

CVelFileDialog::~CVelFileDialog() = default;

const GRuntimeClass* CVelFileDialog::GetRuntimeClass() const {
    return &classCVelFileDialog;
}

const GMessageMap* CVelFileDialog::GetMessageMap() const {
    return &messageMap;
}

int CVelFileDialog::OnInitDialog() {
    if (!CVelDialog::OnInitDialog()) {
        return 0;
    }
    ReadFolder();
    UpdateRows();
    return 1;
}

void CVelFileDialog::OnDraw(HDC dc) {
    CVelDialog::OnDraw(dc);
}

int CVelFileDialog::GetVisibleRows() {
    return kFileRows;
}

void CVelFileDialog::SetItemCount(ItemList& items, int count) {
    items.count = count;
    items.marked = std::min(items.marked, count - 1);
    items.top = std::clamp(items.top, 0, std::max(0, count - GetVisibleRows()));
}

void CVelFileDialog::ReadFolder() {
    m_arrFileLines.clear();
    ShellCore* core = ShellCore::Current();
    const auto entries = core ? core->ce.files().List(m_strFolder.c_str()) : std::nullopt;
    if (entries) {
        for (const ce::FolderEntry& entry : *entries) {
            const int type = core->document.CheckFileType(entry.name.c_str());
            const bool listed = m_nFileType == kListTypeRecordings ? type == kFileTypeDMB || type == kFileTypeTS
                                                                   : type == m_nFileType;
            if (!entry.isFolder && listed) {
                m_arrFileLines.push_back(entry.name);
            }
        }
    }
    SetItemCount(m_FileItems, static_cast<int>(m_arrFileLines.size()));
}

void CVelFileDialog::UpdateRows() {
    const int rows = GetVisibleRows();
    for (int row = 0; row < kRowLimit; ++row) {
        GButton* button = Find(kFirstRow + static_cast<UINT>(row));
        if (!button) {
            continue;
        }
        const int line = m_pItems->top + row;
        const bool filled = row < rows && line < m_pItems->count && line < static_cast<int>(m_pLines->size());
        button->SetText(filled ? (*m_pLines)[static_cast<std::size_t>(line)].c_str() : nullptr, 0);
        button->SetSelected(filled && line == m_pItems->marked, 0);
    }
    RefreshWindow();
}

void CVelFileDialog::Scroll(int lines) {
    m_pItems->top = std::clamp(m_pItems->top + lines, 0, std::max(0, m_pItems->count - GetVisibleRows()));
    UpdateRows();
}

void CVelFileDialog::MoveMark(int lines) {
    if (m_pItems->count == 0) {
        return;
    }
    m_pItems->marked = std::clamp(m_pItems->marked + lines, 0, m_pItems->count - 1);
    m_pItems->top = std::clamp(m_pItems->top, m_pItems->marked - GetVisibleRows() + 1, m_pItems->marked);
    Scroll(0);
}

void CVelFileDialog::OnClickRow(UINT id) {
    const int line = m_pItems->top + static_cast<int>(id - kFirstRow);
    if (line < m_pItems->count) {
        m_pItems->marked = line;
        OnOK();
    }
}

void CVelFileDialog::OnClickPage(UINT id) {
    Scroll(id == kPageUp ? -GetVisibleRows() : GetVisibleRows());
}

void CVelFileDialog::OnKeyUp(UINT key, UINT repeatCount, UINT flags) {
    switch (key) {
    case kKeyUp:
        MoveMark(-1);
        break;
    case kKeyDown:
        MoveMark(+1);
        break;
    case kKeyPageUp:
        MoveMark(-GetVisibleRows());
        break;
    case kKeyPageDown:
        MoveMark(GetVisibleRows());
        break;
    default:
        CVelDialog::OnKeyUp(key, repeatCount, flags);
        break;
    }
}

void CVelFileDialog::OnOK() {
    m_nSelection = m_pItems->marked;
    CVelDialog::OnOK();
}

LRESULT CVelFileDialog::OnRefresh(WPARAM /*wParam*/, LPARAM /*lParam*/) {
    ReadFolder();
    UpdateRows();
    return 0;
}
