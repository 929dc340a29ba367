// The tuner on live sources: real descriptors and programs on the real clock, and how soon it lets go of each.
#include "host/medmb/Tuner.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <iterator>
#include <limits>
#include <thread>

#include <gtest/gtest.h>

#include "host/medmb/BlockTable.h"
#include "host/medmb/Inputs.h"
#include "host/medmb/TestPipe.h"
#include "host/wire/EtiFrame.h"
#include "platform/medmblib.h"
#include "tests/support/Places.h"

namespace medmb {
namespace {

using namespace test;
namespace fs = std::filesystem;

const fs::path kData = fs::path(testing_support::SourceDir()) / "tests/data/broadcast";
const std::string kFile = (kData / "8B.eti").string();
// Its first 30 frames; tuning in takes a few, the others play for half a second.
constexpr std::size_t kBeginning = 30 * std::size_t{wire::kEtiFrameBytes};
constexpr int kMostOfIt = 20;
const std::string kWriteBeginning = "head -c " + std::to_string(kBeginning) + " " + kFile;
constexpr int kBlock = 183008000; // 8B
constexpr std::uint32_t kService = 0xE202;

SourceSpec Named(const std::string& text, bool loop = false) {
    std::string error;
    SourceSpec spec = ParseSource(text, error).value_or(SourceSpec{});
    spec.loop = loop;
    return spec;
}

struct LiveBench {
    ce::RealClock clock;
    Broadcast broadcast;
    Tuner tuner;
    explicit LiveBench(SourceSpec spec) : tuner(clock, broadcast, MakeSourceProvider(std::move(spec))) {}

