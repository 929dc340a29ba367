// The list dialog: rows over lines, with scrolling and selection, and the files of a folder as its own lines.
#include "platform/velshell/VelFileDialog.h"

#include "host/shell/core/DialogImpl.h"
#include "host/shell/core/FileDetails.h"
#include "host/shell/core/ShellCore.h"
#include "host/shell/gdi/ImagePainter.h"

#include <algorithm>
#include <optional>
#include <utility>

using shell::ShellCore;

struct CVelFileDialog::FileDialogImpl {
    struct ListedFile {
        ce::FolderEntry entry;
        std::optional<WString> length; // found out when it is first drawn: a card may be slow and hold hundreds
    };
    std::vector<ListedFile> files; // in the order of the lines

    static const WString& LengthOf(ListedFile& file, const WString& folder);

    static WString RowText(const CVelFileDialog& dialog, const GButton& row, const WString& line);
};

namespace {

constexpr UINT kFirstRow = 40;
constexpr int kMostRows = 10;
constexpr UINT kScrollUp = 71, kScrollDown = 72;
// The date and the length of a file stand at the right of its row, one above the other.
constexpr int kDetailMargin = 16;
constexpr int kDetailWidth = 180;

SIZE Measure(HDC dc, const WString& text) {
    SIZE size = {};
    GetTextExtentExPointW(dc, text.c_str(), static_cast<int>(text.size()), 0, nullptr, nullptr, &size);
    return size;
}

// The sign of a recording, in the margin before its name.
void DrawSign(HDC dc, const GButton& row) {
    constexpr UINT kSign = 2101;
    ShellCore& core = *ShellCore::Current();
    const shell::SkinImage* sign = core.skins.Bitmap(kSign);
    shell::Context* context = core.gdi.Find(dc);
    RECT place = row.GetRect();
    place.right = place.left + static_cast<const shell::Element&>(row).State().margin;
    if (sign && context) {
        shell::DrawCentred(*context, sign->At(context->target->Scale()), place);
    }
}

// The text, with its end cut off when it is wider.
WString FittedTo(HDC dc, WString text, LONG width) {
    if (Measure(dc, text).cx <= width) {
        return text;
    }
    while (!text.empty() && Measure(dc, text + u"\u2026").cx > width) {
        text.pop_back();
    }
    return text + u'\u2026';
}

} // namespace

const GRuntimeClass CVelFileDialog::classCVelFileDialog = {"CVelFileDialog", nullptr, &CVelDialog::classCVelDialog};

const GMessageMap CVelFileDialog::messageMap = [] {
    static const GMessageEntry rows[] = {
        GMap::OnMessage<&CVelFileDialog::OnRefresh>(WM_LIST_REFRESH),
        {WM_COMMAND, kFirstRow, kFirstRow + kMostRows - 1,
         [](GView* self, WPARAM id, LPARAM) -> LRESULT {
             static_cast<CVelFileDialog*>(self)->PickRow(static_cast<int>(id & 0xFFFF) - static_cast<int>(kFirstRow));
             return 0;
         }},
        {WM_COMMAND, kScrollUp, kScrollDown,
         [](GView* self, WPARAM id, LPARAM) -> LRESULT {
             auto* dialog = static_cast<CVelFileDialog*>(self);
             dialog->Scroll((id & 0xFFFF) == kScrollUp ? -dialog->GetVisibleRows() : dialog->GetVisibleRows());
             return 0;
         }},
        GMap::OnKeyUp<&CVelFileDialog::OnKeyUp>(),
    };
    return GMessageMap{&CVelDialog::messageMap, rows, 4};
}();

CVelFileDialog::CVelFileDialog(GView* parent, const WCHAR* folder, int fileType)
    : CVelDialog(parent), m_strFolder(folder ? folder : u""), m_nFileType(fileType), m_pFileDialog(new FileDialogImpl) {
}

CVelFileDialog::~CVelFileDialog() {
    delete m_pFileDialog;
}

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

