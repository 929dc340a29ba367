#include "host/medmb/EtiFramer.h"

#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "host/medmb/TestEnsemble.h"

namespace medmb {
namespace {

using test::TwoServices;
using wire::ByteVector;

constexpr int kFrames = 12;

std::vector<ByteVector> Frames() {
    std::vector<ByteVector> frames;
    auto ensemble = TwoServices();
    ensemble.subs[0].bytes = [](int frame) {
        std::mt19937 random(static_cast<unsigned>(frame));
        ByteVector bytes(384);
        for (std::uint8_t& byte : bytes)
            byte = static_cast<std::uint8_t>(random());
        return bytes;
    };
    for (int i = 0; i < kFrames; ++i)
        frames.push_back(ensemble.Frame(i));
    return frames;
}

// Frame counts in the order in which they come out.
std::vector<int> CountsOf(const ByteVector& stream, std::size_t portion = 1 << 20,
                          EtiFramer::Counters* counters = nullptr) {
    EtiFramer framer;
    std::vector<int> counts;
    const auto drain = [&] {
        while (const auto frame = framer.Next())
            counts.push_back(frame->FrameCount());
    };
    for (std::size_t at = 0; at < stream.size(); at += portion) {
        framer.Push(wire::ByteSpan(stream).subspan(at, std::min(portion, stream.size() - at)));
        drain();
    }
    framer.Finish();
    drain();
    if (counters != nullptr)
        *counters = framer.Count();
    return counts;
}

std::vector<int> Range(int from, int to) {
    std::vector<int> range;
    for (int i = from; i < to; ++i)
        range.push_back(i);
    return range;
}

ByteVector Join(const std::vector<ByteVector>& parts) {
    ByteVector whole;
    for (const ByteVector& part : parts)
        wire::AppendBytes(whole, part);
    return whole;
}

ByteVector WithoutPadding(const ByteVector& frame) {
    const auto bytes = wire::EtiFrame::Parse(frame)->Bytes();
    return {bytes.begin(), bytes.end()};
}

TEST(EtiFramer, RawFramesInPortionsOfAnySize) {
    const ByteVector stream = Join(Frames());
    for (const std::size_t portion : {1u, 7u, 1000u, 6144u, 100000u}) {
        EtiFramer::Counters counters;
        EXPECT_EQ(CountsOf(stream, portion, &counters), Range(0, kFrames)) << portion;
        EXPECT_EQ(counters.bytesSkipped, 0u);
    }
}

TEST(EtiFramer, LeadingJunkAndAStartInTheMiddleOfAFrame) {
    ByteVector stream(1001, 0x07);
    wire::AppendBytes(stream, Join(Frames()));
    EXPECT_EQ(CountsOf(stream), Range(0, kFrames));
    const ByteVector whole = Join(Frames());
    EXPECT_EQ(CountsOf(ByteVector(whole.begin() + 3000, whole.end())), Range(1, kFrames));
    EXPECT_EQ(CountsOf(ByteVector(whole.begin() + 1, whole.end())), Range(1, kFrames));
}

TEST(EtiFramer, ForeignBytesBetweenFrames) {
    ByteVector stream;
    for (const ByteVector& frame : Frames()) {
        stream.resize(stream.size() + 22, 0xFF);
        wire::AppendBytes(stream, frame);
    }
    EtiFramer::Counters counters;
    EXPECT_EQ(CountsOf(stream, 500, &counters), Range(0, kFrames));
    EXPECT_GT(counters.bytesSkipped, 0u);
}

TEST(EtiFramer, StreamedAndFramedFiles) {
    ByteVector streamed;
    for (const ByteVector& frame : Frames()) {
        const ByteVector bare = WithoutPadding(frame);
        streamed.push_back(static_cast<std::uint8_t>(bare.size()));
        streamed.push_back(static_cast<std::uint8_t>(bare.size() >> 8));
        wire::AppendBytes(streamed, bare);
    }
    EtiFramer::Counters counters;
    EXPECT_EQ(CountsOf(streamed, 777, &counters), Range(0, kFrames));
    EXPECT_EQ(counters.bytesSkipped, 0u);
    ByteVector framed = {kFrames, 0, 0, 0};
    wire::AppendBytes(framed, streamed);
    EXPECT_EQ(CountsOf(framed, 777, &counters), Range(0, kFrames));
    EXPECT_EQ(counters.bytesSkipped, 0u);
}

TEST(EtiFramer, StreamedFilesWithWrongSumsThroughout) {
    for (const std::size_t wrongByte : {200u, 6u}) { // main stream, header
        for (const bool lengthWord : {true, false}) {
            ByteVector streamed;
            for (ByteVector frame : Frames()) {
                frame[wrongByte] ^= 0x20;
                const ByteVector bare = WithoutPadding(frame);
                if (lengthWord)
                    wire::AppendBytes(streamed, ByteVector{static_cast<std::uint8_t>(bare.size()),
                                                           static_cast<std::uint8_t>(bare.size() >> 8)});
                wire::AppendBytes(streamed, bare);
            }
            for (const std::size_t portion : {777u, 100000u}) {
                EtiFramer::Counters counters;
                const std::vector<int> counts = CountsOf(streamed, portion, &counters);
                EXPECT_EQ(counters.truncated, 0u);
                // Nothing behind the last frame tells that its header is one.
                EXPECT_EQ(counts, Range(0, wrongByte == 6 ? kFrames - 1 : kFrames)) << lengthWord << ' ' << portion;
            }
        }
    }
}

TEST(EtiFramer, BytesLostInsideAFrameCostThatFrameOnly) {
    std::vector<ByteVector> frames = Frames();
    frames[4].erase(frames[4].begin() + 1000, frames[4].begin() + 1100);
    std::vector<int> expected = Range(0, kFrames);
    expected.erase(expected.begin() + 4);
    for (const std::size_t portion : {100u, 6144u, 100000u}) {
        EtiFramer::Counters counters;
        EXPECT_EQ(CountsOf(Join(frames), portion, &counters), expected) << portion;
    }
    // More than the padding: the next frame begins inside what should have been this one.
    frames = Frames();
    frames[4].resize(1500);
    EtiFramer::Counters counters;
    EXPECT_EQ(CountsOf(Join(frames), 100000, &counters), expected);
    EXPECT_EQ(counters.truncated, 1u);
}

TEST(EtiFramer, BytesLostInThePaddingCostNothing) {
    std::vector<ByteVector> frames = Frames();
    frames[4].resize(6000);
    EXPECT_EQ(CountsOf(Join(frames)), Range(0, kFrames));
}

TEST(EtiFramer, AWrongMainStreamSumAloneIsNoReason) {
    std::vector<ByteVector> frames = Frames();
    for (ByteVector& frame : frames)
        frame[200] ^= 1;
    EtiFramer::Counters counters;
    EXPECT_EQ(CountsOf(Join(frames), 6144, &counters), Range(0, kFrames));
    EXPECT_EQ(counters.mstBad, static_cast<std::uint64_t>(kFrames));
}

TEST(EtiFramer, ADamagedHeaderInStepIsAFrameStill) {
    std::vector<ByteVector> frames = Frames();
    frames[5][6] ^= 0x20; // frame phase
    EtiFramer::Counters counters;
    EXPECT_EQ(CountsOf(Join(frames), 1 << 20, &counters), Range(0, kFrames));
    EXPECT_EQ(counters.headersBad, 1u);
    // And so is one whose header sum is wrong throughout.
    for (ByteVector& frame : frames)
        frame[6] ^= 0x40;
    EXPECT_EQ(CountsOf(Join(frames)).size(), static_cast<std::size_t>(kFrames));
}

TEST(EtiFramer, BothSynchronisationWordsAtAnyPlace) {
    // All frames with the same word, as a careless relay may send them.
    std::vector<ByteVector> frames = Frames();
    for (ByteVector& frame : frames) {
        frame[1] = 0xF8;
        frame[2] = 0xC5;
        frame[3] = 0x49;
    }
    EXPECT_EQ(CountsOf(Join(frames)), Range(0, kFrames));
}

TEST(EtiFramer, NoiseHoldsNoFrame) {
    std::mt19937 random(1);
    ByteVector noise(200000);
    for (std::uint8_t& byte : noise)
        byte = static_cast<std::uint8_t>(random());
    EXPECT_TRUE(CountsOf(noise).empty());
    // A synchronisation word alone is not enough.
    noise[1000] = 0xFF;
    noise[1001] = 0x07;
    noise[1002] = 0x3A;
    noise[1003] = 0xB6;
    EXPECT_TRUE(CountsOf(noise).empty());
}

TEST(EtiFramer, ALastFrameThatIsCutOffIsNone) {
    ByteVector stream = Join(Frames());
    stream.resize(stream.size() - 5000);
    EXPECT_EQ(CountsOf(stream), Range(0, kFrames - 1));
}

} // namespace
} // namespace medmb
