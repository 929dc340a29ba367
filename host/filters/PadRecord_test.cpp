#include "host/filters/PadRecord.h"

#include "host/ce/Text.h"

#include <gtest/gtest.h>

using namespace filters;

TEST(PadRecord, KoreanGoesIntoTheCodePage) {
    const PadLabel label = MakePadLabel("\xEA\xB0\x80 A"); // U+AC00, blank, A
    EXPECT_EQ(label.charset, 0u);
    EXPECT_EQ(label.bytes, (std::vector<std::uint8_t>{0xB0, 0xA1, ' ', 'A'}));
}

TEST(PadRecord, WhatThePageLacksGoesIntoWideCharacters) {
    const PadLabel label = MakePadLabel("\xC3\x85x"); // U+00C5
    EXPECT_EQ(label.charset, PadInfo::kCharsetUcs2);
    EXPECT_EQ(label.bytes, (std::vector<std::uint8_t>{0x00, 0xC5, 0x00, 'x'}));
}

TEST(PadRecord, WideTextIsCutAt96Characters) {
    std::string text;
    for (int i = 0; i < 120; ++i)
        text += "\xC3\x85";
    const PadLabel label = MakePadLabel(text);
    EXPECT_EQ(label.charset, PadInfo::kCharsetUcs2);
    EXPECT_EQ(label.bytes.size(), 192u);
}

TEST(PadRecord, NarrowTextIsCutBetweenCharacters) {
    std::string text = "x";
    for (int i = 0; i < 120; ++i)
        text += "\xEA\xB0\x80";
    const PadLabel label = MakePadLabel(text);
    EXPECT_EQ(label.charset, 0u);
    EXPECT_EQ(label.bytes.size(), 191u);
}

TEST(PadRecord, FillsTheFieldsAtTheirPlaces) {
    auto record = std::make_unique<PadInfo>();
    MakePadLabel("abc").Put(*record);
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(record.get());
    EXPECT_EQ(bytes[280636], 'a');
    EXPECT_EQ(bytes[280828], 3);
    EXPECT_EQ(bytes[976], 0);
    MakePadLabel("\xC3\x85").Put(*record);
    EXPECT_EQ(bytes[976], 4);
    EXPECT_EQ(bytes[280636], 0x00);
    EXPECT_EQ(bytes[280637], 0xC5);
    EXPECT_EQ(bytes[280638], 0);
}