void CVelFileDialog::OnOK() {
    const bool marked = m_pItems->marked >= 0 && m_pItems->marked < static_cast<int>(m_pLines->size());
    m_nSelection = marked ? m_pItems->marked : -1;
    EndDialog(kDialogOk);
}

// The widgets, and beside each file its date and its length.
void CVelFileDialog::OnDraw(HDC dc) {
    CVelDialog::OnDraw(dc);
    if (m_pItems != &m_FileItems) {
        return;
    }
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, RGB(0xB7, 0xC4, 0xD3));
    const HGDIOBJ before = SelectObject(dc, GetDefaultFont());
    for (int row = 0; row < GetVisibleRows(); ++row) {
        const auto index = static_cast<std::size_t>(m_FileItems.top) + static_cast<std::size_t>(row);
        const GButton* widget = Find(kFirstRow + static_cast<UINT>(row));
        if (!widget || index >= m_pFileDialog->files.size()) {
            continue;
        }
        FileDialogImpl::ListedFile& file = m_pFileDialog->files[index];
        const RECT& rect = widget->GetRect();
        DrawSign(dc, *widget);
        const LONG middle = (rect.top + rect.bottom) / 2;
        const WString& length = FileDialogImpl::LengthOf(file, m_strFolder);
        for (const auto& [text, above] : {std::pair{shell::DateText(file.entry.modified), 1}, std::pair{length, 0}}) {
            const SIZE size = Measure(dc, text);
            RECT area = rect;
            area.left = rect.right - kDetailMargin - size.cx;
            area.top = middle - above * size.cy;
            DrawTextW(dc, text.c_str(), -1, &area, 0);
        }
    }
    SelectObject(dc, before);
}

int CVelFileDialog::GetVisibleRows() {
    return kMostRows / 2;
}

void CVelFileDialog::SetItemCount(ItemList& items, int count) {
    items.count = std::max(count, 0);
    items.marked = items.marked < items.count ? items.marked : -1;
    items.top = std::clamp(items.top, 0, std::max(items.count - GetVisibleRows(), 0));
}

void CVelFileDialog::ReadFolder() {
    m_arrFileLines.clear();
    m_pFileDialog->files.clear();
    ShellCore* core = ShellCore::Current();
    // A player says itself which recordings it plays.
    GView* parent = m_pDialog->parent;
    auto* player = parent && parent->IsKindOf(&CVelPlayerView::classCVelPlayerView)
                       ? static_cast<CVelPlayerView*>(parent)
                       : nullptr;
    const auto isRecording = [&](const WString& name, int type) {
        return player ? player->AllowFileList((m_strFolder + name).c_str()) != 0
                      : type == kFileTypeDMB || type == kFileTypeTS;
    };
    const auto entries = core ? core->ce.files().List(m_strFolder.c_str()) : std::nullopt;
    if (entries) {
        for (const ce::FolderEntry& entry : *entries) {
            if (entry.isFolder) {
                continue;
            }
            const int type = core->document.CheckFileType(entry.name.c_str());
            if (m_nFileType == kListTypeRecordings ? isRecording(entry.name, type) : type == m_nFileType) {
                m_arrFileLines.push_back(entry.name);
                m_pFileDialog->files.push_back({entry, std::nullopt});
            }
        }
    }
    SetItemCount(m_FileItems, static_cast<int>(m_arrFileLines.size()));
}

const WString& CVelFileDialog::FileDialogImpl::LengthOf(ListedFile& file, const WString& folder) {
    if (!file.length) {
        const auto& source = ShellCore::Current()->playingTimeSource;
        file.length =
            shell::LengthText(file.entry.size, source ? source((folder + file.entry.name).c_str()) : std::nullopt);
    }
    return *file.length;
}

