// The widget factory: elements from a skin, found by number, painted in the skin's order.
#include "host/shell/gdi/ImagePainter.h"
#include "host/shell/skin/Element.h"

using shell::Element;

GFactory::GFactory() : m_pFactory(new Impl) {}

GFactory::~GFactory() {
    if (shell::SkinHost* host = shell::CurrentSkinHost()) {
        host->Gdi().EndContext(m_pFactory->canvas);
    }
    delete m_pFactory;
}

void GFactory::Paint(HDC dc) {
    DoPaint(dc);
}

void GFactory::DoPaint(HDC dc) {
    shell::SkinHost* host = shell::CurrentSkinHost();
    shell::Context* context = host ? host->Gdi().Find(dc) : nullptr;
    if (!context) {
        return;
    }
    const RECT clip = context->clip.Extents();
    // Under a picture of its own a window is transparent, so that a dialog may have round corners; without one it is black.
    const bool video = host->ShowsVideoBehind(m_pFactory->window);
    const GImage* background = GetBackground();
    shell::FillPixels(*context, clip, video || background ? 0 : shell::kOpaque);
    if (background && !video) {
        const shell::Surface& picture = static_cast<const shell::SkinImage*>(background)->At(context->target->Scale());
        shell::DrawPicture(*context, picture, picture.Bounds(), 0);
    }
    shell::PaintElements(*m_pFactory, *context, false);
}

namespace shell {

void PaintElements(const GFactory::Impl& widgets, Context& context, bool overTheView) {
    const RECT clip = context.clip.Extents();
    for (const auto& element : widgets.elements) {
        const GButton::Impl& state = element->State();
        RECT common;
        if (LiesOverTheView(state.description->role) == overTheView && state.visible &&
            IntersectRect(&common, &state.rect, &clip)) {
            element->Paint(context);
        }
    }
}

} // namespace shell

void GFactory::RefreshWindow() {
    shell::SkinHost* host = shell::CurrentSkinHost();
    if (host && m_pFactory->window) {
        host->Redraw(m_pFactory->window, {0, 0, shell::kMaxSurfaceSide, shell::kMaxSurfaceSide}, false);
    }
}

HFONT GFactory::GetDefaultFont() const {
    return m_pFactory->skin ? m_pFactory->skin->fonts.at("default") : nullptr;
}

const WCHAR* GFactory::GetResourceName() const {
    return u"";
}

int GFactory::OnPreClick(UINT /*id*/) {
    return 0;
}

void GFactory::Theme() {
    shell::SkinHost* host = shell::CurrentSkinHost();
    m_pFactory->pressed = nullptr;
    m_pFactory->elements.clear();
    m_pFactory->skin = host ? host->Skins().Find(GetResourceName()) : nullptr;
    if (!m_pFactory->skin) {
        return;
    }
    for (const shell::ElementDescription& description : m_pFactory->skin->description.elements) {
        m_pFactory->elements.push_back(
            std::make_unique<Element>(description, *m_pFactory->skin, *m_pFactory, host->CurrentLanguage()));
    }
    if (m_pFactory->themed) {
        m_pFactory->themed();
    }
    RefreshWindow();
}

void GFactory::Locale() {
    shell::SkinHost* host = shell::CurrentSkinHost();
    for (const auto& element : m_pFactory->elements) {
        if (!element->State().description->captions[0][0].empty()) {
            element->SetCaption(host->CurrentLanguage());
        }
    }
    RefreshWindow();
}

GButton* GFactory::Find(UINT id) const {
    for (const auto& element : m_pFactory->elements) {
        if (element->GetId() == id) {
            return element.get();
        }
    }
    return nullptr;
}

void GFactory::ShowButton(UINT id, int show, int redraw) {
    if (GButton* element = Find(id)) {
        element->Show(show, redraw);
    }
}

HDC GFactory::GetCanvas() const {
    shell::SkinHost* host = shell::CurrentSkinHost();
    if (!m_pFactory->canvas && host) {
        m_pFactory->canvas = host->Gdi().MakeMemoryContext();
    }
    return m_pFactory->canvas;
}

const GImage* GFactory::GetBackground() const {
    return m_pFactory->skin ? m_pFactory->skin->background : nullptr;
}
