// What stands behind the handles of platform/gdi.h.
#pragma once

#include "host/shell/gdi/Region.h"
#include "host/shell/gdi/Surface.h"
#include "host/shell/gdi/TextPainter.h"
#include "platform/gdi.h"

#include <map>
#include <memory>
#include <set>

namespace shell {

// A bitmap or a font. Stock objects belong to the skin or to the drawing layer and cannot be deleted by a caller.
struct GdiObject {
    enum class Kind { Bitmap, Font };
    GdiObject(Kind objectKind, bool isStock) : kind(objectKind), stock(isStock) {}
    virtual ~GdiObject() = default;
    const Kind kind;
    const bool stock;
    HGDIOBJ handle = nullptr;
    int selections = 0;
};

struct GdiFont final : GdiObject {
    GdiFont(FontSpec description, bool isStock) : GdiObject(Kind::Font, isStock), spec(std::move(description)) {}
    FontSpec spec;
};

struct GdiBitmap final : GdiObject {
    GdiBitmap(Surface pixels, bool isStock) : GdiObject(Kind::Bitmap, isStock), surface(std::move(pixels)) {}
    Surface surface;
};

// A device context: where to draw, what may be painted, and the current text attributes.
struct Context {
    Surface* target = nullptr;
    Region clip;
    GdiFont* font = nullptr;
    GdiBitmap* bitmap = nullptr; // memory contexts only
    COLORREF textColour = RGB(0, 0, 0);
    COLORREF backgroundColour = RGB(255, 255, 255);
    int backgroundMode = OPAQUE;
    HWND window = nullptr; // window contexts only
    bool painted = false;  // something was drawn since the context was made
};

// All objects and contexts of one shell. Handles are numbers that are never given twice; one that is not (or no longer) in here
// is refused, never followed.
class GdiState {
public:
    GdiState();
    ~GdiState();
    GdiState(const GdiState&) = delete;
    GdiState& operator=(const GdiState&) = delete;

    [[nodiscard]] HDC MakeWindowContext(HWND window, Surface& target, Region clip);
    [[nodiscard]] HDC MakeMemoryContext();
    // Ends a context; false when there is none. `painted` receives whether something was drawn.
    bool EndContext(HDC handle, bool* painted = nullptr);

    [[nodiscard]] HFONT AddFont(FontSpec spec, bool stock);
    [[nodiscard]] HBITMAP AddBitmap(Surface surface, bool stock);
    // Removes a stock object, taking it out of every context first.
    void RemoveStock(HGDIOBJ object);
    bool Delete(HGDIOBJ object);

    [[nodiscard]] Context* Find(HDC handle);
    [[nodiscard]] GdiObject* FindObject(HGDIOBJ object);
    HGDIOBJ Select(Context& context, HGDIOBJ object);

    // Contexts taken with GetDC and not given back, and objects made by a caller and not deleted.
    [[nodiscard]] std::size_t OpenWindowContexts() const;
    [[nodiscard]] std::size_t CallerObjects() const;

    TextPainter text;

private:
    HGDIOBJ Keep(std::unique_ptr<GdiObject> object);
    HDC Keep(std::unique_ptr<Context> context);
    [[nodiscard]] UINT_PTR NextHandle() { return lastHandle += 4; }

    UINT_PTR lastHandle = 0x1000;
    std::map<HDC, std::unique_ptr<Context>> contexts;
    std::map<HGDIOBJ, std::unique_ptr<GdiObject>> objects;
    GdiFont* systemFont = nullptr;
    GdiBitmap* emptyBitmap = nullptr;
};

// The drawing layer of the current shell, or null without one.
[[nodiscard]] GdiState* CurrentGdi();

} // namespace shell
