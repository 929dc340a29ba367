// Texts: each is there in both languages and has room where it is shown.
#include "host/shell/core/HomeText.h"
#include "host/shell/core/Reason.h"
#include "host/shell/skin/MessageTexts.h"
#include "tests/shell/ProductSkin.h"
#include "view/DMBViewIds.h"

#include <fstream>
#include <iterator>
#include <set>

namespace shell {

namespace {

constexpr LONG kSmallWidth = 320, kSmallHeight = 240;

} // namespace

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

} // namespace shell
