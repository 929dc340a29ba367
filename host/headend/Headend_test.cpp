#include "host/headend/Headend.h"

#include <bit>
#include <fstream>

#include <malloc.h>

#include <gtest/gtest.h>

#include "host/headend/Demo.h"
#include "host/headend/OuterCoder.h"
#include "host/headend/Programme.h"
#include "host/wire/EtiFrame.h"
#include "host/wire/Fib.h"
#include "host/wire/LayerTwo.h"
#include "tests/support/Places.h"

namespace {

using wire::ByteSpan;

const std::string kTelevision = R"({"kind": "television", "id": "0xF1E00401", "label": {"text": "TV"}, "subChannel": 1,
    "bitRate": 272, "video": {"scene": "sea", "width": 176, "height": 144, "framesPerSecond": 15, "ticker": "한글 ticker"},
    "sound": {"melody": "joy", "bitRate": 48}})";
const std::string kRadio = R"({"kind": "radio", "id": "0xE201", "label": {"text": "RADIO"}, "subChannel": 2,
    "bitRate": 128, "padBytes": 40, "texts": [{"text": "Hello"}], "slides": [{"title": "T", "width": 64, "height": 48}],
    "sound": {"melody": "tone:440"})";

std::string Document(const std::string& ensembleMembers, const std::string& services, double seconds) {
    return R"({"seconds": )" + std::to_string(seconds) + R"(, "ensembles": [{"block": "8A", "id": "0xE1C1",
        "label": {"text": "TEST"})" +
           ensembleMembers + R"(, "services": [)" + services + "]}]}";
}

wire::ByteVector Eti(const std::string& json) {
    return headend::MakeBroadcast(headend::ParseDescription(json, "x", {})).ensembles.at(0).eti;
}

std::vector<wire::EtiFrame> Frames(const wire::ByteVector& eti) {
    std::vector<wire::EtiFrame> frames;
    EXPECT_EQ(eti.size() % wire::kEtiFrameBytes, 0u);
    for (std::size_t at = 0; at < eti.size(); at += wire::kEtiFrameBytes)
        frames.push_back(wire::EtiFrame::Parse(ByteSpan(eti).subspan(at, wire::kEtiFrameBytes)).value());
    return frames;
}

TEST(Headend, FramesFollowEachOther) {
    const auto eti = Eti(Document(R"(, "firstFrame": 240)", kRadio + "}", 0.6));
    const auto frames = Frames(eti);
    ASSERT_EQ(frames.size(), 25u);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        EXPECT_TRUE(frames[i].HeaderCrcOk());
        EXPECT_TRUE(frames[i].MstCrcOk());
        EXPECT_EQ(frames[i].FrameCount(), static_cast<int>((240 + i) % 250));
        EXPECT_EQ(frames[i].FramePhase(), static_cast<int>((240 + i) % 8));
        const auto sound = frames[i].SubChannel(2);
        const auto header = wire::ParseLayerTwoHeader(sound);
        ASSERT_TRUE(header);
        EXPECT_TRUE(wire::LayerTwoCrcOk(*header, sound));
    }
}

TEST(Headend, TheSameDescriptionMakesTheSameBytes) {
    const std::string json = Document("", kTelevision + "," + kRadio + "}", 2);
    const auto first = Eti(json);
    // Memory that nobody wrote is filled with something else: whoever reads it is found out.
    mallopt(M_PERTURB, 1);
    const auto second = Eti(json);
    mallopt(M_PERTURB, 0);
    EXPECT_EQ(first, second);
}

TEST(Headend, TelevisionBytesAreTheOuterCodeOfTheTransportStream) {
    const auto description = headend::ParseDescription(Document("", kTelevision, 1.2), "x", {});
    const auto frames = Eti(Document("", kTelevision, 1.2));
    wire::ByteVector carried;
    for (const auto& frame : Frames(frames))
        wire::AppendBytes(carried, frame.SubChannel(1));
    const auto stream =
        headend::MakeTransportStream(description, description.ensembles[0].services[0], {0, 50, 272}).packets;
    EXPECT_EQ(stream.size() / 188, 50u * 272 * 3 / 204);
    EXPECT_EQ(carried, headend::OuterCode(stream, headend::InterleaverStart::kCyclic));
}

