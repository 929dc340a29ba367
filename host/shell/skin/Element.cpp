#include "host/shell/skin/Element.h"

#include "host/ce/Text.h"
#include "host/shell/gdi/ClippedCairo.h"
#include "host/shell/gdi/ImagePainter.h"
#include "host/shell/gdi/TextLines.h"

#include <algorithm>

namespace {

void Redraw(const GButton::Impl& element, const RECT& rect, int atOnce) {
    if (element.owner->window) {
        if (shell::SkinHost* host = shell::CurrentSkinHost()) {
            host->Redraw(element.owner->window, rect, atOnce != 0);
        }
    }
}

} // namespace

// ---- What a view sees ----

UINT GButton::GetId() const {
    return m_pImpl->description->id;
}

int GButton::GetState() const {
    return m_pImpl->state;
}

void GButton::SetState(int state, int redraw) {
    m_pImpl->state = state;
    Redraw(*m_pImpl, m_pImpl->rect, redraw);
}

void GButton::SetSelected(int selected, int redraw) {
    m_pImpl->selected = selected != 0;
    Redraw(*m_pImpl, m_pImpl->rect, redraw);
}

int GButton::IsVisible() const {
    return m_pImpl->visible;
}

void GButton::Show(int show, int redraw) {
    m_pImpl->visible = show != 0;
    Redraw(*m_pImpl, m_pImpl->rect, redraw);
}

const WCHAR* GButton::GetText() const {
    return m_pImpl->text.c_str();
}

void GButton::SetText(const WCHAR* text, int redraw) {
    m_pImpl->text = text ? text : u"";
    Redraw(*m_pImpl, m_pImpl->rect, redraw);
}

void GButton::SetMargin(int left, int redraw) {
    m_pImpl->margin = left;
    Redraw(*m_pImpl, m_pImpl->rect, redraw);
}

const RECT& GButton::GetRect() const {
    return m_pImpl->rect;
}

void GButton::SetRect(const RECT& rect, int redraw) {
    const RECT before = m_pImpl->rect;
    m_pImpl->rect = rect;
    Redraw(*m_pImpl, before, 0);
    Redraw(*m_pImpl, rect, redraw);
}

HFONT GButton::GetFont() const {
    const auto font = m_pImpl->skin->fonts.find(m_pImpl->description->font);
    return font == m_pImpl->skin->fonts.end() ? nullptr : font->second;
}

const GImageSet* GButton::GetImageSet() const {
    const auto set = m_pImpl->skin->imageSets.find(m_pImpl->description->id);
    return set == m_pImpl->skin->imageSets.end() ? nullptr : set->second.get();
}

void GButton::SetBackground(const GImage* image, int redraw) {
    m_pImpl->background = image;
    Redraw(*m_pImpl, m_pImpl->rect, redraw);
}

const POINT* GButton::GetAnchors(int* count) const {
    const auto& anchors = m_pImpl->description->anchors;
    if (count) {
        *count = static_cast<int>(anchors.size());
    }
    return anchors.empty() ? nullptr : anchors.data();
}

// ---- What the shell does with it ----