    [[nodiscard]] Millis Time(const std::function<void()>& work) {
        const Millis before = clock.Now();
        work();
        return clock.Now() - before;
    }
    [[nodiscard]] Millis TimeStop() {
        return Time([this] { tuner.StopService(); });
    }
};

// Every thread of the tuner has to be gone after a fifth of a second. Other work on the machine may delay one attempt, but hardly each
// of several; a wait of our own that is too long is in all of them.
void ExpectInTime(const std::function<Millis()>& attempt) {
    constexpr Millis kLimit = 200;
    constexpr int kAttempts = 5;
    Millis best = std::numeric_limits<Millis>::max();
    for (int i = 0; i < kAttempts && best > kLimit && !testing::Test::HasFailure(); ++i)
        best = std::min(best, attempt());
    EXPECT_LE(best, kLimit);
    testing::Test::RecordProperty("stopped_after_ms", static_cast<int>(best));
}

std::string Beginning() {
    std::ifstream in(kFile, std::ios::binary);
    std::string bytes(kBeginning, '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

BroadcastItem ReadOne(BroadcastReader& reader) {
    BroadcastItem item;
    EXPECT_EQ(reader.Read(item, std::chrono::seconds(20)), ReadResult::Item);
    return item;
}

void ReadFrames(BroadcastReader& reader, int count) {
    for (int frames = 0; frames < count && !testing::Test::HasFailure();)
        frames += ReadOne(reader).kind == ItemKind::Audio ? 1 : 0;
}

void WaitFor(LiveBench& bench, SignalState state) {
    BroadcastReader reader = bench.broadcast.Attach();
    BroadcastItem item;
    while (bench.broadcast.Signal() != state)
        (void)reader.Read(item, std::chrono::milliseconds(20));
}

// A call in another thread that waits for something that never comes, until BeginClosing; how long it takes to return then.
Millis TimeClosing(LiveBench& bench, bool scan, int hz, const std::function<void()>& untilItWaits) {
    auto call = std::async(std::launch::async, [&bench, scan, hz] {
        _tag_DMB_CHANNEL_INFO info{};
        return scan ? bench.tuner.GetChannel(hz, info) : bench.tuner.SetChannel(hz, 0, kService);
    });
    untilItWaits();
    return bench.Time([&] {
        bench.tuner.BeginClosing();
        EXPECT_FALSE(call.get());
    });
}

// ---- how soon it lets go --------------------------------------------------------------------------------------------

TEST(LettingGo, OfAFileThatPlays) {
    ExpectInTime([] {
        LiveBench bench(Named(kData.string(), true));
        EXPECT_TRUE(bench.tuner.SetChannel(kBlock, 0, kService));
        BroadcastReader reader = bench.broadcast.Attach();
        ReadFrames(reader, 6);
        return bench.TimeStop();
    });
}

TEST(LettingGo, OfAFileThatHasEnded) {
    ExpectInTime([] {
        LiveBench bench(Named(kData.string()));
        EXPECT_TRUE(bench.tuner.SetChannel(205280000, 8, 0xF1E00401)); // a second long
        WaitFor(bench, SignalState::Ended);
        return bench.TimeStop();
    });
}

// Edge case: a file that is cut to nothing while it plays
TEST(LettingGo, OfAFileThatWasCutToNothing) {
    const fs::path file = fs::temp_directory_path() / ("dmb-cut-8B-" + std::to_string(getpid()) + ".eti");
    ExpectInTime([&] {
        fs::copy_file(kFile, file, fs::copy_options::overwrite_existing);
        LiveBench bench(Named(file.string(), true));
        EXPECT_TRUE(bench.tuner.SetChannel(kBlock, 0, kService));
        fs::resize_file(file, 0);
        WaitFor(bench, SignalState::Lost);
        return bench.TimeStop();
    });
    fs::remove(file);
}

class Fifo {
public:
    explicit Fifo(const char* name) : path(fs::temp_directory_path() / (name + std::to_string(getpid()))) {
        fs::remove(path);
        mkfifo(path.c_str(), 0600);
    }
    ~Fifo() { fs::remove(path); }
    Fifo(const Fifo&) = delete;
    Fifo& operator=(const Fifo&) = delete;

    // Writes the beginning of the file and closes the end, in another thread.
    std::future<void> Feed() const {
        signal(SIGPIPE, SIG_IGN);
        return std::async(std::launch::async, [this] { std::ofstream(path, std::ios::binary) << Beginning(); });
    }

    const fs::path path;
};

// Edge case: a pipe that nobody writes to
TEST(LettingGo, OfAPipeWithoutAWriter) {
    for (const bool scan : {true, false})
        ExpectInTime([scan] {
            const Fifo fifo("dmb-pipe-empty-");
            LiveBench bench(Named(fifo.path.string()));
            // Opening it waits for the reader.
            return TimeClosing(bench, scan, BlockFrequency(0), [&fifo] { std::ofstream(fifo.path, std::ios::binary); });
        });
}

TEST(LettingGo, OfAPipeWhoseWriterHasLeft) {
    ExpectInTime([] {
        const Fifo fifo("dmb-pipe-left-");
        LiveBench bench(Named(fifo.path.string()));
        auto writer = fifo.Feed();
        EXPECT_TRUE(bench.tuner.SetChannel(BlockFrequency(0), 0, kService));
        BroadcastReader reader = bench.broadcast.Attach();
        ReadFrames(reader, kMostOfIt);
        writer.get();
        return bench.TimeStop();
    });
}

// A listener on a port of its own.
struct Server {
    Server(int backlog) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        (void)bind(socket.Get(), reinterpret_cast<sockaddr*>(&address), size);
        (void)getsockname(socket.Get(), reinterpret_cast<sockaddr*>(&address), &size);
        (void)listen(socket.Get(), backlog);
        port = ntohs(address.sin_port);
        name = "localhost:" + std::to_string(port);
        // As many callers as it keeps waiting: whoever comes next is not even answered.
        for (int i = 0; backlog == 0 && i < 4; ++i) {
            callers.emplace_back(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
            (void)!connect(callers.back().Get(), reinterpret_cast<sockaddr*>(&address), size);
        }
    }
    [[nodiscard]] Descriptor Accept() const { return Descriptor(accept(socket.Get(), nullptr, nullptr)); }

    // How many callers have asked for a connection and got no answer yet, by the system's own list (state 02).
    [[nodiscard]] int Asking() const {
        char wanted[32];
        std::snprintf(wanted, sizeof wanted, "0100007F:%04X 02", static_cast<unsigned>(port));
        std::ifstream list("/proc/net/tcp");
        int asking = 0;
        for (std::string line; std::getline(list, line);)
            asking += line.find(wanted) != std::string::npos ? 1 : 0;
        return asking;
    }

    Descriptor socket{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    std::vector<Descriptor> callers;
    std::string name;
    int port = 0;
};

// Edge case: a network source that never answers
TEST(LettingGo, OfAConnectionThatIsNeverMade) {
    for (const bool scan : {true, false})
        ExpectInTime([scan] {
            const Server server(0);
            const int before = server.Asking();
            EXPECT_GT(before, 0);
            LiveBench bench(Named(server.name));
            return TimeClosing(bench, scan, BlockFrequency(0), [&] {
                for (int looks = 0; looks < 100000 && server.Asking() <= before; ++looks)
                    std::this_thread::yield();
                EXPECT_GT(server.Asking(), before);
            });
        });
}

TEST(LettingGo, OfAConnectionThatSaysNothing) {
    ExpectInTime([] {
        const Server server(1);
        LiveBench bench(Named(server.name));
        Descriptor peer;
        return TimeClosing(bench, false, BlockFrequency(0), [&] { peer = server.Accept(); });
    });
}

TEST(LettingGo, OfAConnectionThatFallsSilentOrIsLost) {
    for (const bool lost : {false, true})
        ExpectInTime([lost] {
            const Server server(1);
            LiveBench bench(Named(server.name));
            auto peer = std::async(std::launch::async, [&] {
                Descriptor made = server.Accept();
                const std::string bytes = Beginning();
                EXPECT_EQ(send(made.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
                          static_cast<ssize_t>(bytes.size()));
                return made;
            });
            EXPECT_TRUE(bench.tuner.SetChannel(BlockFrequency(0), 0, kService));
            BroadcastReader reader = bench.broadcast.Attach();
            ReadFrames(reader, kMostOfIt);
            Descriptor made = peer.get();
            if (lost)
                made.Close(); // it is tried again from now on
            return bench.TimeStop();
        });
}

TEST(LettingGo, OfAProgramThatPlays) {
    ExpectInTime([] {
        LiveBench bench(CommandSource("sh -c 'cat " + kFile + "; exec sleep 1000'"));
        EXPECT_TRUE(bench.tuner.SetChannel(kBlock, 0, kService));
        BroadcastReader reader = bench.broadcast.Attach();
        ReadFrames(reader, 1);
        return bench.TimeStop();
    });
}

// Edge case: a program that hangs and ignores the request to end
TEST(LettingGo, OfAProgramThatHangsInTheMiddleAndIgnoresTheRequest) {
    ExpectInTime([] {
        const TestPipe pipe("dmb-tuner-middle");
        LiveBench bench(CommandSource("sh -c 'trap \"\" TERM; exec 3> " + pipe.Name() + "; " + kWriteBeginning +
                                      "; while :; do sleep 1; done'"));
        EXPECT_TRUE(bench.tuner.SetChannel(kBlock, 0, kService));
        BroadcastReader reader = bench.broadcast.Attach();
        ReadFrames(reader, kMostOfIt);
        const Millis took = bench.TimeStop();
        EXPECT_TRUE(pipe.Abandoned());
        BroadcastItem item;
        EXPECT_EQ(reader.TryRead(item), ReadResult::End);
        return took;
    });
}

// Edge case: a program that was stopped as a whole
TEST(LettingGo, OfAProgramThatStandsStill) {
    ExpectInTime([] {
        const TestPipe pipe("dmb-tuner-still");
        LiveBench bench(CommandSource("sh -c 'exec 3> " + pipe.Name() + "; " + kWriteBeginning + "; kill -STOP 0'"));
        EXPECT_TRUE(bench.tuner.SetChannel(kBlock, 0, kService));
        BroadcastReader reader = bench.broadcast.Attach();
        ReadFrames(reader, kMostOfIt);
        const Millis took = bench.TimeStop();
        EXPECT_TRUE(pipe.Abandoned());
        return took;
    });
}

// Edge case: a program that complains without end
TEST(LettingGo, OfAProgramThatFloodsItsErrorOutput) {
    ExpectInTime([] {
        const TestPipe pipe("dmb-tuner-flood");
        LiveBench bench(CommandSource("sh -c 'echo ready > " + pipe.Name() + "; exec yes >&2'"));
        return TimeClosing(bench, false, kBlock, [&] { EXPECT_TRUE(pipe.Heard()); });
    });
}

TEST(LettingGo, OfAScanAndATuningThatWaitForAHungProgram) {
    for (const bool scan : {true, false})
        ExpectInTime([scan] {
            const TestPipe pipe("dmb-tuner-hung");
            LiveBench bench(CommandSource("sh -c 'echo ready > " + pipe.Name() + "; exec sleep 1000'"));
            return TimeClosing(bench, scan, kBlock, [&] { EXPECT_TRUE(pipe.Heard()); });
        });
}

// ---- what they bring ------------------------------------------------------------------------------------------------

TEST(LiveTuner, AProgramIsStartedWithItsBlock) {
    LiveBench bench(
        CommandSource("sh -c 'test {block} = 8B && test {hz} = 183008000 && cat " + kFile + "; exec sleep 1000'"));
    _tag_DMB_CHANNEL_INFO info{};
    ASSERT_TRUE(bench.tuner.GetChannel(kBlock, info));
    EXPECT_EQ(info.service[0].nServiceID, 0xE201u);
    ASSERT_TRUE(bench.tuner.SetChannel(kBlock, 0, kService));
    BroadcastReader reader = bench.broadcast.Attach();
    EXPECT_FALSE(ReadOne(reader).bytes.empty());
}

// Edge case: a named pipe among the files of a folder
TEST(LiveTuner, ANamedPipeInAFolderOfFilesIsNoSourceAtOnce) {
    const fs::path folder = fs::temp_directory_path() / ("dmb-pipe-folder-" + std::to_string(getpid()));
    fs::create_directories(folder);
    ASSERT_EQ(mkfifo((folder / "8B.eti").c_str(), 0600), 0);
    LiveBench bench(Named(folder.string()));
    _tag_DMB_CHANNEL_INFO info{};
    EXPECT_FALSE(bench.tuner.GetChannel(kBlock, info));
    ASSERT_EQ(bench.tuner.Reports().size(), 1u);
    EXPECT_EQ(bench.tuner.Reports()[0].state, BlockState::NoSource);
    EXPECT_NE(bench.tuner.Reports()[0].reason.find("not a regular file"), std::string::npos);
    fs::remove_all(folder);
}

TEST(LiveTuner, AProgramThatCannotStartIsNoSourceAtOnce) {
    LiveBench bench(CommandSource("/no/such/program {hz}"));
    _tag_DMB_CHANNEL_INFO info{};
    const Millis before = bench.clock.Now();
    EXPECT_FALSE(bench.tuner.GetChannel(kBlock, info));
    LiveBench failing(CommandSource("sh -c 'echo no device found >&2; exit 3'"));
    EXPECT_FALSE(failing.tuner.GetChannel(kBlock, info));
    EXPECT_LE(bench.clock.Now() - before, 1000);
    EXPECT_EQ(bench.tuner.Reports()[0].state, BlockState::NoSource);
    EXPECT_NE(failing.tuner.Reports()[0].reason.find("no device found"), std::string::npos);
}

TEST(LiveTuner, AProgramThatEndsIsBegunAgain) {
    const fs::path marks = fs::temp_directory_path() / ("dmb-tuner-test-" + std::to_string(getpid()));
    LiveBench bench(CommandSource("sh -c 'echo x >> " + marks.string() + "; head -c 60000 " + kFile + "'"));
    ASSERT_TRUE(bench.tuner.SetChannel(kBlock, 0, kService));
    BroadcastReader reader = bench.broadcast.Attach();
    // One run holds 38 frames; more can only come from another.
    int frames = 0;
    bool gap = false;
    while (frames < 50) {
        const BroadcastItem item = ReadOne(reader);
        frames += item.kind == ItemKind::Audio ? 1 : 0;
        gap = gap || item.discontinuity;
        if (HasFailure())
            break;
    }
    EXPECT_TRUE(gap);
    bench.tuner.StopService();
    EXPECT_GE(fs::file_size(marks), 4u);
    fs::remove(marks);
}

TEST(LiveTuner, ANamedPipeStandsOnRowZeroAndOutlivesTheScan) {
    const fs::path pipe = fs::temp_directory_path() / ("dmb-tuner-pipe-" + std::to_string(getpid()));
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    signal(SIGPIPE, SIG_IGN);
    LiveBench bench(Named(pipe.string()));
    _tag_DMB_CHANNEL_INFO info{};
    EXPECT_FALSE(bench.tuner.GetChannel(BlockFrequency(4), info));
    auto writer = std::async(std::launch::async, [&] {
        std::ifstream in(kData / "8B.eti", std::ios::binary);
        std::ofstream out(pipe, std::ios::binary);
        out << in.rdbuf();
    });
    EXPECT_TRUE(bench.tuner.GetChannel(BlockFrequency(0), info));
    EXPECT_TRUE(bench.tuner.SetChannel(BlockFrequency(0), 0, 0xE201));
    BroadcastReader reader = bench.broadcast.Attach();
    EXPECT_FALSE(ReadOne(reader).bytes.empty());
    bench.tuner.StopService();
    EXPECT_FALSE(bench.tuner.GetChannel(BlockFrequency(1), info));
    bench.tuner.BeginClosing();
    // Let the writer finish, whatever of the file is left.
    const int drain = open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
    char bytes[4096];
    while (writer.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready)
        while (read(drain, bytes, sizeof bytes) > 0) {
        }
    close(drain);
    fs::remove(pipe);
}

} // namespace
} // namespace medmb
