// The screen: skin elements, information text, title, progress bar and the paint handler.
#include <algorithm>
#include <cstring>

#include "platform/gdi.h"
#include "platform/velshell/VelDocument.h"
#include "view/DMBView.h"
#include "view/DMBViewIds.h"

namespace {

// The progress bar's place on the client area, in pixels.
constexpr int kProgressLeft = 215;
constexpr int kProgressTop = 218;
constexpr int kProgressWidth = 365;
constexpr int kProgressHeight = 8;

} // namespace

void CVelDMBView::Theme() {
    CVelPlayerView::Theme();
    m_pToolButtons[0] = Find(kElementScan);
    m_pToolButtons[1] = Find(kElementList);
    m_pToolButtons[2] = Find(kElementSetting);
    m_pToolButtons[3] = Find(kElementRecord);
    m_pChannelButtons[0] = Find(kElementChannelDown);
    m_pChannelButtons[1] = Find(kElementChannelUp);
    m_pScanBox = Find(kElementScanBox);
    m_pScanText = Find(kElementScanText);
    std::memset(m_ScanFrequency, 1, sizeof m_ScanFrequency); // every row is scanned again after a theme change
    if (const GButton* label = Find(kElementDLS)) {
        const SectionLock lock(m_csDLS);
        m_rcDLS = label->GetRect();
    }
    if (const GButton* slide = Find(kElementSlide)) {
        const SectionLock lock(m_csSLS);
        m_rcSlide = slide->GetRect();
    }
}

void CVelDMBView::ShowControls(int show, int redraw) {
    CVelPlayerView::ShowControls(show, 0);
    if (show != 0) {
        if (GetDocument()->IsMinimized())
            ShowToolButtons(0, 0);
        else
            ShowButton(kElementToggleSmall, 0, 0);
    }
    if (redraw != 0) {
        for (int bar = 0; bar < 2; ++bar) {
            if (const GButton* element = GetBarElement(bar))
                InvalidateRect(m_hWnd, &element->GetRect(), FALSE);
        }
    }
}

void CVelDMBView::ShowToolButtons(int show, int redraw) {
    ShowButton(kElementToolGroup, show, redraw);
    for (GButton* button : m_pToolButtons) {
        if (button != nullptr)
            button->Show(show, redraw);
    }
}

void CVelDMBView::ShowAudioBG(int show, int redraw) {
    GButton* background = Find(kElementAudioBG);
    if (background != nullptr && (background->IsVisible() != 0) != (show != 0))
        background->Show(show, redraw);
}

void CVelDMBView::ShowInfo(const WCHAR* text, int redraw) {
    GButton* info = Find(kElementInfo);
    if (info == nullptr)
        return;
    if (text == nullptr) {
        info->Show(0, redraw);
        return;
    }
    info->SetText(text, redraw);
    if (!info->IsVisible())
        info->Show(1, redraw);
}

LRESULT CVelDMBView::OnShowChLabel(WPARAM index, LPARAM useIndex) {
    WString title;
    if (m_nCurChannel >= 0 && m_nFileIndex < 0) {
        ChannelRecord record;
        const int position = useIndex != 0 ? static_cast<int>(index) : static_cast<int>(m_nCurChannel);
        if (m_ChannelList.GetRecordAt(position, record)) {
            title =
                FormatW(WTEXT("%s %s"), GetChannelName(static_cast<int>(record.frequency)), WidenChannelLabel(record));
        }
    }
    if (!GetDocument()->IsMinimized())
        ShowControls(1, 1);
    SetTitle(title.c_str());
    return 0;
}

void CVelDMBView::DrawProgressBar(int position, int total) {
    if (total <= 0)
        return;
    const HDC client = GetDC(m_hWnd);
    const HBITMAP strip = LoadBitmapW(nullptr, MAKEINTRESOURCEW(kBitmapProgress));
    const HDC canvas = GetCanvas();
    const HGDIOBJ previous = SelectObject(canvas, strip);
    const int width = std::min(position, total) * kProgressWidth / total;
    StretchBlt(client, kProgressLeft, kProgressTop, width, kProgressHeight, canvas, 0, 0, 1, kProgressHeight, SRCCOPY);
    SelectObject(canvas, previous);
    DeleteObject(strip);
    ReleaseDC(m_hWnd, client);
}

void CVelDMBView::OnDraw(HDC dc) {
    CVelPlayerView::OnDraw(dc);
    if (GetCurrentType() != kSessionDAB || (GetPlayMode() != kPlayModePlaying && m_bNoSignal == 0))
        return;
    RECT clip{};
    const int region = GetClipBox(dc, &clip);
    if (region == RGN_ERROR || region == NULLREGION)
        return;
    if (const TrySectionLock lock(m_csDLS); lock)
        DrawLabels(dc, clip);
    if (const TrySectionLock lock(m_csSLS); lock) {
        RECT common{};
        if (m_bSlideReady != 0 && IntersectRect(&common, &clip, &m_rcSlide))
            PaintImage(m_pSlideDib);
    }
}
