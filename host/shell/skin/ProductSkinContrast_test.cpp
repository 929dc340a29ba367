// Contrast of every text against what lies under it.
#include "host/shell/gdi/ImagePainter.h"
#include "tests/shell/ProductSkin.h"
#include "view/DMBViewIds.h"

#include <cmath>
#include <optional>

namespace shell {

namespace {

constexpr double kLeastContrast = 4.5; // WCAG 2.1, 1.4.3

// WCAG 2.1: relative luminance and contrast ratio.
double Luminance(int red, int green, int blue) {
    const auto linear = [](int value) {
        const double share = value / 255.0;
        return share <= 0.03928 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(red) + 0.7152 * linear(green) + 0.0722 * linear(blue);
}

double Contrast(double left, double right) {
    return (std::max(left, right) + 0.05) / (std::min(left, right) + 0.05);
}

// The least contrast of a colour against the pixels of an area.
double LeastContrast(const Colour& colour, const Surface& surface, const RECT& area) {
    const double text = Luminance(colour.red, colour.green, colour.blue);
    double least = 21;
    for (LONG y = area.top; y < area.bottom; ++y) {
        for (LONG x = area.left; x < area.right; ++x) {
            const std::uint32_t pixel = surface.PixelAt(x, y);
            const double under = Luminance(static_cast<int>(pixel >> 16 & 0xFF), static_cast<int>(pixel >> 8 & 0xFF),
                                           static_cast<int>(pixel & 0xFF));
            least = std::min(least, Contrast(text, under));
        }
    }
    return least;
}

// Where lines of the given height stand in the element's text part; no letter comes nearer to the sides than six pixels.
RECT MiddleOf(const ElementDescription& element, const RECT& part, LONG height) {
    constexpr LONG kSides = 6;
    const LONG middle = element.rect.top + (part.top + part.bottom) / 2;
    const LONG half = std::min(height, part.bottom - part.top) / 2;
    return {element.rect.left + std::max(part.left, kSides), middle - half,
            element.rect.left + std::min(part.right, element.rect.right - element.rect.left - kSides), middle + half};
}

void FillPixelsOf(Surface& surface, const RECT& area, std::uint32_t pixel) {
    for (LONG y = area.top; y < area.bottom; ++y) {
        std::fill(surface.PixelRow(y) + area.left, surface.PixelRow(y) + area.right, pixel);
    }
}

bool ShowsText(const ElementDescription& element) {
    const bool captioned = !element.captions[0][0].empty() || !element.captions[1][0].empty();
    const bool isFilled = element.kind == ElementKind::Text || element.role == Role::StationName ||
                          (element.kind == ElementKind::Button && element.faces[0].icon.empty());
    return captioned || isFilled;
}

} // namespace

// Text against every pixel under it, in each state, over a black and over a white picture where moving picture may lie.
TEST_F(ProductSkin, TextStandsOutFromItsBackground) {
    int looked = 0;
    for (const WString& resource : kResources) {
        const Skin& skin = Of(resource);
        for (auto element = skin.description.elements.begin(); element != skin.description.elements.end(); ++element) {
            if (!ShowsText(*element)) {
                continue;
            }
            // Labels and the radio's picture are never shown over moving picture.
            const bool overVideo =
                resource == u"VelDMB" && element->id != kElementDLS && element->id != kElementAudioBG;
            std::vector<std::optional<std::uint32_t>> backdrops = {std::nullopt};
            if (overVideo) {
                backdrops = {std::nullopt, 0xFF000000, 0xFFFFFFFF};
            }
            for (const auto& backdrop : backdrops) {
                for (std::size_t look = 0; look < kStateCount; ++look) {
                    const std::string& own = element->faces[0].images[look];
                    if (look > 0 && own.empty()) {
                        continue; // looks as in the normal state
                    }
                    Surface surface(skin.description.width, skin.description.height);
                    const HDC handle = gdi.MakeWindowContext(nullptr, surface, Region(surface.Bounds()));
                    Context& context = *gdi.Find(handle);
                    FillPixels(context, surface.Bounds(), backdrop.value_or(kOpaque));
                    if (!backdrop && skin.background != nullptr) {
                        DrawPicture(context, skin.background->At(1), surface.Bounds(), 0);
                    }
                    const auto paint = [&](const ElementDescription& e, const std::string& name) {
                        if (const SkinImage* picture = library.Picture(name)) {
                            if (e.patchBorder > 0) {
                                DrawPicture(context, picture->At(1), e.rect, e.patchBorder);
                            } else {
                                DrawCentred(context, picture->At(1), e.rect);
                            }
                        }
                    };
                    for (auto under = skin.description.elements.begin(); under != element; ++under) {
                        if (!under->hidden || under->id == kElementScanBox) {
                            paint(*under, under->faces[0].images[0]);
                        }
                    }
                    if (!element->textWhenPressed) {
                        paint(*element, own.empty() ? element->faces[0].images[0] : own);
                    }
                    gdi.EndContext(handle);
                    const LONG line = element->wrap ? element->rect.bottom - element->rect.top
                                                    : gdi.text.LineHeight(FontOf(skin, *element));
                    const RECT part = MiddleOf(*element, TextPart(*element, 0), line);
                    if (element->id == kElementScanText) {
                        // Beside its counts stand the box's two icons, which no count reaches.
                        for (const LONG icon : {58, 232}) {
                            FillPixelsOf(
                                surface,
                                {element->rect.left + icon, part.top, element->rect.left + icon + 36, part.bottom},
                                surface.PixelAt(part.left + 10, part.top));
                        }
                    }
                    const std::size_t colour = element->textWhenPressed ? 1 : look;
                    EXPECT_GE(LeastContrast(element->colours[colour], surface, part), kLeastContrast)
                        << skin.description.resource << " " << element->id << " look " << look << " backdrop "
                        << (backdrop ? static_cast<int>(*backdrop & 1) : -1);
                    ++looked;
                }
            }
        }
    }
    EXPECT_GT(looked, 150);
}

} // namespace shell
