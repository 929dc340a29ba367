// One element of a skin in use: what stands behind a GButton.
#pragma once

#include "host/shell/skin/SkinHost.h"
#include "platform/velshell/GEngine.h"

#include <functional>
#include <memory>
#include <vector>

namespace shell {
class Element;
}

struct GButton::Impl {
    const shell::ElementDescription* description = nullptr;
    const shell::Skin* skin = nullptr;
    const GFactory::Impl* owner = nullptr;
    int state = 0;
    bool selected = false;
    bool visible = true;
    bool held = false; // the finger is on it
    int face = 0;      // 0 normal, 1 alternative
    WString text;
    WString otherText; // shown with the alternative face
    int margin = 0;
    RECT rect = {};
    const GImage* background = nullptr;
};

struct GFactory::Impl {
    HWND window = nullptr; // set while the window exists
    const shell::Skin* skin = nullptr;
    std::vector<std::unique_ptr<shell::Element>> elements; // in painting order
    shell::Element* pressed = nullptr;
    HDC canvas = nullptr;
    std::function<void()> themed; // the window's own part after a theme was applied
};

namespace shell {

class Element final : public GButton {
public:
    Element(const ElementDescription& description, const Skin& skin, const GFactory::Impl& owner, Language language);
    ~Element();

    [[nodiscard]] Impl& State() { return *m_pImpl; }
    [[nodiscard]] const Impl& State() const { return *m_pImpl; }

    // Takes the finger: visible, a button, and not disabled.
    [[nodiscard]] bool CanBePressed() const;
    void SetHeld(bool held);
    void SetFace(int face, bool redraw);
    // Where the element lies in a small window of the given size, or its full-size place.
    void PlaceFor(bool small, int width, int height);
    void SetCaption(Language language);

    void Paint(Context& context) const;

private:
    [[nodiscard]] std::size_t Look() const;
    // Does the alternative face show, with pictures of its own?
    [[nodiscard]] bool ShowsOtherFace() const;
    [[nodiscard]] const WString& ShownText() const { return ShowsOtherFace() ? m_pImpl->otherText : m_pImpl->text; }
    [[nodiscard]] bool HasTextArea() const;
    [[nodiscard]] RECT TextArea() const;
    void PaintText(Context& context) const;
};

// Paints the visible elements that the context's clip meets: those under what the view paints itself, or those over it.
void PaintElements(const GFactory::Impl& widgets, Context& context, bool overTheView);

} // namespace shell
