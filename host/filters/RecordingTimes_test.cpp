#include "host/filters/RecordingTimes.h"

#include <gtest/gtest.h>

#include <random>

#include "host/filters/CaptureTee.h"
#include "tests/filters/TestService.h"

namespace filters {

namespace {

constexpr std::uint64_t kWrap = std::uint64_t{1} << 33;

// The tables of a service of ours, and the PID of its clock.
struct Tables {
    Bytes packets;
    std::uint16_t clockPid = 0;
};

const Tables& ServiceTables() {
    static const Tables kTables = [] {
        const Bytes service = filters_test::MakeService({.seconds = 1}).packets;
        ProgramTables tables;
        for (std::size_t at = 0; at < service.size(); at += wire::kTsPacketSize) {
            const auto packet = wire::TsPacket::Parse(ByteSpan(service).subspan(at, wire::kTsPacketSize));
            if (packet && packet->hasPayload && tables.IsTable(packet->header.pid))
                (void)tables.Push(*packet, false);
        }
        Tables result;
        for (const TableSection& section : tables.Sections()) {
            const Bytes packets = PacketsOfSection(section, 0);
            result.packets.insert(result.packets.end(), packets.begin(), packets.end());
        }
        result.clockPid = tables.Current().value().clockPid;
        return result;
    }();
    return kTables;
}

void AddReference(Bytes& file, std::uint64_t base) {
    wire::TsHeader header;
    header.pid = ServiceTables().clockPid;
    header.pcr = base % kWrap * 300;
    std::array<std::uint8_t, wire::kTsPacketSize> packet{};
    (void)wire::WriteTsPacket(packet, header, {});
    file.insert(file.end(), packet.begin(), packet.end());
}

// Tables, and then a reference ten times a second with null packets between them.
Bytes Capture(double seconds, std::uint64_t startBase = 1000000, int packetsPerReference = 40) {
    Bytes file = ServiceTables().packets;
    std::array<std::uint8_t, wire::kTsPacketSize> null{};
    wire::WriteNullPacket(null);
    for (int i = 0; i <= static_cast<int>(seconds * 10); ++i) {
        AddReference(file, startBase + static_cast<std::uint64_t>(i) * kTicksPerSecond / 10);
        for (int k = 1; k < packetsPerReference; ++k)
            file.insert(file.end(), null.begin(), null.end());
    }
    return file;
}

// Bytes that have been read are counted.
struct File {
    Bytes bytes;
    std::size_t read = 0;

    FilePart Reader() {
        return [this](std::uint64_t from, std::size_t size) {
            const auto at = static_cast<std::size_t>(std::min<std::uint64_t>(from, bytes.size()));
            const std::size_t count = std::min(size, bytes.size() - at);
            read += count;
            return Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                         bytes.begin() + static_cast<std::ptrdiff_t>(at + count));
        };
    }
    std::optional<double> Seconds() {
        const auto time = PlayingTime(bytes.size(), Reader());
        return time ? std::optional(static_cast<double>(*time) / kTicksPerSecond) : std::nullopt;
    }
};

} // namespace

TEST(RecordingTimes, TheTimeBetweenTheFirstReferenceAndTheLast) {
    EXPECT_EQ(File{Capture(12.3)}.Seconds(), 12.3);
    EXPECT_EQ(File{Capture(3725)}.Seconds(), 3725.0);
}

TEST(RecordingTimes, AServiceAsItIsSent) {
    const auto seconds = File{filters_test::MakeService({.seconds = 6}).packets}.Seconds();
    ASSERT_TRUE(seconds);
    EXPECT_NEAR(*seconds, 6, 0.8);
}

TEST(RecordingTimes, OnlyTheBeginningAndTheEndAreRead) {
    File file{Capture(600)};
    ASSERT_GT(file.bytes.size(), 40u << 20);
    EXPECT_EQ(file.Seconds(), 600.0);
    EXPECT_LE(file.read, 96u << 10);
}

TEST(RecordingTimes, ThePlayersOwnMeasureIsTheSame) {
    File file{Capture(100)};
    const Bytes& bytes = file.bytes;
    const auto times = MeasureTimes(ByteSpan(bytes).first(kHeadBytes), ByteSpan(bytes).last(kTailBytes), bytes.size());
    ASSERT_TRUE(times);
    EXPECT_TRUE(times->steady);
    EXPECT_EQ(static_cast<double>(times->duration) / kTicksPerSecond, file.Seconds());
}

// Edge case: the clock's counter wraps while a recording is made.
TEST(RecordingTimes, AWrapOfTheCounterIsNoJump) {
    EXPECT_EQ(File{Capture(60, kWrap - 30 * kTicksPerSecond)}.Seconds(), 60.0);
    EXPECT_EQ(File{Capture(60, kWrap - kTicksPerSecond / 10)}.Seconds(), 60.0) << "inside the part that is looked at";
}

TEST(RecordingTimes, WithoutItsLastBytesItTellsTheTimeUpToThere) {
    File file{Capture(60)};
    file.bytes.resize(file.bytes.size() / 2 - 77);
    const auto seconds = file.Seconds();
    ASSERT_TRUE(seconds);
    EXPECT_NEAR(*seconds, 30, 0.2);
}