TEST(Headend, LostFramesAreMissingAndTheCountGoesOn) {
    const auto eti = Eti(Document(R"(, "lostFrames": [{"at": 0.24, "count": 3}])", kRadio + "}", 0.6));
    const auto frames = Frames(eti);
    ASSERT_EQ(frames.size(), 22u);
    EXPECT_EQ(frames[9].FrameCount(), 9);
    EXPECT_EQ(frames[10].FrameCount(), 13);
}

TEST(Headend, BitErrorsStayInTheirWindowAndSubChannel) {
    const std::string clean = Document("", kRadio + "}", 1.2);
    const std::string damaged =
        Document("", kRadio + R"(, "bitErrors": [{"from": 0.48, "to": 0.96, "rate": 0.001}]})", 1.2);
    const auto a = Eti(clean);
    const auto b = Eti(damaged);
    const auto framesA = Frames(a);
    const auto framesB = Frames(b);
    int errors = 0;
    for (std::size_t i = 0; i < framesA.size(); ++i) {
        EXPECT_TRUE(std::equal(framesA[i].Fic().begin(), framesA[i].Fic().end(), framesB[i].Fic().begin()));
        EXPECT_TRUE(framesB[i].MstCrcOk()) << "the frame itself is sound";
        int here = 0;
        for (std::size_t k = 0; k < framesA[i].SubChannel(2).size(); ++k)
            here += std::popcount(static_cast<unsigned>(framesA[i].SubChannel(2)[k] ^ framesB[i].SubChannel(2)[k]));
        EXPECT_TRUE(here == 0 || (i >= 20 && i < 40)) << i;
        errors += here;
    }
    EXPECT_NEAR(errors, 20 * 384 * 8 * 0.001, 35) << "of 61440 bits one in a thousand";
    EXPECT_GT(errors, 30);
}

TEST(Headend, DamagedInformationBlocks) {
    const auto eti = Eti(Document(R"(, "fibErrors": [{"from": 0.24, "to": 0.48}])", kRadio + "}", 0.72));
    const auto frames = Frames(eti);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        for (std::size_t fib = 0; fib < 96; fib += 32)
            EXPECT_EQ(wire::FibCrcOk(frames[i].Fic().subspan(fib, 32)), i < 10 || i >= 20) << i;
    }
}

TEST(Headend, DropOutIsNoiseInGoodFrames) {
    const auto eti = Eti(Document(R"(, "dropOuts": [{"from": 0.24, "to": 0.48}])", kRadio + "}", 0.72));
    const auto frames = Frames(eti);
    ASSERT_EQ(frames.size(), 30u);
    for (std::size_t i = 10; i < 20; ++i) {
        EXPECT_TRUE(frames[i].HeaderCrcOk());
        EXPECT_TRUE(frames[i].MstCrcOk());
        EXPECT_FALSE(wire::FibCrcOk(frames[i].Fic().first(32)));
        EXPECT_EQ(frames[i].FrameCount(), static_cast<int>(i / 4 * 4));
    }
    EXPECT_TRUE(wire::FibCrcOk(frames[20].Fic().first(32)));
}

TEST(Headend, SoundFormatChangesInsideASubChannel) {
    const auto eti = Eti(Document("", kRadio + R"(, "soundChanges": [{"at": 0.48, "sampleRate": 24000}]})", 0.96));
    const auto frames = Frames(eti);
    EXPECT_EQ(wire::ParseLayerTwoHeader(frames[19].SubChannel(2))->sampleRate, 48000);
    EXPECT_EQ(wire::ParseLayerTwoHeader(frames[20].SubChannel(2))->sampleRate, 24000);
    EXPECT_FALSE(wire::ParseLayerTwoHeader(frames[21].SubChannel(2))) << "the second half of a frame";
    EXPECT_TRUE(wire::ParseLayerTwoHeader(frames[22].SubChannel(2)));
}

TEST(Headend, ReconfigurationMovesTheStream) {
    const auto eti =
        Eti(Document("", kRadio + R"(, "changes": [{"at": 0.48, "subChannel": 9, "bitRate": 160}]})", 0.96));
    const auto frames = Frames(eti);
    EXPECT_EQ(frames[19].SubChannel(2).size(), 384u);
    EXPECT_EQ(frames[20].SubChannel(2).size(), 0u);
    EXPECT_EQ(frames[20].SubChannel(9).size(), 480u);
    EXPECT_EQ(wire::ParseLayerTwoHeader(frames[20].SubChannel(9))->bitRate, 160);
}

