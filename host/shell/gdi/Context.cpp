#include "host/shell/gdi/Context.h"

#include <algorithm>

namespace shell {

GdiState::GdiState() {
    systemFont = static_cast<GdiFont*>(FindObject(AddFont({"NanumGothic", 16, false}, true)));
    emptyBitmap = static_cast<GdiBitmap*>(FindObject(AddBitmap(Surface(1, 1), true)));
}

GdiState::~GdiState() = default;

HGDIOBJ GdiState::Keep(std::unique_ptr<GdiObject> object) {
    const auto handle = reinterpret_cast<HGDIOBJ>(NextHandle());
    object->handle = handle;
    objects.emplace(handle, std::move(object));
    return handle;
}

HDC GdiState::Keep(std::unique_ptr<Context> context) {
    const auto handle = reinterpret_cast<HDC>(NextHandle());
    contexts.emplace(handle, std::move(context));
    return handle;
}

HDC GdiState::MakeWindowContext(HWND window, Surface& target, Region clip) {
    auto context = std::make_unique<Context>();
    context->target = &target;
    context->clip = std::move(clip);
    context->clip.ClipTo(target.Bounds());
    context->window = window;
    context->font = systemFont;
    return Keep(std::move(context));
}

HDC GdiState::MakeMemoryContext() {
    auto context = std::make_unique<Context>();
    context->bitmap = emptyBitmap;
    context->target = &emptyBitmap->surface;
    context->clip = Region(emptyBitmap->surface.Bounds());
    context->font = systemFont;
    return Keep(std::move(context));
}

bool GdiState::EndContext(HDC handle, bool* painted) {
    Context* context = Find(handle);
    if (!context) {
        return false;
    }
    if (painted) {
        *painted = context->painted;
    }
    for (GdiObject* held : {static_cast<GdiObject*>(context->font), static_cast<GdiObject*>(context->bitmap)}) {
        if (held && !held->stock) {
            --held->selections;
        }
    }
    contexts.erase(handle);
    return true;
}

HFONT GdiState::AddFont(FontSpec spec, bool stock) {
    auto font = std::make_unique<GdiFont>(std::move(spec), stock);
    return static_cast<HFONT>(Keep(std::move(font)));
}

HBITMAP GdiState::AddBitmap(Surface surface, bool stock) {
    auto bitmap = std::make_unique<GdiBitmap>(std::move(surface), stock);
    return static_cast<HBITMAP>(Keep(std::move(bitmap)));
}

void GdiState::RemoveStock(HGDIOBJ object) {
    GdiObject* found = FindObject(object);
    if (!found) {
        return;
    }
    for (auto& [handle, context] : contexts) {
        if (context->font == found) {
            context->font = systemFont;
        }
    }
    objects.erase(object);
}

bool GdiState::Delete(HGDIOBJ object) {
    const GdiObject* found = FindObject(object);
    if (!found || found->stock || found->selections > 0) {
        return false;
    }
    objects.erase(object);
    return true;
}

Context* GdiState::Find(HDC handle) {
    const auto found = contexts.find(handle);
    return found == contexts.end() ? nullptr : found->second.get();
}

GdiObject* GdiState::FindObject(HGDIOBJ object) {
    const auto found = objects.find(object);
    return found == objects.end() ? nullptr : found->second.get();
}

HGDIOBJ GdiState::Select(Context& context, HGDIOBJ object) {
    GdiObject* next = FindObject(object);
    if (!next) {
        return nullptr;
    }
    GdiObject* previous = nullptr;
    if (next->kind == GdiObject::Kind::Font) {
        previous = std::exchange(context.font, static_cast<GdiFont*>(next));
    } else if (context.bitmap) {
        // A bitmap lives in one memory context at a time.
        if (next->selections > 0 && next != context.bitmap) {
            return nullptr;
        }
        previous = std::exchange(context.bitmap, static_cast<GdiBitmap*>(next));
        context.target = &context.bitmap->surface;
        context.clip = Region(context.target->Bounds());
    } else {
        return nullptr;
    }
    --previous->selections;
    ++next->selections;
    return previous->handle;
}

std::size_t GdiState::OpenWindowContexts() const {
    return static_cast<std::size_t>(std::count_if(contexts.begin(), contexts.end(),
                                                  [](const auto& entry) { return entry.second->window != nullptr; }));
}

std::size_t GdiState::CallerObjects() const {
    return static_cast<std::size_t>(
        std::count_if(objects.begin(), objects.end(), [](const auto& entry) { return !entry.second->stock; }));
}

} // namespace shell
