#include "dataservice/LabelLayout.h"

std::size_t FirstLabelToDraw(std::span<const SIZE> extents, int areaWidth, int areaHeight) {
    if (areaWidth <= 0 || areaHeight <= 0)
        return 0;
    LONGLONG lines = 0;
    std::size_t first = extents.size();
    while (first > 0) {
        const SIZE& extent = extents[first - 1];
        if (extent.cy <= 0)
            break;
        lines += (static_cast<LONGLONG>(extent.cx) + areaWidth - 1) / areaWidth;
        if (lines > areaHeight / extent.cy)
            break;
        --first;
    }
    return first == extents.size() ? 0 : first;
}

WString JoinLabels(std::span<const WString> history, std::size_t first) {
    WString text;
    for (std::size_t i = first; i < history.size(); ++i) {
        text += kLabelPrefix;
        text += history[i];
        text += WTEXT("\n");
    }
    return text;
}
