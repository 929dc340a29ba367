#include "host/wire/EtiFrame.h"

#include <gtest/gtest.h>

namespace wire {
namespace {

// Header and first FIB of a frame made by another multiplexer: four streams.
const ByteVector kForeignHeader = {0xFF, 0x07, 0x3A, 0xB6, 0x01, 0x84, 0x29, 0x85, 0x04, 0x00, 0x48, 0x48, 0x08, 0x8C,
                                   0x88, 0x30, 0x24, 0xEC, 0x4C, 0x24, 0xFD, 0x26, 0x94, 0x18, 0x81, 0xA2, 0x17, 0x1E};

ByteVector ForeignFrame() {
    ByteVector bytes = kForeignHeader;
    bytes.resize(kEtiFrameBytes, 0x55);
    return bytes;
}

EtiFrameContent TwoStreams() {
    EtiFrameContent content;
    content.frameCount = 7;
    content.framePhase = 7;
    content.fic = ByteVector(96, 0x11);
    content.streams.push_back({{5, 10, 0x22, 0}, ByteVector(24, 0xAA)});
    content.streams.push_back({{2, 100, 0x12, 0}, ByteVector(48, 0xBB)});
    return content;
}

TEST(EtiFrame, ReadsAForeignHeader) {
    const ByteVector bytes = ForeignFrame();
    const auto frame = EtiFrame::Parse(bytes);
    ASSERT_TRUE(frame);
    EXPECT_TRUE(frame->HeaderCrcOk());
    EXPECT_FALSE(frame->MstCrcOk());
    EXPECT_EQ(frame->FrameCount(), 1);
    EXPECT_TRUE(frame->HasFic());
    EXPECT_EQ(frame->Mode(), 1);
    EXPECT_EQ(frame->FramePhase(), 1);
    ASSERT_EQ(frame->StreamCount(), 4u);
    EXPECT_EQ(frame->Stream(0), (EtiStream{1, 0, 0x12, 72}));
    EXPECT_EQ(frame->Stream(0).BitRate(), 192);
    EXPECT_EQ(frame->Stream(3), (EtiStream{63, 294, 0x25, 24}));
    // FL counts stream table, end of header and main stream in words; FC, EOF, TIST and ERR + FSYNC are 16 bytes more.
    EXPECT_EQ(frame->Length(), static_cast<std::size_t>(frame->ClaimedLength()) * 4 + 16);
    EXPECT_EQ(EtiFrame::LengthFromHeader(bytes), frame->Length());
}

TEST(EtiFrame, WritesWhatItReads) {
    const ByteVector bytes = WriteEtiFrame(TwoStreams());
    ASSERT_EQ(bytes.size(), kEtiFrameBytes);
    EXPECT_EQ(bytes.back(), 0x55);
    const auto frame = EtiFrame::Parse(bytes);
    ASSERT_TRUE(frame);
    EXPECT_TRUE(frame->HeaderCrcOk());
    EXPECT_TRUE(frame->MstCrcOk());
    EXPECT_EQ(frame->Err(), 0xFF);
    EXPECT_EQ(frame->TimeStamp(), 0xFFFFFFFFu);
    EXPECT_EQ(frame->Fic().size(), 96u);
}

TEST(EtiFrame, FindsSubChannelsInTheOrderOfTheTableNotOfTheirNumbers) {
    const ByteVector bytes = WriteEtiFrame(TwoStreams());
    const auto frame = EtiFrame::Parse(bytes);
    ASSERT_TRUE(frame);
    ASSERT_EQ(frame->SubChannel(5).size(), 24u);
    EXPECT_EQ(frame->SubChannel(5)[0], 0xAA);
    ASSERT_EQ(frame->SubChannel(2).size(), 48u);
    EXPECT_EQ(frame->SubChannel(2)[47], 0xBB);
    EXPECT_TRUE(frame->SubChannel(9).empty());
}

TEST(EtiFrame, TheSynchronisationWordAlternatesWithTheFrameCount) {
    EtiFrameContent content = TwoStreams();
    EXPECT_EQ(Get24(WriteEtiFrame(content), 1), kEtiSyncOdd);
    content.frameCount = 8;
    EXPECT_EQ(Get24(WriteEtiFrame(content), 1), kEtiSyncEven);
}

TEST(EtiFrame, AFrameWithoutFicHasItsStreamsRightAfterTheHeader) {
    EtiFrameContent content = TwoStreams();
    content.fic.clear();
    const ByteVector bytes = WriteEtiFrame(content);
    const auto frame = EtiFrame::Parse(bytes);
    ASSERT_TRUE(frame);
    EXPECT_FALSE(frame->HasFic());
    EXPECT_TRUE(frame->Fic().empty());
    EXPECT_EQ(frame->SubChannel(5)[0], 0xAA);
}

TEST(EtiFrame, ModeThreeHasFourFibs) {
    EtiFrameContent content = TwoStreams();
    content.mode = 3;
    content.fic.resize(128, 0x22);
    const ByteVector bytes = WriteEtiFrame(content);
    const auto frame = EtiFrame::Parse(bytes);
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->Fic().size(), 128u);
    EXPECT_TRUE(frame->MstCrcOk());
}

TEST(EtiFrame, RefusesATableThatIsLongerThanAFrame) {
    ByteVector bytes = ForeignFrame();
    bytes[11] = 0xFF; // STL of the first stream
    bytes[10] |= 0x03;
    EXPECT_FALSE(EtiFrame::Parse(bytes));
    EXPECT_EQ(EtiFrame::LengthFromHeader(bytes), 0u);
    bytes = ForeignFrame();
    bytes[5] = 0xFF; // 127 streams
    EXPECT_FALSE(EtiFrame::Parse(bytes));
}

TEST(EtiFrame, RefusesCutFramesAndWrongSynchronisation) {
    ByteVector bytes = ForeignFrame();
    EXPECT_FALSE(EtiFrame::Parse(ByteSpan(bytes).first(20)));
    EXPECT_FALSE(EtiFrame::Parse(ByteSpan(bytes).first(EtiFrame::LengthFromHeader(bytes) - 1)));
    bytes[2] ^= 1;
    EXPECT_FALSE(EtiFrame::Parse(bytes));
}

TEST(EtiFrame, WhatDoesNotFitIsNotWritten) {
    EtiFrameContent content = TwoStreams();
    content.streams[0].data.resize(8000);
    EXPECT_TRUE(WriteEtiFrame(content).empty());
}

} // namespace
} // namespace wire
