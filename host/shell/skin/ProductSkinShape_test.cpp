// Places and sizes: what can be pressed, what stands beside what.
#include "tests/shell/ProductSkin.h"
#include "view/DMBViewIds.h"

namespace shell {

namespace {

constexpr int kLeastTarget = 60; // pixels

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

// Every picture is there twice, the second time with two pixels for one.
TEST_F(ProductSkin, EveryPictureHasAFineOne) {
    int pictures = 0;
    const auto images = std::filesystem::path(testing_support::BinaryDir()) / "skin/images";
    for (const auto& entry : std::filesystem::directory_iterator(images)) {
        const std::string name = entry.path().stem().string();
        if (name.find('@') != std::string::npos) {
            continue;
        }
        const auto coarse = Surface::ReadPng(entry.path());
        const auto fine = Surface::ReadPng(images / (name + "@2x.png"), 2);
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