TEST(RecordingTimes, WithoutItsFirstBytesItBeginsAtTheNextTables) {
    Bytes bytes = Capture(20);
    const Bytes& tables = ServiceTables().packets;
    const auto third = static_cast<std::ptrdiff_t>(bytes.size() / 3 / wire::kTsPacketSize * wire::kTsPacketSize);
    bytes.insert(bytes.begin() + third, tables.begin(), tables.end());
    bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(tables.size()) + 188 * 40 + 55);
    const auto seconds = File{bytes}.Seconds();
    ASSERT_TRUE(seconds);
    EXPECT_NEAR(*seconds, 20, 0.4) << "the references before the tables count";
}

TEST(RecordingTimes, DamageInTheMiddleChangesNothing) {
    File file{Capture(60)};
    std::mt19937 chance(1);
    for (std::size_t at = file.bytes.size() / 4; at < file.bytes.size() / 2; ++at)
        file.bytes[at] = static_cast<std::uint8_t>(chance());
    EXPECT_EQ(file.Seconds(), 60.0);
}

TEST(RecordingTimes, DamageAtTheEndIsSteppedOver) {
    File file{Capture(600)};
    std::fill(file.bytes.end() - (100 << 10), file.bytes.end(), std::uint8_t{0x47});
    const auto seconds = file.Seconds();
    ASSERT_TRUE(seconds);
    EXPECT_NEAR(*seconds, 600, 2);
}

TEST(RecordingTimes, AJumpOfTheClockIsReplacedByTheFilesPace) {
    Bytes bytes = Capture(30);
    const Bytes second = Capture(30, 500);
    bytes.insert(bytes.end(), second.begin(), second.end());
    const auto backwards = File{bytes}.Seconds();
    ASSERT_TRUE(backwards);
    EXPECT_NEAR(*backwards, 60, 2);

    bytes = Capture(30);
    const Bytes later = Capture(30, 7000 * kTicksPerSecond);
    bytes.insert(bytes.end(), later.begin(), later.end());
    const auto forwards = File{bytes}.Seconds();
    ASSERT_TRUE(forwards);
    EXPECT_NEAR(*forwards, 60, 2);
}

// A recording of a second over the moment at which a transmitter's loop begins anew once told 13 hours.
TEST(RecordingTimes, AJumpInsideTheBeginningCountsForNothing) {
    for (const std::uint64_t after : {std::uint64_t{500}, std::uint64_t{90} * kTicksPerSecond}) {
        Bytes bytes = Capture(1, 58 * kTicksPerSecond);
        const Bytes second = Capture(1, after);
        bytes.insert(bytes.end(), second.begin(), second.end());
        const auto seconds = File{bytes}.Seconds();
        ASSERT_TRUE(seconds);
        EXPECT_NEAR(*seconds, 2, 0.5);
    }
}

TEST(RecordingTimes, PacketsWithCheckBytesBehindThem) {
    const Bytes bare = Capture(20);
    File file;
    for (std::size_t at = 0; at < bare.size(); at += wire::kTsPacketSize) {
        file.bytes.insert(file.bytes.end(), bare.begin() + static_cast<std::ptrdiff_t>(at),
                          bare.begin() + static_cast<std::ptrdiff_t>(at + wire::kTsPacketSize));
        file.bytes.insert(file.bytes.end(), 16, 0xA5);
    }
    EXPECT_EQ(file.Seconds(), 20.0);
}

TEST(RecordingTimes, WhatIsNoRecordingTellsNoTime) {
    EXPECT_FALSE(File{}.Seconds());
    EXPECT_FALSE(File{Bytes{0x47}}.Seconds());
    EXPECT_FALSE(File{Bytes(3 << 20, 0)}.Seconds());
    EXPECT_FALSE(File{Bytes(3 << 20, 0x47)}.Seconds());
    std::mt19937 chance(2);
    Bytes noise(300000);
    for (std::uint8_t& byte : noise)
        byte = static_cast<std::uint8_t>(chance());
    EXPECT_FALSE(File{noise}.Seconds());
    EXPECT_FALSE(File{ServiceTables().packets}.Seconds()) << "a programme without a clock";
    const Bytes capture = Capture(20);
    const Bytes withoutTables(capture.begin() + static_cast<std::ptrdiff_t>(ServiceTables().packets.size()),
                              capture.end());
    EXPECT_FALSE(File{withoutTables}.Seconds()) << "a clock without a programme";
}

TEST(RecordingTimes, AVeryShortRecording) {
    EXPECT_FALSE(File{Capture(0)}.Seconds()) << "a single reference";
    EXPECT_EQ(File{Capture(0.1, 5000, 1)}.Seconds(), 0.1) << "two references side by side have no pace";
    Bytes same = ServiceTables().packets;
    for (int i = 0; i < 3; ++i)
        AddReference(same, 5000);
    EXPECT_FALSE(File{same}.Seconds());
}

TEST(RecordingTimes, ACardThatGoesWhileItIsReadTellsNoTime) {
    EXPECT_FALSE(PlayingTime(1 << 20, [](std::uint64_t, std::size_t) { return Bytes(); }));
    File file{Capture(20)};
    const FilePart whole = file.Reader();
    EXPECT_FALSE(PlayingTime(file.bytes.size(), [&](std::uint64_t from, std::size_t size) {
        return from == 0 ? whole(from, size) : Bytes();
    }));
}

} // namespace filters
