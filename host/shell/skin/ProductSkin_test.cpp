// The skin that is shipped, looked at by rule: can it be read at arm's length, touched with a thumb, and understood in both
// languages?
#include "host/ce/Text.h"
#include "host/shell/core/HomeText.h"
#include "host/shell/core/Reason.h"
#include "host/shell/gdi/ImagePainter.h"
#include "host/shell/gdi/TextLines.h"
#include "host/shell/skin/MessageTexts.h"
#include "host/shell/skin/SkinLibrary.h"
#include "tests/support/Places.h"
#include "view/DMBViewIds.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
#include <set>

namespace shell {

namespace {

constexpr int kLeastTarget = 60;       // pixels
constexpr double kLeastContrast = 4.5; // WCAG 2.1, 1.4.3
constexpr LONG kSmallWidth = 320, kSmallHeight = 240;
const WString kResources[] = {u"VelMain",     u"VelDMB",       u"VelDMBSettings", u"VelNotice",
                              u"VelDMBDebug", u"VelDMBChList", u"VelMsgBox"};
constexpr Language kLanguages[] = {Language::Korean, Language::English};

class ProductSkin : public testing::Test {
protected:
    [[nodiscard]] const Skin& Of(WStringView resource) const { return *library.Find(resource); }
    [[nodiscard]] const ElementDescription& ElementOf(WStringView resource, UINT id) const {
        const auto& elements = Of(resource).description.elements;
        return *std::find_if(elements.begin(), elements.end(), [id](const auto& e) { return e.id == id; });
    }
    [[nodiscard]] static FontSpec FontOf(const Skin& skin, const ElementDescription& element) {
        const FontDescription& font = skin.description.fonts.at(element.font.empty() ? "default" : element.font);
        return {font.family, font.pixels, font.bold};
    }
    // Where an element's text lies in it: its own area, below its icon, or all of it; without its margin.
    [[nodiscard]] static RECT TextPart(const ElementDescription& element, std::size_t face) {
        RECT part = {0, 0, element.rect.right - element.rect.left, element.rect.bottom - element.rect.top};
        if (!IsRectEmpty(&element.textArea)) {
            part = element.textArea;
        } else if (!element.faces[face].icon.empty()) {
            part.top += part.bottom * 6 / 10;
        }
        part.left += element.margin;
        return part;
    }
    // Empty, or what sticks out.
    std::string Overflow(const FontSpec& font, const WString& text, int width, int height, bool wrap) {
        const auto measure = [&](WStringView part) { return static_cast<int>(gdi.text.Measure(font, part).cx); };
        const auto lines = BreakLines(text, width, wrap, measure);
        const int needed = static_cast<int>(lines.size()) * gdi.text.LineHeight(font);
        if (needed > height) {
            return ce::ToUtf8(text) + ": " + std::to_string(needed) + " of " + std::to_string(height) + " pixels high";
        }
        for (const TextLine& line : lines) {
            const int wide = measure(WStringView(text).substr(line.start, line.length));
            if (wide > width) {
                return ce::ToUtf8(text) + ": " + std::to_string(wide) + " of " + std::to_string(width) + " pixels wide";
            }
        }
        return {};
    }
    // The same for an element of a skin.
    std::string OverflowIn(WStringView resource, UINT id, const WString& text) {
        const ElementDescription& element = ElementOf(resource, id);
        const RECT part = TextPart(element, 0);
        return Overflow(FontOf(Of(resource), element), text, part.right - part.left, part.bottom - part.top,
                        element.wrap);
    }
    [[nodiscard]] WString Text(WStringView resource, WORD number, Language language) const {
        return library.Text(resource, number, language);
    }

