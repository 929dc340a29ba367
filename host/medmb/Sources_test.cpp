// Names of sources, command templates, files of a folder, TCP.
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "host/medmb/BlockTable.h"
#include "host/medmb/Inputs.h"
#include "host/medmb/SourceSpec.h"
#include "host/medmb/TestPipe.h"
#include "tests/support/Places.h"

namespace medmb {
namespace {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

TEST(BlockTable, RowsNamesAndFrequencies) {
    EXPECT_EQ(BlockFrequency(0), 175280000);
    EXPECT_EQ(BlockFrequency(4), 183008000);
    EXPECT_EQ(BlockFrequency(20), 214736000);
    EXPECT_EQ(BlockName(0), "7A");
    EXPECT_EQ(BlockName(20), "13C");
    EXPECT_EQ(RowFromText("12a"), 15);
    EXPECT_EQ(RowFromText("205280000"), 15);
    EXPECT_FALSE(RowFromText("14A"));
    EXPECT_FALSE(RowFromText("205280001"));
    EXPECT_FALSE(RowFromText(""));
    EXPECT_EQ(RowFromFileName("radio-8b"), 4);
    EXPECT_EQ(RowFromFileName("8B"), 4);
    EXPECT_FALSE(RowFromFileName("recording8b"));
    EXPECT_FALSE(RowFromFileName("monday"));
}

TEST(SourceSpec, KindsOfSources) {
    std::string error;
    EXPECT_EQ(ParseSource("-", error)->kind, SourceKind::StandardInput);
    const auto tcp = ParseSource("tcp://[::1]:9000", error);
    ASSERT_TRUE(tcp);
    EXPECT_EQ(tcp->host, "::1");
    EXPECT_EQ(tcp->port, "9000");
    EXPECT_EQ(ParseSource("localhost:9000", error)->kind, SourceKind::Tcp);
    EXPECT_FALSE(ParseSource("localhost:", error));
    EXPECT_FALSE(ParseSource("no/such:9000", error));
    EXPECT_FALSE(ParseSource("tcp://host", error));
    EXPECT_FALSE(ParseSource("/no/such/file.eti", error));
    EXPECT_NE(error.find("/no/such/file.eti"), std::string::npos);
    EXPECT_EQ(ParseSource(testing_support::SourceDir() + "/tests/data/broadcast", error)->kind, SourceKind::Directory);
    EXPECT_EQ(ParseSource(testing_support::SourceDir() + "/tests/data/broadcast/8B.eti", error)->kind,
              SourceKind::File);
}

TEST(SourceSpec, CommandTemplates) {
    EXPECT_EQ(ExpandCommand("prog {hz} {khz} {mhz} {block} {row} {gain}", 183008000, "20"),
              (Arguments{"prog", "183008000", "183008", "183.008", "8B", "4", "20"}));
    EXPECT_EQ(ExpandCommand("'a b' \"c {block}\" d\\ e {other} {", 183008000, ""),
              (Arguments{"a b", "c 8B", "d e", "{other}", "{"}));
    EXPECT_EQ(ExpandCommand("p --gain={gain} ''", 183008000, ""), (Arguments{"p", "--gain=", ""}));
    EXPECT_TRUE(ExpandCommand("p 'open", 183008000, "").empty());
    EXPECT_TRUE(ExpandCommand("   ", 183008000, "").empty());
    for (const CommandEntry& entry : ReadyMadeCommands())
        EXPECT_GE(ExpandCommand(entry.command, 183008000, "1").size(), 2u) << entry.name;
}

TEST(SourceSpec, AnEntryTellsWhereTheProgramsOwnFigureStands) {
    const SourceSpec spec = CommandSource("prog {hz} {snr:SNR =} -g {gain}", "9");
    EXPECT_EQ(spec.snrMarker, "SNR =");
    EXPECT_EQ(ExpandCommand(spec.command, 183008000, spec.gain), (Arguments{"prog", "183008000", "-g", "9"}));
    EXPECT_EQ(CommandSource("prog {hz}").snrMarker, "");
    EXPECT_EQ(CommandSource("prog {snr:").command, "prog {snr:");
    EXPECT_EQ(CommandSource("dab2eti").command, ReadyMadeCommands()[0].command);
}

TEST(SourceSpec, FilesOfAFolder) {
    const fs::path folder = fs::temp_directory_path() / ("dmb-sources-" + std::to_string(getpid()));
    fs::create_directories(folder);
    for (const char* name : {"183008000.eti", "12A.ETI", "evening-12a.eti", "notes.txt", "plain.eti"})
        std::ofstream(folder / name) << "x";
    std::string error;
    const auto files = ListSourceFiles(*ParseSource(folder.string(), error));
    ASSERT_EQ(files.size(), 2u);
    EXPECT_EQ(files[0].row, 4);
    EXPECT_EQ(files[1].row, 15);
    EXPECT_EQ(fs::path(files[1].path).filename(), "12A.ETI");
    const auto single = ListSourceFiles(*ParseSource((folder / "plain.eti").string(), error));
    ASSERT_EQ(single.size(), 1u);
    EXPECT_EQ(single[0].row, 0);
    fs::remove_all(folder);
}

TEST(Inputs, BackOffGrowsToEightSeconds) {
    BackOff backOff;
    std::vector<Millis> waits;
    for (int i = 0; i < 6; ++i)
        waits.push_back(backOff.Next());
    EXPECT_EQ(waits, (std::vector<Millis>{500, 1000, 2000, 4000, 8000, 8000}));
    backOff.Reset();
    EXPECT_EQ(backOff.Next(), 500);
}

TEST(Inputs, TcpReadsWhatTheOtherSideSends) {
    const Descriptor server(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ASSERT_EQ(bind(server.Get(), reinterpret_cast<sockaddr*>(&address), size), 0);
    ASSERT_EQ(getsockname(server.Get(), reinterpret_cast<sockaddr*>(&address), &size), 0);
    const std::string port = std::to_string(ntohs(address.sin_port));

    ce::RealClock clock;
    Cancellation cancellation(clock);
    TcpInput nobody("127.0.0.1", port, false, cancellation);
    EXPECT_FALSE(nobody.Connect()); // bound, but not listening: refused at once
    EXPECT_FALSE(nobody.Reason().empty());

    ASSERT_EQ(listen(server.Get(), 1), 0);
    TcpInput input("127.0.0.1", port, false, cancellation);
    ASSERT_TRUE(input.Connect());
    Descriptor peer(accept(server.Get(), nullptr, nullptr));
    ASSERT_EQ(write(peer.Get(), "hello", 5), 5);
    std::uint8_t room[16];
    std::size_t count = 0;
    ASSERT_EQ(input.Read(room, count, 5000), ReadStatus::Data);
    EXPECT_EQ(std::string(room, room + count), "hello");
    EXPECT_EQ(input.Read(room, count, 0), ReadStatus::Waiting);
    peer.Close();
    EXPECT_EQ(input.Read(room, count, 5000), ReadStatus::End);
    cancellation.Cancel();
    EXPECT_EQ(input.Read(room, count, 5000), ReadStatus::Cancelled);
}

TEST(Inputs, ADemodulatorsOwnFigureIsRead) {
    ce::RealClock clock;
    Cancellation cancellation(clock);
    CommandInput input({"sh", "-c", "echo 'lock, SNR = 17.5 dB' >&2; echo data"}, "SNR", false, cancellation);
    ASSERT_TRUE(input.Start());
    std::uint8_t room[16];
    std::size_t count = 0;
    while (input.Read(room, count, 1000) != ReadStatus::End) {
    }
    ASSERT_TRUE(input.MeasuredSnr());
    EXPECT_FLOAT_EQ(*input.MeasuredSnr(), 17.5F);
}

TEST(Inputs, AProgramThatSaysNothingIsTakenForHung) {
    ce::ManualClock clock;
    Cancellation cancellation(clock);
    CommandInput input({"sleep", "1000"}, "", false, cancellation);
    ASSERT_TRUE(input.Start());
    std::uint8_t room[16];
    std::size_t count = 0;
    clock.Sleep(4999);
    EXPECT_EQ(input.Read(room, count, 0), ReadStatus::Waiting);
    clock.Sleep(1);
    EXPECT_EQ(input.Read(room, count, 0), ReadStatus::End);
    EXPECT_NE(input.Reason().find("hangs"), std::string::npos);
}

TEST(Inputs, AHungProgramIsBegunAgainWithBackOff) {
    ce::ManualClock clock;
    Cancellation cancellation(clock);
    CommandInput input({"sleep", "1000"}, "", true, cancellation);
    ASSERT_TRUE(input.Start());
    std::uint8_t room[16];
    std::size_t count = 0;
    Millis wait = 500;
    for (int i = 0; i < 3; ++i) {
        clock.Sleep(CommandInput::kSilenceLimit);
        EXPECT_EQ(input.Read(room, count, 0), ReadStatus::Waiting);
        EXPECT_NE(input.Reason().find("hangs"), std::string::npos);
        clock.Sleep(wait - 1);
        EXPECT_EQ(input.Read(room, count, 0), ReadStatus::Waiting);
        EXPECT_FALSE(input.TakeRestart()) << i;
        clock.Sleep(1);
        EXPECT_EQ(input.Read(room, count, 0), ReadStatus::Waiting);
        EXPECT_TRUE(input.TakeRestart()) << i;
        wait *= 2;
    }
}

TEST(Inputs, AllOfAProgramsGroupEndsWithIt) {
    // The shell's own child ignores the request to end.
    const test::TestPipe pipe("dmb-group");
    ChildProcess child;
    std::string reason;
    const std::string script =
        "exec 3> " + pipe.Name() + "; (trap '' TERM; echo ready >&3; while :; do sleep 1; done) & wait";
    ASSERT_TRUE(child.Start({"sh", "-c", script}, reason)) << reason;
    ASSERT_TRUE(pipe.Heard());
    child.Stop();
    EXPECT_FALSE(child.Running());
    EXPECT_TRUE(pipe.Abandoned());
}

} // namespace
} // namespace medmb
