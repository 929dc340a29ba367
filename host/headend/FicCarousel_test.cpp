#include "host/headend/FicCarousel.h"

#include <map>
#include <set>

#include <gtest/gtest.h>

#include "host/wire/Fib.h"
#include "host/wire/Fig1.h"

namespace {

using wire::ByteVector;

headend::Description Load(const std::string& services) {
    return headend::ParseDescription(R"({"clock": "2026-05-05T19:29:50", "ensembles": [{"block": "8A", "id": "0xE1B0",
        "label": {"text": "TEST TV 12A"}, "firstFrame": 4990, "services": [)" +
                                         services + "]}]}",
                                     "x", {});
}

const std::string kServices = R"(
    {"kind": "television", "id": "0xF1E00401", "label": {"text": "TV ONE"}, "subChannel": 1, "bitRate": 544},
    {"kind": "radio", "id": "0xE203", "label": {"text": "한국방송 라디오", "coding": "korean", "extended": "한국방송 라디오"},
     "subChannel": 9, "bitRate": 96, "protection": "UEP 4", "programmeType": 10, "announcements": 3, "padBytes": 40,
     "sound": {"channels": 1}, "slides": [{}]},
    {"kind": "dab+", "id": "0xE204", "label": {"text": "PLUS"}, "subChannel": 3, "bitRate": 64},
    {"kind": "packet data", "id": "0xE1E00402", "label": {"text": "DATA"}, "subChannel": 4, "bitRate": 32, "dataType": 60})";

// Type and data field of a group.
using Group = std::vector<int>;

// All groups with the frames they came in.
std::map<Group, std::vector<int>> Play(const headend::Description& description, int frames) {
    const auto& ensemble = description.ensembles[0];
    const auto configurations = headend::MakeConfigurations(ensemble);
    headend::FicCarousel fic(ensemble, configurations, description.clock);
    std::map<Group, std::vector<int>> groups;
    for (int frame = 0; frame < frames; ++frame) {
        const ByteVector blocks = fic.Next();
        EXPECT_EQ(blocks.size(), 96u);
        for (std::size_t at = 0; at < blocks.size(); at += 32) {
            const auto fib = wire::ByteSpan(blocks).subspan(at, 32);
            EXPECT_TRUE(wire::FibCrcOk(fib));
            wire::ForEachFig(fib, [&](const wire::Fig& fig) {
                Group key = {fig.type};
                key.insert(key.end(), fig.data.begin(), fig.data.end());
                groups[key].push_back(frame);
            });
        }
    }
    return groups;
}

int LargestGap(const std::vector<int>& frames, int end) {
    int gap = frames.front();
    for (std::size_t i = 1; i < frames.size(); ++i)
        gap = std::max(gap, frames[i] - frames[i - 1]);
    return std::max(gap, end - frames.back());
}

TEST(FicCarousel, EveryGroupKeepsItsRepetitionRate) {
    const auto groups = Play(Load(kServices), 500);
    int labels = 0;
    for (const auto& [key, frames] : groups) {
        const int type = key[0];
        const int extension = type == 0 ? key[1] & 0x1F : key[1] & 7;
        if (type == 0 && (extension == 1 || extension == 2)) {
            EXPECT_LE(LargestGap(frames, 500), 6) << "FIG 0/" << extension;
        } else if (type == 1 || (type == 0 && extension != 0 && extension != 10)) {
            EXPECT_LE(LargestGap(frames, 500), 45) << "FIG " << type << "/" << extension;
        }
        labels += type == 1 ? 1 : 0;
    }
    EXPECT_EQ(labels, 5) << "ensemble and four services";
}