// A line of the current list; a file's name leaves room for what stands beside it.
WString CVelFileDialog::FileDialogImpl::RowText(const CVelFileDialog& dialog, const GButton& row, const WString& line) {
    const HDC canvas = dialog.GetCanvas();
    const HGDIOBJ before = SelectObject(canvas, row.GetFont() ? row.GetFont() : dialog.GetDefaultFont());
    const RECT& rect = row.GetRect();
    const int margin = static_cast<const shell::Element&>(row).State().margin;
    WString text = FittedTo(canvas, line, rect.right - rect.left - margin - kDetailWidth);
    SelectObject(canvas, before);
    return text;
}

void CVelFileDialog::UpdateRows() {
    const int visible = GetVisibleRows();
    for (int row = 0; row < kMostRows; ++row) {
        if (GButton* widget = Find(kFirstRow + static_cast<UINT>(row))) {
            const int index = m_pItems->top + row;
            const bool used = row < visible && index < m_pItems->count && index < static_cast<int>(m_pLines->size());
            WString text = used ? (*m_pLines)[static_cast<std::size_t>(index)] : WString();
            if (used && m_pItems == &m_FileItems) {
                text = FileDialogImpl::RowText(*this, *widget, text);
            }
            widget->SetText(text.c_str(), 0);
            widget->SetSelected(used && index == m_pItems->marked, 0);
        }
    }
    const int last = std::max(m_pItems->count - visible, 0);
    if (GButton* up = Find(kScrollUp)) {
        up->SetState(m_pItems->top > 0 ? kButtonNormal : kButtonDisabled, 0);
    }
    if (GButton* down = Find(kScrollDown)) {
        down->SetState(m_pItems->top < last ? kButtonNormal : kButtonDisabled, 0);
    }
}

// Reads the current list again: the folder for the file pair, the prepared lines for any other.
LRESULT CVelFileDialog::OnRefresh(WPARAM /*wParam*/, LPARAM /*lParam*/) {
    if (m_pItems == &m_FileItems) {
        ReadFolder();
    } else {
        SetItemCount(*m_pItems, static_cast<int>(m_pLines->size()));
    }
    UpdateRows();
    return 0;
}

// The first touch marks a row, the second takes it.
void CVelFileDialog::PickRow(int row) {
    const int index = m_pItems->top + row;
    if (row >= GetVisibleRows() || index >= m_pItems->count) {
        return;
    }
    if (m_pItems->marked == index) {
        OnOK();
        return;
    }
    m_pItems->marked = index;
    UpdateRows();
}

// Arrow keys move the mark, the channel keys move it by a page, Home and End to an end; the rest is every dialog's.
void CVelFileDialog::OnKeyUp(UINT key, UINT repeatCount, UINT flags) {
    constexpr UINT kPageUp = 33, kPageDown = 34, kEnd = 35, kHome = 36, kUp = 38, kDown = 40;
    switch (key) {
    case kUp:
        MoveMark(-1);
        break;
    case kDown:
        MoveMark(+1);
        break;
    case kPageUp:
        MoveMark(-GetVisibleRows());
        break;
    case kPageDown:
        MoveMark(GetVisibleRows());
        break;
    case kHome:
        MoveMark(-m_pItems->count);
        break;
    case kEnd:
        MoveMark(m_pItems->count);
        break;
    default:
        CVelDialog::OnKeyUp(key, repeatCount, flags);
        break;
    }
}

void CVelFileDialog::MoveMark(int rows) {
    if (m_pItems->count == 0) {
        return;
    }
    m_pItems->marked = std::clamp(m_pItems->marked + rows, 0, m_pItems->count - 1);
    m_pItems->top = std::clamp(m_pItems->top, m_pItems->marked - GetVisibleRows() + 1, m_pItems->marked);
    Scroll(0);
}

void CVelFileDialog::Scroll(int rows) {
    const int last = std::max(m_pItems->count - GetVisibleRows(), 0);
    m_pItems->top = std::clamp(m_pItems->top + rows, 0, last);
    UpdateRows();
}
