// The shell's widget factory: numbered buttons and text areas made from a skin description.
//
// A skin resource is found by the name that GetResourceName returns. An element that the skin does not describe is simply not
// found. All calls are made on the window thread.
#pragma once

#include "platform/gdi.h"
#include "platform/types.h"

class GFactory;

// A picture of the skin.
class DMB_HOST_API GImage {
public:
    [[nodiscard]] int GetWidth() const { return m_nWidth; }
    [[nodiscard]] int GetHeight() const { return m_nHeight; }

protected:
    GImage() = default;
    ~GImage() = default;
    int m_nWidth = 0;
    int m_nHeight = 0;
};

// A numbered set of pictures (one per antenna level, one per tab kind).
class DMB_HOST_API GImageSet {
public:
    [[nodiscard]] int GetCount() const;
    // The picture with this number, or null.
    [[nodiscard]] const GImage* GetImage(int index) const;

    GImageSet(const GImageSet&) = delete;
    GImageSet& operator=(const GImageSet&) = delete;
    struct Impl;

protected:
    GImageSet() = default;
    ~GImageSet() = default;
    Impl* m_pImpl = nullptr;
};

// States of a button.
enum GButtonState : int {
    kButtonNormal = 0,
    kButtonPressed = 1, // also "selected", "shows its text" for text areas
    kButtonDisabled = 2,
};

// One element of a skin: button, text area, marker or picture. Owned by its factory. A `redraw` argument that is non-zero repaints
// the element at once; zero leaves it to the next paint.
class DMB_HOST_API GButton {
public:
    [[nodiscard]] UINT GetId() const;

    [[nodiscard]] int GetState() const;
    void SetState(int state, int redraw);
    // The flag that keeps a tab's face selected whatever its state.
    void SetSelected(int selected, int redraw);

    [[nodiscard]] int IsVisible() const;
    void Show(int show, int redraw);

    [[nodiscard]] const WCHAR* GetText() const;
    // A null text clears.
    void SetText(const WCHAR* text, int redraw);
    // Left margin of the text in pixels.
    void SetMargin(int left, int redraw);

    // In client coordinates of the factory's window.
    [[nodiscard]] const RECT& GetRect() const;
    void SetRect(const RECT& rect, int redraw);

    // The element's own font, or null when it uses the factory's default font.
    [[nodiscard]] HFONT GetFont() const;
    // The element's picture set, or null.
    [[nodiscard]] const GImageSet* GetImageSet() const;
    // Replaces the element's background; null restores the skin's.
    void SetBackground(const GImage* image, int redraw);
    // The anchor points of a selector, one per option; null with count 0 when the skin gives none.
    [[nodiscard]] const POINT* GetAnchors(int* count) const;

    GButton(const GButton&) = delete;
    GButton& operator=(const GButton&) = delete;
    struct Impl;

protected:
    GButton() = default;
    ~GButton() = default;
    Impl* m_pImpl = nullptr;
    friend class GFactory;
};

// The widget-factory facet of a view or dialog.
class DMB_HOST_API GFactory {
public:
    // Paint entry: paints the facet into the context.
    virtual void Paint(HDC dc);
    // Paints background and every visible element that meets the clip box.
    virtual void DoPaint(HDC dc);
    // Repaints the whole window at the next paint.
    virtual void RefreshWindow();
    [[nodiscard]] virtual HFONT GetDefaultFont() const;
    // Names the skin resource of this window.
    [[nodiscard]] virtual const WCHAR* GetResourceName() const;
    // A press is about to act on a button; non-zero refuses it.
    virtual int OnPreClick(UINT id);
    // Applies the skin: makes every element anew. Kept pointers to elements must be found again.
    virtual void Theme();
    // The language of texts changed.
    virtual void Locale();
    virtual ~GFactory();

    // The element with this number, or null.
    [[nodiscard]] GButton* Find(UINT id) const;
    // Shows or hides an element; a missing element is skipped.
    void ShowButton(UINT id, int show, int redraw);
    // The memory context used to compose pictures before they reach the window.
    [[nodiscard]] HDC GetCanvas() const;
    // The skin's background picture, or null.
    [[nodiscard]] const GImage* GetBackground() const;

    GFactory(const GFactory&) = delete;
    GFactory& operator=(const GFactory&) = delete;
    struct Impl;

protected:
    GFactory();
    Impl* m_pFactory = nullptr;
    friend class VelShellAccess;
};
