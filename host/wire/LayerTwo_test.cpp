#include "host/wire/LayerTwo.h"

#include <gtest/gtest.h>

namespace wire {
namespace {

// The beginning of a stereo frame of 192 kbit/s from a foreign recording, with zeros behind what the check sum covers.
ByteVector ForeignFrame() {
    ByteVector frame = {0xFF, 0xFC, 0xA4, 0x00, 0x87, 0xB7, 0xDD, 0x39, 0x30, 0x40, 0x43, 0x44, 0x43, 0x33,
                        0x32, 0x22, 0x32, 0x45, 0x12, 0x40, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                        0xAA, 0xEA, 0xAA, 0xA2, 0xEA, 0xAE, 0xA1, 0xCD, 0x84, 0x7D, 0x72, 0xD3};
    frame.resize(576, 0);
    return frame;
}

TEST(LayerTwo, HeaderOfAFullRateFrame) {
    const auto header = ParseLayerTwoHeader(ForeignFrame());
    ASSERT_TRUE(header);
    EXPECT_FALSE(header->halfRate);
    EXPECT_TRUE(header->hasCrc);
    EXPECT_EQ(header->bitRate, 192);
    EXPECT_EQ(header->sampleRate, 48000);
    EXPECT_EQ(header->Channels(), 2);
    EXPECT_EQ(header->FrameBytes(), 576u);
    EXPECT_EQ(header->LogicalFrames(), 1);
    EXPECT_EQ(header->ScfCrcBytes(), 4u);
}

TEST(LayerTwo, CheckSumOfAForeignFrame) {
    ByteVector frame = ForeignFrame();
    const auto header = ParseLayerTwoHeader(frame);
    ASSERT_TRUE(header);
    EXPECT_TRUE(LayerTwoCrcOk(*header, frame));
    frame[8] ^= 0x10;
    EXPECT_FALSE(LayerTwoCrcOk(*header, frame));
}

TEST(LayerTwo, HalfRateFramesTakeTwoLogicalFrames) {
    const auto header = ParseLayerTwoHeader(ByteVector{0xFF, 0xF4, 0x84, 0xC0});
    ASSERT_TRUE(header);
    EXPECT_TRUE(header->halfRate);
    EXPECT_EQ(header->bitRate, 64);
    EXPECT_EQ(header->sampleRate, 24000);
    EXPECT_EQ(header->FrameBytes(), 384u);
    EXPECT_EQ(header->LogicalFrames(), 2);
    EXPECT_EQ(header->ScfCrcBytes(), 4u);
}

TEST(LayerTwo, TwoBytesOfScfCrcBelow56KilobitAChannel) {
    EXPECT_EQ(ParseLayerTwoHeader(ByteVector{0xFF, 0xFC, 0x24, 0xC0})->ScfCrcBytes(), 2u); // 48 mono
    EXPECT_EQ(ParseLayerTwoHeader(ByteVector{0xFF, 0xFC, 0x34, 0xC0})->ScfCrcBytes(), 4u); // 56 mono
    EXPECT_EQ(ParseLayerTwoHeader(ByteVector{0xFF, 0xFC, 0x64, 0x00})->ScfCrcBytes(), 2u); // 96 stereo
    EXPECT_EQ(ParseLayerTwoHeader(ByteVector{0xFF, 0xFC, 0x74, 0x00})->ScfCrcBytes(), 4u); // 112 stereo
}

TEST(LayerTwo, WhatDabDoesNotKnowIsNoHeader) {
    EXPECT_FALSE(ParseLayerTwoHeader(ByteVector{0xFF, 0xFC, 0xA0, 0x00})); // 44.1 kHz
    EXPECT_FALSE(ParseLayerTwoHeader(ByteVector{0xFF, 0xFA, 0xA4, 0x00})); // layer III
    EXPECT_FALSE(ParseLayerTwoHeader(ByteVector{0xFF, 0xFC, 0x04, 0x00})); // free format
    EXPECT_FALSE(ParseLayerTwoHeader(ByteVector{0xFF, 0xFC, 0xF4, 0x00}));
    EXPECT_FALSE(ParseLayerTwoHeader(ByteVector{0xFF, 0xFC}));
}

} // namespace
} // namespace wire