namespace shell {

Element::Element(const ElementDescription& description, const Skin& skin, const GFactory::Impl& owner,
                 Language language) {
    m_pImpl = new Impl;
    m_pImpl->description = &description;
    m_pImpl->skin = &skin;
    m_pImpl->owner = &owner;
    m_pImpl->state = description.state;
    m_pImpl->visible = !description.hidden;
    m_pImpl->margin = description.margin;
    m_pImpl->rect = description.rect;
    SetCaption(language);
}

Element::~Element() {
    delete m_pImpl;
}

bool Element::CanBePressed() const {
    return m_pImpl->visible && m_pImpl->description->kind == ElementKind::Button && m_pImpl->state != kButtonDisabled;
}

void Element::SetHeld(bool held) {
    m_pImpl->held = held;
    Redraw(*m_pImpl, m_pImpl->rect, 0);
}

void Element::SetFace(int face, bool redraw) {
    m_pImpl->face = face != 0 ? 1 : 0;
    Redraw(*m_pImpl, m_pImpl->rect, redraw);
}

void Element::PlaceFor(bool small, int width, int height) {
    const ElementDescription::SmallPlace& place = m_pImpl->description->small;
    if (place.width == 0) {
        return;
    }
    if (!small) {
        SetRect(m_pImpl->description->rect, 0);
        return;
    }
    const int x = place.x < 0 ? width + place.x : place.x;
    const int y = place.y < 0 ? height + place.y : place.y;
    const int right = place.width < 0 ? std::max(width + place.width, x + 1) : x + place.width;
    SetRect({x, y, right, y + place.height}, 0);
}

void Element::SetCaption(Language language) {
    const auto index = static_cast<std::size_t>(language);
    m_pImpl->text = ce::FromUtf8(m_pImpl->description->captions[0][index]);
    m_pImpl->otherText = ce::FromUtf8(m_pImpl->description->captions[1][index]);
}

// Which of the three looks the element has now; a state beyond them looks pressed.
std::size_t Element::Look() const {
    if (m_pImpl->state == kButtonDisabled) {
        return kButtonDisabled;
    }
    return m_pImpl->state != kButtonNormal || m_pImpl->selected || m_pImpl->held ? kButtonPressed : kButtonNormal;
}

// A face without pictures of its own borrows those of the normal face.
bool Element::ShowsOtherFace() const {
    const FaceDescription& other = m_pImpl->description->faces[1];
    return m_pImpl->face == 1 && (!other.images[0].empty() || !other.icon.empty());
}

void Element::Paint(Context& context) const {
    const ElementDescription& description = *m_pImpl->description;
    const SkinLibrary& pictures = CurrentSkinHost()->Skins();
    const int scale = context.target->Scale();
    const std::size_t look = Look();
    const bool textOnly = description.textWhenPressed && look == kButtonPressed;
    const FaceDescription& face = description.faces[ShowsOtherFace() ? 1 : 0];
    const std::string& name = !face.images[look].empty() ? face.images[look] : face.images[0];
    const SkinImage* picture = pictures.Picture(name);
    if (m_pImpl->background && (look == kButtonNormal || face.images[look].empty())) {
        picture = static_cast<const SkinImage*>(m_pImpl->background);
    }
    if (picture && !textOnly) {
        if (description.patchBorder > 0) {
            DrawPicture(context, picture->At(scale), m_pImpl->rect, description.patchBorder);
        } else {
            DrawCentred(context, picture->At(scale), m_pImpl->rect);
        }
    }
    if (const SkinImage* icon = pictures.Picture(face.icon)) {
        RECT place = m_pImpl->rect;
        if (HasTextArea()) {
            place.right = TextArea().left;
        } else if (!ShownText().empty()) {
            place.bottom -= (place.bottom - place.top) * 3 / 10; // the caption stands below the icon
        }
        constexpr double kDimmed = 0.3;
        DrawCentred(context, icon->At(scale), place, look == kButtonDisabled ? kDimmed : 1.0);
    }
    if (!description.textWhenPressed || textOnly) {
        PaintText(context);
    }
}

// Is there a part for the text? In the small window an element may be too small for it.
bool Element::HasTextArea() const {
    const RECT& rect = m_pImpl->rect;
    const RECT& area = m_pImpl->description->textArea;
    return !IsRectEmpty(&area) && area.right <= rect.right - rect.left && area.bottom <= rect.bottom - rect.top;
}

// The part in which the text lies, in the window: all of the element when it has none.
RECT Element::TextArea() const {
    const RECT& rect = m_pImpl->rect;
    const RECT& area = m_pImpl->description->textArea;
    if (!HasTextArea()) {
        return rect;
    }
    return {rect.left + area.left, rect.top + area.top, rect.left + area.right, rect.top + area.bottom};
}

void Element::PaintText(Context& context) const {
    if (ShownText().empty()) {
        return;
    }
    const ElementDescription& description = *m_pImpl->description;
    GdiState& gdi = CurrentSkinHost()->Gdi();
    const HFONT fontHandle = GetFont() ? GetFont() : m_pImpl->skin->fonts.at("default");
    const FontSpec& font = static_cast<const GdiFont*>(gdi.FindObject(fontHandle))->spec;

    RECT area = TextArea();
    area.left += m_pImpl->margin;
    if (!HasTextArea() && !description.faces[ShowsOtherFace() ? 1 : 0].icon.empty()) {
        area.top += (area.bottom - area.top) * 6 / 10;
    }
    const int width = area.right - area.left;
    const auto measure = [&](WStringView part) { return static_cast<int>(gdi.text.Measure(font, part).cx); };
    WString text = ShownText();
    if (!description.wrap && text.find(u'\n') == WString::npos && measure(text) > width) {
        while (!text.empty() && measure(text + u"\u2026") > width) {
            text.pop_back();
        }
        text += u'\u2026';
    }
    const auto lines = BreakLines(text, width, description.wrap, measure);
    const int lineHeight = gdi.text.LineHeight(font);
    int y = (area.top + area.bottom - lineHeight * static_cast<int>(lines.size())) / 2;

    ClippedCairo target(context);
    target.ClipTo(m_pImpl->rect);
    const Colour& colour = description.colours[Look()];
    // A text beside a picture that is not there stands in the middle.
    const bool lostItsArea = !IsRectEmpty(&description.textArea) && !HasTextArea();
    const Align align = lostItsArea ? Align::Centre : description.align;
    target.SetColour(RGB(colour.red, colour.green, colour.blue), colour.alpha / 255.0);
    for (const TextLine& line : lines) {
        const WStringView part = WStringView(text).substr(line.start, line.length);
        const int spare = width - measure(part);
        const int x = align == Align::Left     ? area.left
                      : align == Align::Centre ? area.left + spare / 2
                                               : area.left + spare;
        gdi.text.Draw(target.cairo, font, part, x, y);
        y += lineHeight;
    }
}

} // namespace shell
