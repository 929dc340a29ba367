#include "host/wire/PsiSection.h"

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<std::uint8_t>;

// Sections of a foreign muxer's television stream (TS 102 428): one programme, four SL streams.
const Bytes kPat = {0x00, 0xB0, 0x0D, 0x00, 0x01, 0xC1, 0x00, 0x00, 0x00, 0x01, 0xE1, 0x00, 0xE8, 0xF9, 0x5E, 0x7D};
const Bytes kScene = {0x04, 0xF0, 0x1E, 0x00, 0x02, 0xC1, 0x00, 0x00, 0xC4, 0x00, 0x01,
                      0xEC, 0x30, 0xC0, 0x10, 0x12, 0x81, 0x30, 0x2A, 0x05, 0x72, 0x61,
                      0x04, 0x88, 0x50, 0x45, 0x05, 0x3F, 0x00, 0x63, 0x81, 0xEC, 0xCD};

TEST(PsiSection, ProgramAssociation) {
    const auto section = wire::PsiSection::Parse(kPat);
    ASSERT_TRUE(section);
    EXPECT_EQ(section->extension, 1);
    EXPECT_EQ(section->version, 0);
    EXPECT_TRUE(section->current);
    const auto pat = wire::Pat::Parse(*section);
    ASSERT_TRUE(pat);
    EXPECT_EQ(pat->programs, (std::vector<wire::Pat::Program>{{1, 0x100}}));

    const Bytes body = pat->Write();
    wire::PsiSection again = *section;
    again.body = body;
    EXPECT_EQ(again.Write(), kPat);
}

TEST(PsiSection, SceneSectionsSetThePrivateIndicator) {
    const auto section = wire::PsiSection::Parse(kScene);
    ASSERT_TRUE(section);
    EXPECT_EQ(section->tableId, wire::kTableIdScene);
    EXPECT_EQ(section->extension, 2) << "the ES_ID";
    EXPECT_EQ(section->body.size(), 21u);
    EXPECT_EQ(section->Write(), kScene);
}

TEST(PsiSection, ProgramMap) {
    const Bytes body = {0xE1, 0x14, 0xF0, 0x03, 0x1D, 0x01, 0x77, // PCR PID 0x114, one descriptor
                        0x13, 0xE1, 0x12, 0xF0, 0x04, 0x1E, 0x02, 0x00, 0x02, 0x12, 0xE1, 0x13, 0xF0, 0x00};
    const wire::PsiSection section{.tableId = wire::kTableIdPmt, .extension = 1, .body = body};
    const auto pmt = wire::Pmt::Parse(section);
    ASSERT_TRUE(pmt);
    EXPECT_EQ(pmt->program, 1);
    EXPECT_EQ(pmt->pcrPid, 0x114);
    EXPECT_EQ(pmt->descriptors, (std::vector<wire::PsiDescriptor>{{0x1D, {0x77}}}));
    ASSERT_EQ(pmt->streams.size(), 2u);
    EXPECT_EQ(pmt->streams[0], (wire::Pmt::Stream{wire::kStreamTypeSlSections, 0x112, {{0x1E, {0x00, 0x02}}}}));
    EXPECT_EQ(pmt->streams[1], (wire::Pmt::Stream{wire::kStreamTypeSlPes, 0x113, {}}));
    EXPECT_EQ(pmt->Write(), body);
}

TEST(PsiSection, RefusesDamage) {
    Bytes wrongBit = kPat;
    wrongBit[9] ^= 1;
    EXPECT_FALSE(wire::PsiSection::Parse(wrongBit)) << "check sum";
    EXPECT_FALSE(wire::PsiSection::Parse(std::span(kPat).first(15))) << "cut off";
    EXPECT_FALSE(wire::PsiSection::Parse({}));
    Bytes shortSyntax = kPat;
    shortSyntax[1] &= 0x7F;
    EXPECT_FALSE(wire::PsiSection::Parse(shortSyntax));
    EXPECT_EQ(wire::PsiSection::SizeOf(kPat), 16u);
    EXPECT_EQ(wire::PsiSection::SizeOf(std::span(kPat).first(2)), std::nullopt);
}

TEST(PsiSection, RefusesLengthsThatRunOver) {
    const auto map = [](const Bytes& body) {
        return wire::Pmt::Parse({.tableId = wire::kTableIdPmt, .body = body}).has_value();
    };
    EXPECT_FALSE(map({0xE1, 0x14, 0xF0}));
    EXPECT_FALSE(map({0xE1, 0x14, 0xF0, 0x04, 0x1D, 0x02, 0x00}));
    EXPECT_FALSE(map({0xE1, 0x14, 0xF0, 0x02, 0x1D, 0x02})) << "descriptor beyond its loop";
    EXPECT_FALSE(map({0xE1, 0x14, 0xF0, 0x00, 0x13, 0xE1, 0x12, 0xF0}));
    EXPECT_FALSE(map({0xE1, 0x14, 0xF0, 0x00, 0x13, 0xE1, 0x12, 0xF0, 0x01}));
    EXPECT_TRUE(map({0xE1, 0x14, 0xF0, 0x00}));
}

} // namespace