TEST(FicCarousel, GroupsByteForByte) {
    const auto groups = Play(Load(kServices), 100);
    const auto sent = [&](const Group& group) { return groups.count(group) != 0; };
    // FIG 0/2 with a television service and a packet service: a 32-bit identifier, TMId 01 DSCTy 24, TMId 11.
    EXPECT_TRUE(sent({0, 0x22, 0xF1, 0xE0, 0x04, 0x01, 0x01, 0x58, 0x06, 0xE1, 0xE0, 0x04, 0x02, 0x01, 0xC0, 0x12}));
    // FIG 0/2 with layer II sound in sub-channel 9 and DAB+ in sub-channel 3.
    EXPECT_TRUE(sent({0, 0x02, 0xE2, 0x03, 0x01, 0x00, 0x26, 0xE2, 0x04, 0x01, 0x3F, 0x0E}));
    // FIG 0/3: component 4, data groups, DSCTy 60, sub-channel 4, address 1.
    EXPECT_TRUE(sent({0, 0x03, 0x00, 0x40, 0x3C, 0x10, 0x01}));
    // FIG 0/13: a slideshow in X-PAD type 12, MOT.
    EXPECT_TRUE(sent({0, 0x0D, 0xE2, 0x03, 0x01, 0x00, 0x42, 0x0C, 0x3C}));
    // FIG 0/9: +9 h, ECC F1.
    EXPECT_TRUE(sent({0, 0x09, 0x12, 0xF1, 0x01}));
    // FIG 1/5: the label of the television service.
    EXPECT_TRUE(sent({1,   0x05, 0xF1, 0xE0, 0x04, 0x01, 'T', 'V', ' ', 'O', 'N',  'E',
                      ' ', ' ',  ' ',  ' ',  ' ',  ' ',  ' ', ' ', ' ', ' ', 0xFC, 0x00}));
    // FIG 1/1: KS X 1001 bytes under character set 0.
    EXPECT_TRUE(sent({1,    0x01, 0xE2, 0x03, 0xC7, 0xD1, 0xB1, 0xB9, 0xB9, 0xE6, 0xBC,
                      0xDB, 0x20, 0xB6, 0xF3, 0xB5, 0xF0, 0xBF, 0xC0, 0x20, 0xFF, 0x00}));
    // FIG 0/0 at CIF count 4992, high part 19, low part 242; and after the wrap.
    EXPECT_TRUE(sent({0, 0x00, 0xE1, 0xB0, 19, 242}));
    EXPECT_TRUE(sent({0, 0x00, 0xE1, 0xB0, 0, 4}));
    // FIG 0/10: 10:29:50 UTC on modified Julian date 61165.
    EXPECT_TRUE(sent({0, 0x0A, 0x3B, 0xBB, 0x5A, 0x9D, 0xC8, 0x00}));
}

TEST(FicCarousel, ReconfigurationIsAnnouncedAndThenHolds) {
    const auto description = Load(R"({"kind": "radio", "id": "0xE201", "label": {"text": "OLD"}, "subChannel": 1,
        "bitRate": 128, "changes": [{"at": 7.2, "subChannel": 5, "label": {"text": "NEW"}}]})");
    const auto groups = Play(description, 400);
    const Group now = {0, 0x02, 0xE2, 0x01, 0x01, 0x00, 0x06};
    const Group announced = {0, 0x82, 0xE2, 0x01, 0x01, 0x00, 0x16};
    const Group then = {0, 0x02, 0xE2, 0x01, 0x01, 0x00, 0x16};
    EXPECT_LT(groups.at(now).back(), 300);
    EXPECT_GE(groups.at(announced).front(), 50);
    EXPECT_LT(groups.at(announced).back(), 300);
    EXPECT_GE(groups.at(then).front(), 300);
    bool flagged = false;
    for (const auto& [key, frames] : groups) {
        // Change flags 11 and the low part of the count at which it happens: (4990 + 300) mod 250.
        if (key[0] == 0 && key[1] == 0 && (key[4] & 0xC0) == 0xC0) {
            flagged = true;
            EXPECT_EQ(key.at(6), 40);
        }
    }
    EXPECT_TRUE(flagged);
}

} // namespace