TEST(Headend, ATelevisionServiceShorterThanAPicture) {
    EXPECT_EQ(Eti(Document("", kTelevision, 0.5)).size(), 21u * 6144);
    const auto blink =
        Document("", kTelevision.substr(0, kTelevision.rfind('}')) + R"(, "present": {"to": 0.1}})", 0.5);
    EXPECT_EQ(Frames(Eti(blink)).at(10).StreamCount(), 0u);
}

TEST(Headend, DataAndDabPlusServicesAreThereToo) {
    const auto eti = Eti(Document("", R"(
        {"kind": "dab+", "id": 1, "label": {"text": "A"}, "subChannel": 1, "bitRate": 64},
        {"kind": "stream data", "id": 2, "label": {"text": "B"}, "subChannel": 2, "bitRate": 32},
        {"kind": "packet data", "id": 3, "label": {"text": "C"}, "subChannel": 3, "bitRate": 16})",
                                  0.5));
    const auto frames = Frames(eti);
    EXPECT_EQ(frames[0].SubChannel(1).size(), 192u);
    const auto packet = frames[0].SubChannel(3).first(24);
    EXPECT_TRUE(wire::Crc16Matches(packet)) << "a padding packet";
}

// Edge case: leaving while the demo is made
TEST(Demo, AStopEndsTheMakingAndLeavesWhatWasThere) {
    const std::filesystem::path directory =
        std::filesystem::path(testing_support::BinaryDir()) / "headend_test" / "stopped";
    std::filesystem::remove_all(directory);
    headend::EnsureBroadcast(Document("", kRadio + "}", 0.5), "recipe one", directory);
    const auto size = std::filesystem::file_size(directory / "8A.eti");
    std::stop_source source;
    const auto stop = [&source](double, const std::string&) { source.request_stop(); };
    EXPECT_THROW(
        headend::EnsureBroadcast(Document("", kTelevision, 3), "recipe two", directory, stop, source.get_token()),
        headend::Interrupted);
    EXPECT_EQ(std::filesystem::file_size(directory / "8A.eti"), size);
    std::filesystem::remove_all(directory);
}

TEST(Demo, IsKeptUntilSomethingChanges) {
    const std::filesystem::path directory =
        std::filesystem::path(testing_support::BinaryDir()) / "headend_test" / "demo";
    std::filesystem::remove_all(directory);
    const std::string json = Document("", kRadio + "}", 0.5);
    int made = 0;
    const auto count = [&](double share, const std::string&) {
        made += share == 0 ? 1 : 0;
    }; // told once at the beginning
    headend::EnsureBroadcast(json, "recipe one", directory, count);
    EXPECT_EQ(made, 1);
    ASSERT_TRUE(std::filesystem::exists(directory / "8A.eti"));
    headend::EnsureBroadcast(json, "recipe one", directory, count);
    EXPECT_EQ(made, 1) << "nothing has changed";
    headend::EnsureBroadcast(json, "recipe two", directory, count);
    EXPECT_EQ(made, 2) << "another recipe";
    std::filesystem::resize_file(directory / "8A.eti", 6144);
    headend::EnsureBroadcast(json, "recipe two", directory, count);
    EXPECT_EQ(made, 3) << "a file cut short";
    EXPECT_GT(std::filesystem::file_size(directory / "8A.eti"), 6144u);
    std::ofstream(directory / "9C.eti") << "somebody else's";
    std::string moved = json;
    moved.replace(moved.find("8A"), 2, "8C");
    headend::EnsureBroadcast(moved, "recipe three", directory, count);
    EXPECT_TRUE(std::filesystem::exists(directory / "8C.eti"));
    EXPECT_FALSE(std::filesystem::exists(directory / "8A.eti")) << "the recipe has no such block any more";
    EXPECT_TRUE(std::filesystem::exists(directory / "9C.eti"));
    std::filesystem::remove_all(directory);
}

TEST(Demo, ADirectoryThatCannotBeWrittenIsSaid) {
    const std::filesystem::path file = std::filesystem::path(testing_support::BinaryDir()) / "headend_test_file";
    std::ofstream(file) << "no directory";
    EXPECT_THROW(headend::EnsureBroadcast(Document("", kRadio + "}", 0.5), "r", file / "demo"), std::runtime_error);
    std::filesystem::remove(file);
}

} // namespace
