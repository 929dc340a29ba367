#include "dialogs/Selector.h"

void PlaceSelector(const GFactory& factory, UINT id, UINT option, int redraw) {
    GButton* marker = factory.Find(id);
    if (marker == nullptr)
        return;
    int count = 0;
    const POINT* anchors = marker->GetAnchors(&count);
    if (anchors == nullptr || option >= static_cast<UINT>(count))
        return;
    const RECT& old = marker->GetRect();
    const POINT corner = anchors[option];
    marker->SetRect({corner.x, corner.y, corner.x + old.right - old.left, corner.y + old.bottom - old.top}, redraw);
}

POINT CentreOn(const RECT& rect, int width, int height) {
    return {rect.left + ((rect.right - rect.left - width) >> 1), rect.top + ((rect.bottom - rect.top - height) >> 1)};
}