    GdiState gdi;
    const std::filesystem::path folder = std::filesystem::path(testing_support::BinaryDir()) / "skin";
    const SkinLibrary library{folder, gdi};
};

// ---- Contrast ----------------------------------------------------------------------------------------------------------

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

TEST_F(ProductSkin, EveryElementLiesInItsWindow) {
    for (const WString& resource : kResources) {
        const SkinDescription& skin = Of(resource).description;
        for (const ElementDescription& element : skin.elements) {
            const RECT& rect = element.rect;
            EXPECT_TRUE(rect.left >= 0 && rect.top >= 0 && rect.right <= skin.width && rect.bottom <= skin.height)
                << skin.resource << " " << element.id;
            const RECT& area = element.textArea;
            EXPECT_TRUE(area.right <= rect.right - rect.left && area.bottom <= rect.bottom - rect.top)
                << skin.resource << " " << element.id;
        }
    }
}

TEST_F(ProductSkin, WhatCanBePressedIsAsLargeAsAThumb) {
    int seen = 0;
    for (const WString& resource : kResources) {
        for (const ElementDescription& element : Of(resource).description.elements) {
            if (element.kind != ElementKind::Button) {
                continue;
            }
            ++seen;
            EXPECT_GE(element.rect.right - element.rect.left, kLeastTarget) << element.id;
            EXPECT_GE(element.rect.bottom - element.rect.top, kLeastTarget) << element.id;
            if (element.small.width != 0) {
                EXPECT_GE(element.small.width, kLeastTarget) << element.id;
                EXPECT_GE(element.small.height, kLeastTarget) << element.id;
            }
        }
    }
    EXPECT_GT(seen, 60);
}

TEST_F(ProductSkin, TargetsOfOneWindowDoNotMeet) {
    for (const WString& resource : kResources) {
        const auto& elements = Of(resource).description.elements;
        for (auto left = elements.begin(); left != elements.end(); ++left) {
            for (auto right = left + 1; right != elements.end(); ++right) {
                const auto counts = [](const ElementDescription& e) {
                    return e.kind == ElementKind::Button && !e.hidden && e.control != ControlGroup::Small;
                };
                // A row of the list is half as wide when there are two columns.
                const auto place = [this](const ElementDescription& e) {
                    RECT rect = e.rect;
                    if (!e.imageSet.empty()) {
                        rect.right = rect.left + library.Picture(e.imageSet.back())->At(1).Width();
                    }
                    return rect;
                };
                const RECT a = place(*left), b = place(*right);
                RECT common;
                EXPECT_FALSE(counts(*left) && counts(*right) && IntersectRect(&common, &a, &b))
                    << left->id << " and " << right->id;
            }
        }
    }
}

TEST_F(ProductSkin, CaptionsFitInBothLanguages) {
    for (const WString& resource : kResources) {
        const Skin& skin = Of(resource);
        for (const ElementDescription& element : skin.description.elements) {
            for (std::size_t face = 0; face < kFaceCount; ++face) {
                const RECT part = TextPart(element, face);
                for (const std::string& text : element.captions[face]) {
                    EXPECT_EQ(Overflow(FontOf(skin, element), ce::FromUtf8(text), part.right - part.left,
                                       part.bottom - part.top, element.wrap),
                              "")
                        << skin.description.resource << " " << element.id;
                }
            }
        }
    }
}

// Every text of the tables, where it is shown, with the longest label that can come along.
TEST_F(ProductSkin, MessagesFitWhereTheyAreShown) {
    const WString longestLabels[] = {u"가나다라마바사아", u"WWWWWWWWWWWWWWWW"};
    std::set<std::pair<WString, WORD>> shown;
    const auto show = [&](WStringView table, WORD number, WStringView resource, UINT element, WStringView before = {}) {
        shown.insert({WString(table), number});
        for (const Language language : kLanguages) {
            EXPECT_EQ(OverflowIn(resource, element, WString(before) + Text(table, number, language)), "");
        }
    };
    constexpr UINT kBoxText = 11, kLength = 11, kHomeLine = 31, kHomeDateElement = 21, kReason = 71, kRadioReason = 73;
    for (const WORD number : {kTextNoChannels, kTextRecordStopped, kTextNoSpace, kTextStopRecording, kTextRecordStarted,
                              kTextNoDAB, kTextNoDMB}) {
        show(u"VelDMB", number, u"VelMsgBox", kBoxText);
    }
    show(u"VelMain", kTextCardError, u"VelMsgBox", kBoxText);
    for (const WORD number : {kTextRecordStopped, kTextRecordStarted, kTextNoDAB, kTextNoDMB}) {
        show(u"VelDMB", number, u"VelNotice", kBoxText);
    }
    for (const WORD number : {kTextNoChannel, kTextPickChannel, kTextNoSignal, kTextNoSignalShort}) {
        show(u"VelDMB", number, u"VelDMB", kElementInfo);
    }
    for (const WString& label : longestLabels) {
        show(u"VelDMB", kTextStepWaits, u"VelDMB", kElementInfo, label + u" ");
        show(u"VelDMB", kTextTuned, u"VelDMB", kElementInfo, label + u" ");
    }
    for (WORD number = 1000; number <= 1004; ++number) {
        show(u"VelDMBSettings", number, u"VelDMBSettings", kLength);
    }
    for (WORD number = kHomeInvite; number <= kHomeLast; ++number) {
        shown.insert({u"VelMain", number});
        for (const Language language : kLanguages) {
            for (const WString& label : longestLabels) {
                const WString title = u"[CH12] " + label;
                EXPECT_EQ(
                    OverflowIn(u"VelMain", kHomeLine, FillPattern(Text(u"VelMain", number, language), {{u"", title}})),
                    "");
            }
        }
    }
    shown.insert({u"VelMain", kHomeDate});
    for (WORD month = 0; month < 12; ++month) {
        for (WORD weekday = 0; weekday < 7; ++weekday) {
            shown.insert({u"VelMain", static_cast<WORD>(kHomeMonth + month)});
            shown.insert({u"VelMain", static_cast<WORD>(kHomeWeekday + weekday)});
            for (const Language language : kLanguages) {
                const WString monthText = Text(u"VelMain", static_cast<WORD>(kHomeMonth + month), language);
                const WString weekdayText = Text(u"VelMain", static_cast<WORD>(kHomeWeekday + weekday), language);
                EXPECT_EQ(OverflowIn(u"VelMain", kHomeDateElement,
                                     FillPattern(Text(u"VelMain", kHomeDate, language),
                                                 {{u"month", monthText}, {u"day", u"28"}, {u"weekday", weekdayText}})),
                          "");
            }
        }
    }
    for (WORD number = 1; number <= kReasonCount; ++number) {
        show(u"VelReason", number, u"VelDMB", kReason);
        show(u"VelReason", number, u"VelDMB", kRadioReason);
    }
    // Nothing in the tables is left out above.
    std::ifstream in(folder / "texts.txt", std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(in), {}};
    for (const auto& [resource, table] : ReadMessageTexts("texts.txt", content)) {
        for (const auto& [number, text] : table) {
            EXPECT_TRUE(shown.count({ce::FromUtf8(resource), number})) << resource << " " << number;
        }
    }
}

// The small window at its default size: the short texts, beside the buttons where they meet them.
TEST_F(ProductSkin, TextsFitTheSmallWindow) {
    const Skin& skin = Of(u"VelDMB");
    for (const Language language : kLanguages) {
        constexpr int kButtonsWidth = 72, kInfoHeight = 32;
        EXPECT_EQ(Overflow(FontOf(skin, ElementOf(u"VelDMB", kElementInfo)),
                           Text(u"VelDMB", kTextNoSignalShort, language), kSmallWidth - 2 * kButtonsWidth, kInfoHeight,
                           false),
                  "");
        for (const UINT id : {71u, 73u}) {
            const ElementDescription& element = ElementOf(u"VelDMB", id);
            const int width = kSmallWidth + element.small.width - element.small.x;
            for (WORD number = 1; number <= kReasonCount; ++number) {
                const WString text = Text(u"VelReason", number, language);
                EXPECT_EQ(Overflow(FontOf(skin, element), text.substr(0, text.find(u'\n')), width, element.small.height,
                                   true),
                          "");
            }
        }
    }
    for (const ElementDescription& element : skin.description.elements) {
        const auto& small = element.small;
        if (small.width != 0) {
            const LONG left = small.x < 0 ? kSmallWidth + small.x : small.x;
            const LONG top = small.y < 0 ? kSmallHeight + small.y : small.y;
            const LONG right = small.width < 0 ? kSmallWidth + small.width : left + small.width;
            EXPECT_TRUE(left >= 0 && top >= 0 && right > left && right <= kSmallWidth &&
                        top + small.height <= kSmallHeight)
                << element.id;
        }
    }
}

// The counts of a scan stand right of their icons, also when they have two digits.
TEST_F(ProductSkin, ScanCountsStandBesideTheirIcons) {
    const ElementDescription& text = ElementOf(u"VelDMB", kElementScanText);
    const FontSpec font = FontOf(Of(u"VelDMB"), text);
    const auto width = [&](WStringView part) { return static_cast<LONG>(gdi.text.Measure(font, part).cx); };
    constexpr LONG kTelevisionEnds = 94, kRadioBegins = 232, kRadioEnds = 268; // in the box
    for (const WString& count : {WString(u"0"), WString(u"88")}) {
        const WString gap = u"                       ";
        const LONG whole = width(u"  " + count + gap + count + u" ");
        const LONG left = (text.rect.right - text.rect.left - whole) / 2;
        EXPECT_GT(left + width(u"  "), kTelevisionEnds);
        EXPECT_LT(left + width(u"  " + count), kRadioBegins);
        EXPECT_GT(left + width(u"  " + count + gap), kRadioEnds);
    }
}

TEST_F(ProductSkin, EveryTextIsThereInBothLanguages) {
    const auto isAscii = [](const WString& text) {
        return std::all_of(text.begin(), text.end(), [](WCHAR c) { return c < 0x80; });
    };
    const auto hasHangul = [](const WString& text) {
        return std::any_of(text.begin(), text.end(), [](WCHAR c) { return c >= 0xAC00 && c <= 0xD7A3; });
    };
    std::set<std::pair<WString, WORD>> needed;
    for (const WORD number : {kTextNoChannels, kTextNoChannel, kTextStepWaits, kTextPickChannel, kTextNoSignal,
                              kTextRecordStopped, kTextNoSpace, kTextStopRecording, kTextNoSignalShort,
                              kTextRecordStarted, kTextNoDAB, kTextNoDMB, kTextTuned}) {
        needed.insert({u"VelDMB", number});
    }
    for (WORD number = 1000; number <= 1004; ++number) {
        needed.insert({u"VelDMBSettings", number});
    }
    needed.insert({u"VelMain", kTextCardError});
    for (WORD number = kHomeInvite; number <= kHomeLast; ++number) {
        needed.insert({u"VelMain", number});
    }
    for (WORD number = kHomeMonth; number < kHomeMonth + 12; ++number) {
        needed.insert({u"VelMain", number});
    }
    for (WORD number = kHomeWeekday; number < kHomeWeekday + 7; ++number) {
        needed.insert({u"VelMain", number});
    }
    for (WORD number = 1; number <= kReasonCount; ++number) {
        needed.insert({u"VelReason", number});
    }
    for (const auto& [resource, number] : needed) {
        const WString korean = Text(resource, number, Language::Korean);
        const WString english = Text(resource, number, Language::English);
        EXPECT_TRUE(hasHangul(korean)) << ce::ToUtf8(resource) << " " << number;
        EXPECT_FALSE(english.empty()) << ce::ToUtf8(resource) << " " << number;
        EXPECT_TRUE(isAscii(english)) << ce::ToUtf8(english);
    }
    for (const WString& resource : kResources) {
        for (const ElementDescription& element : Of(resource).description.elements) {
            for (const LocalText& caption : element.captions) {
                const WString korean = ce::FromUtf8(caption[0]), english = ce::FromUtf8(caption[1]);
                EXPECT_EQ(korean.empty(), english.empty()) << element.id;
                EXPECT_TRUE(isAscii(english)) << ce::ToUtf8(english);
                // A block's number and "TV" are the same in every language.
                constexpr std::size_t kLongestSign = 3;
                EXPECT_TRUE(hasHangul(korean) || (isAscii(korean) && korean.size() <= kLongestSign)) << caption[0];
            }
        }
    }
}

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

// Every picture is there twice, the second time with two pixels for one.
TEST_F(ProductSkin, EveryPictureHasAFineOne) {
    int pictures = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder / "images")) {
        const std::string name = entry.path().stem().string();
        if (name.find('@') != std::string::npos) {
            continue;
        }
        const auto coarse = Surface::ReadPng(entry.path());
        const auto fine = Surface::ReadPng(folder / "images" / (name + "@2x.png"), 2);
        ASSERT_TRUE(coarse && fine) << name;
        EXPECT_EQ(coarse->Width(), fine->Width()) << name;
        EXPECT_EQ(coarse->Height(), fine->Height()) << name;
        ++pictures;
    }
    EXPECT_GT(pictures, 60);
}

// The seven pictures of the antenna are seven, and none looks like its neighbour.
TEST_F(ProductSkin, AntennaHasSevenPictures) {
    const ElementDescription& antenna = ElementOf(u"VelDMB", kElementAntenna);
    ASSERT_EQ(antenna.imageSet.size(), 7u);
    for (std::size_t i = 1; i < antenna.imageSet.size(); ++i) {
        const Surface& left = library.Picture(antenna.imageSet[i - 1])->At(1);
        const Surface& right = library.Picture(antenna.imageSet[i])->At(1);
        ASSERT_EQ(left.Width(), right.Width());
        int differs = 0;
        for (int y = 0; y < left.Height(); ++y) {
            for (int x = 0; x < left.Width(); ++x) {
                differs += left.PixelAt(x, y) != right.PixelAt(x, y) ? 1 : 0;
            }
        }
        EXPECT_GT(differs, 10) << i;
    }
}

} // namespace shell
