// Radio texts: from the graph's event to the screen.
#include <algorithm>

#include "dataservice/LabelLayout.h"
#include "dataservice/LabelText.h"
#include "dataservice/PadInfo.h"
#include "graph/DMBFilterControl.h"
#include "platform/gdi.h"
#include "view/DMBView.h"
#include "view/DMBViewIds.h"

namespace {

constexpr COLORREF kLabelColour = 0x00FFFFFF;

WString LabelOf(const PadInfo& record) {
    // The length comes from the broadcast; the field bounds it.
    const LONG length = std::clamp<LONG>(record.dlsLength, 0, static_cast<LONG>(sizeof record.dlsText));
    if (record.dlsCharset == PadInfo::kCharsetUcs2)
        return DecodeUcs2Label({record.dlsText, static_cast<std::size_t>(length)});
    return GMessage::atou(reinterpret_cast<const char*>(record.dlsText), length, 0);
}

} // namespace

void CVelDMBView::OnLabelEvent() {
    if (GetPlayMode() != kPlayModePlaying || m_bOnAir == 0 || m_pFilterControl == nullptr)
        return;
    PadInfo* record = nullptr;
    if (FAILED(m_pFilterControl->GetPadInfo(&record)) || record == nullptr)
        return;
    const WString text = LabelOf(*record);
    const SectionLock lock(m_csDLS);
    if (AppendLabel(m_arrDLS, text))
        InvalidateRect(m_hWnd, &m_rcDLS, FALSE);
}

// Called by the paint handler with m_csDLS held.
void CVelDMBView::DrawLabels(HDC dc, const RECT& clip) {
    RECT common{};
    if (m_arrDLS.empty() || !IntersectRect(&common, &clip, &m_rcDLS))
        return;
    const GButton* area = Find(kElementDLS);
    HFONT font = area != nullptr ? area->GetFont() : nullptr;
    if (font == nullptr)
        font = GetDefaultFont();
    const int previousMode = SetBkMode(dc, TRANSPARENT);
    const COLORREF previousColour = SetTextColor(dc, kLabelColour);
    const HGDIOBJ previousFont = SelectObject(dc, font);

    std::vector<SIZE> extents;
    for (const WString& entry : m_arrDLS) {
        const WString shown = kLabelPrefix + entry;
        SIZE extent{};
        GetTextExtentExPointW(dc, shown.c_str(), static_cast<int>(shown.size()), 0, nullptr, nullptr, &extent);
        extents.push_back(extent);
    }
    const std::size_t first = FirstLabelToDraw(extents, m_rcDLS.right - m_rcDLS.left, m_rcDLS.bottom - m_rcDLS.top);
    const WString text = JoinLabels(m_arrDLS, first);
    RECT rect = m_rcDLS;
    DrawTextW(dc, text.c_str(), static_cast<int>(text.size()), &rect, DT_WORDBREAK);

    SelectObject(dc, previousFont);
    SetTextColor(dc, previousColour);
    SetBkMode(dc, previousMode);
}
