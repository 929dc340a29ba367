// What drawing offers to the module: device contexts, stretched bitmaps, text, clip boxes, and the few
// rectangle helpers and window calls that painting needs. On Windows this is the SDK; elsewhere
// host/shell/gdi implements it.
//
// Coordinates are pixels, x to the right and y downwards, relative to the client area that the context
// belongs to. All calls belong on the window's thread.
#pragma once

#include "platform/types.h"

#ifndef _WIN32

// Painting modes, raster operation, text format and region kinds that are in use.
inline constexpr int TRANSPARENT = 1;
inline constexpr int OPAQUE = 2;
inline constexpr DWORD SRCCOPY = 0x00CC0020;
inline constexpr UINT DIB_RGB_COLORS = 0;
inline constexpr DWORD BI_RGB = 0;
inline constexpr DWORD BI_BITFIELDS = 3;
// Break lines at blanks and between Hangul syllables. Note that "&" still marks an underlined letter and "&&"
// prints one.
inline constexpr UINT DT_WORDBREAK = 0x0010;
inline constexpr int RGN_ERROR = 0;
inline constexpr int NULLREGION = 1;
inline constexpr int SIMPLEREGION = 2;
inline constexpr int COMPLEXREGION = 3;

// Header of a device-independent bitmap. A negative height means that the first row in memory is the top one.
// With 16 bits per pixel and BI_BITFIELDS three colour masks (red, green, blue) follow the header directly.
struct BITMAPINFOHEADER {
    DWORD biSize; // 40
    LONG biWidth;
    LONG biHeight;
    WORD biPlanes; // 1
    WORD biBitCount;
    DWORD biCompression;
    DWORD biSizeImage;
    LONG biXPelsPerMeter;
    LONG biYPelsPerMeter;
    DWORD biClrUsed;
    DWORD biClrImportant;
};
struct RGBQUAD {
    BYTE rgbBlue, rgbGreen, rgbRed, rgbReserved;
};
struct BITMAPINFO {
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[1]; // or the first colour mask
};
static_assert(sizeof(BITMAPINFOHEADER) == 40 && sizeof(BITMAPINFO) == 44);

constexpr COLORREF RGB(BYTE red, BYTE green, BYTE blue) {
    return static_cast<COLORREF>(red) | static_cast<COLORREF>(green) << 8 | static_cast<COLORREF>(blue) << 16;
}

// A resource number where a resource name is asked for.
inline const WCHAR* MAKEINTRESOURCEW(WORD number) {
    return reinterpret_cast<const WCHAR*>(static_cast<UINT_PTR>(number));
}

// ---- Windows as surfaces ----

// A context for the window's whole client area, valid until ReleaseDC; null when there is no such window.
// Needed for painting outside a paint request: the progress bar and the slide.
DMB_HOST_API HDC GetDC(HWND window);
DMB_HOST_API int ReleaseDC(HWND window, HDC context);

// Marks a rectangle of the client area (null: all of it) for the next paint request; `erase` asks for the
// background to be painted first. Non-zero on success.
DMB_HOST_API BOOL InvalidateRect(HWND window, const RECT* rectangle, BOOL erase);

// The client area as (0, 0, width, height). Non-zero on success.
DMB_HOST_API BOOL GetClientRect(HWND window, RECT* rectangle);

// ---- Bitmaps ----

// Loads bitmap `name` (MAKEINTRESOURCEW(2001) is the strip of the progress bar) of a module's resources; null
// when there is none. The caller frees it with DeleteObject.
DMB_HOST_API HBITMAP LoadBitmapW(HINSTANCE module, const WCHAR* name);

// Makes a bitmap or font current in a context and returns the one that was; null on failure.
DMB_HOST_API HGDIOBJ SelectObject(HDC context, HGDIOBJ object);
// Frees a bitmap or font that is selected nowhere. Non-zero on success.
DMB_HOST_API BOOL DeleteObject(HGDIOBJ object);

// Copies a rectangle of one context into a rectangle of another, repeating pixels to enlarge. Width or height
// 0 draws nothing and succeeds. `operation` is SRCCOPY. Non-zero on success.
DMB_HOST_API BOOL StretchBlt(HDC destination, int x, int y, int width, int height, HDC source, int sourceX, int sourceY,
                             int sourceWidth, int sourceHeight, DWORD operation);

// Stretches pixels in memory, described by a header, into a rectangle of the context. 16-bit pixels expand by
// repeating their upper bits. Enlarging repeats pixels; shrinking combines the dropped ones with AND, the
// default mode. Returns 0 when nothing could be drawn; do not build on the other values, which differ between
// systems.
DMB_HOST_API int StretchDIBits(HDC context, int x, int y, int width, int height, int sourceX, int sourceY,
                               int sourceWidth, int sourceHeight, const void* bits, const BITMAPINFO* info, UINT usage,
                               DWORD operation);

// ---- Text ----

// Both return what was set before. A fresh context has black text on an opaque background.
DMB_HOST_API int SetBkMode(HDC context, int mode);
DMB_HOST_API COLORREF SetTextColor(HDC context, COLORREF colour);

// The width and height of one line of text in the context's font. `maximum`, `fit` and `extents` are 0 and
// null here; the size is always that of the whole text, in which "\n" counts as a glyph. Non-zero on success.
DMB_HOST_API BOOL GetTextExtentExPointW(HDC context, const WCHAR* text, int length, int maximum, int* fit, int* extents,
                                        SIZE* size);

// Draws text into a rectangle, clipped to it; "\n" ends a line and a trailing one adds no height. A word that
// is wider than the rectangle is cut, not split. `length` -1: up to the terminating NUL. Returns the height
// of the text in pixels.
DMB_HOST_API int DrawTextW(HDC context, const WCHAR* text, int length, RECT* rectangle, UINT format);

// The smallest rectangle around what may be painted: NULLREGION with an empty rectangle when nothing may,
// RGN_ERROR when it cannot be told.
DMB_HOST_API int GetClipBox(HDC context, RECT* rectangle);

// ---- Rectangles ----

// An empty rectangle has no width or no height.
inline BOOL IsRectEmpty(const RECT* rectangle) {
    return rectangle->right <= rectangle->left || rectangle->bottom <= rectangle->top;
}

// The part that two rectangles share. Zero, and an all-zero result, when they share none.
inline BOOL IntersectRect(RECT* result, const RECT* a, const RECT* b) {
    const RECT common{a->left > b->left ? a->left : b->left, a->top > b->top ? a->top : b->top,
                      a->right < b->right ? a->right : b->right, a->bottom < b->bottom ? a->bottom : b->bottom};
    const bool none = IsRectEmpty(a) || IsRectEmpty(b) || IsRectEmpty(&common);
    *result = none ? RECT{0, 0, 0, 0} : common;
    return !none;
}

// The smallest rectangle around two; an empty one does not count. Zero, and an all-zero result, when both are
// empty.
inline BOOL UnionRect(RECT* result, const RECT* a, const RECT* b) {
    if (IsRectEmpty(a) || IsRectEmpty(b)) {
        *result = !IsRectEmpty(a) ? *a : !IsRectEmpty(b) ? *b : RECT{0, 0, 0, 0};
        return !IsRectEmpty(result);
    }
    *result = {a->left < b->left ? a->left : b->left, a->top < b->top ? a->top : b->top,
               a->right > b->right ? a->right : b->right, a->bottom > b->bottom ? a->bottom : b->bottom};
    return TRUE;
}

#endif // not Windows
