// The drawing calls of platform/gdi.h that need no window.
#include "host/shell/gdi/ClippedCairo.h"
#include "host/shell/gdi/Context.h"
#include "host/shell/gdi/Stretch.h"
#include "host/shell/gdi/TextLines.h"

#include <utility>

using shell::Context;

namespace {

Context* Find(HDC handle) {
    shell::GdiState* gdi = shell::CurrentGdi();
    return gdi ? gdi->Find(handle) : nullptr;
}

bool LiesInside(const RECT& part, const shell::Surface& surface) {
    return part.left >= 0 && part.top >= 0 && part.right <= surface.Width() && part.bottom <= surface.Height();
}

} // namespace

HGDIOBJ SelectObject(HDC handle, HGDIOBJ object) {
    Context* context = Find(handle);
    return context ? shell::CurrentGdi()->Select(*context, object) : nullptr;
}

BOOL DeleteObject(HGDIOBJ object) {
    shell::GdiState* gdi = shell::CurrentGdi();
    return gdi && gdi->Delete(object);
}

BOOL StretchBlt(HDC destination, int x, int y, int width, int height, HDC source, int sourceX, int sourceY,
                int sourceWidth, int sourceHeight, DWORD operation) {
    Context* to = Find(destination);
    Context* from = Find(source);
    const RECT part = {sourceX, sourceY, sourceX + sourceWidth, sourceY + sourceHeight};
    if (!to || !from || to->target == from->target || operation != SRCCOPY || !LiesInside(part, *from->target)) {
        return FALSE;
    }
    if (width > shell::kMaxSurfaceSide || height > shell::kMaxSurfaceSide) {
        return FALSE;
    }
    shell::StretchPixels(*from->target, part, *to->target, {x, y, x + width, y + height}, to->clip.Parts());
    to->painted = true;
    return TRUE;
}

int StretchDIBits(HDC handle, int x, int y, int width, int height, int sourceX, int sourceY, int sourceWidth,
                  int sourceHeight, const void* bits, const BITMAPINFO* info, UINT usage, DWORD operation) {
    Context* context = Find(handle);
    if (!context || !bits || !info || usage != DIB_RGB_COLORS || operation != SRCCOPY) {
        return 0;
    }
    const auto header = shell::ReadDibHeader(info);
    if (!header || width > shell::kMaxSurfaceSide || height > shell::kMaxSurfaceSide) {
        return 0;
    }
    // The origin of a picture with its last row first is its lower left corner.
    const int top = header->topDown ? sourceY : header->height - sourceY - sourceHeight;
    const RECT part = {sourceX, top, sourceX + sourceWidth, top + sourceHeight};
    if (part.left < 0 || part.top < 0 || part.right > header->width || part.bottom > header->height) {
        return 0;
    }
    const shell::Surface picture = shell::DibToSurface(*header, bits);
    shell::StretchPixels(picture, part, *context->target, {x, y, x + width, y + height}, context->clip.Parts());
    context->painted = true;
    return header->height;
}

int SetBkMode(HDC handle, int mode) {
    Context* context = Find(handle);
    return context ? std::exchange(context->backgroundMode, mode) : 0;
}

COLORREF SetTextColor(HDC handle, COLORREF colour) {
    Context* context = Find(handle);
    return context ? std::exchange(context->textColour, colour) : 0xFFFFFFFF;
}

BOOL GetTextExtentExPointW(HDC handle, const WCHAR* text, int length, int /*maximum*/, int* /*fit*/, int* /*extents*/,
                           SIZE* size) {
    const Context* context = Find(handle);
    if (!context || !text || length < 0 || !size) {
        return FALSE;
    }
    *size = shell::CurrentGdi()->text.Measure(context->font->spec, {text, static_cast<std::size_t>(length)});
    return TRUE;
}

int DrawTextW(HDC handle, const WCHAR* text, int length, RECT* rectangle, UINT format) {
    Context* context = Find(handle);
    if (!context || !text || !rectangle) {
        return 0;
    }
    shell::TextPainter& painter = shell::CurrentGdi()->text;
    const shell::FontSpec& font = context->font->spec;
    const WStringView given = length < 0 ? WStringView(text) : WStringView(text, static_cast<std::size_t>(length));
    const shell::PrefixedText shown = shell::ResolvePrefixes(given);
    const auto lines =
        shell::BreakLines(shown.text, rectangle->right - rectangle->left, (format & DT_WORDBREAK) != 0,
                          [&](WStringView part) { return static_cast<int>(painter.Measure(font, part).cx); });
    const int lineHeight = painter.LineHeight(font);

    shell::ClippedCairo target(*context);
    target.ClipTo(*rectangle);
    int y = rectangle->top;
    for (const shell::TextLine& line : lines) {
        if (y >= rectangle->bottom) {
            break;
        }
        const WStringView part = WStringView(shown.text).substr(line.start, line.length);
        if (context->backgroundMode == OPAQUE) {
            target.SetColour(context->backgroundColour);
            target.Fill({rectangle->left, y, rectangle->left + painter.Measure(font, part).cx, y + lineHeight});
        }
        target.SetColour(context->textColour);
        const bool marked = shown.underlined >= line.start && shown.underlined < line.start + line.length;
        painter.Draw(target.cairo, font, part, rectangle->left, y,
                     marked ? shown.underlined - line.start : WString::npos);
        y += lineHeight;
    }
    return static_cast<int>(lines.size()) * lineHeight;
}

int GetClipBox(HDC handle, RECT* rectangle) {
    const Context* context = Find(handle);
    if (!context || !rectangle) {
        return RGN_ERROR;
    }
    *rectangle = context->clip.Extents();
    if (context->clip.IsEmpty()) {
        *rectangle = {0, 0, 0, 0};
        return NULLREGION;
    }
    return context->clip.PartCount() == 1 ? SIMPLEREGION : COMPLEXREGION;
}
