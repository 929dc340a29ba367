// A program that is killed while it saves its profile leaves the old file or the new one.
#include "host/ce/DeviceFiles.h"
#include "host/ce/TemporaryFolder.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <new>
#include <random>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace ce {
namespace {

constexpr int kKills = 1000;
constexpr std::size_t kSize = 16;

// What the dying process tells: how many saves it began and how many it finished.
struct Progress {
    std::atomic<std::uint32_t> begun, finished;
};

std::string Generation(std::uint32_t number) {
    return std::string(kSize, static_cast<char>('A' + number % 26));
}

// One save as the view makes it: a first word, the rest, back to the start, the first word again.
bool Save(DeviceFiles& files, const std::string& content) {
    const HANDLE handle = files.Open(u"\\Profile\\DMB.dat", GENERIC_WRITE, 0, CREATE_ALWAYS);
    DWORD done = 0;
    bool ok = files.Write(handle, "\0", 2, done);
    for (std::size_t at = 2; at < kSize; at += 2)
        ok = files.Write(handle, content.data() + at, 2, done) && ok;
    ok = files.Seek(handle, 0, FILE_BEGIN).has_value() && ok;
    ok = files.Write(handle, content.data(), 2, done) && ok;
    return files.Close(handle) && ok;
}

[[noreturn]] void SaveForEver(const TemporaryFolder& host, Progress& progress) {
    DeviceFiles files;
    files.AddMount({u"\\Profile", host.path(), Mount::Writing::OnClose});
    for (std::uint32_t number = progress.finished + 1;; ++number) {
        progress.begun = number;
        if (!Save(files, Generation(number)))
            _exit(1);
        progress.finished = number;
    }
}

TEST(ProfileCrash, AThousandKillsLeaveTheOldOrTheNewFile) {
    const TemporaryFolder host;
    void* const shared = mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    auto& progress = *new (shared) Progress{0, 0};
    {
        DeviceFiles files;
        files.AddMount({u"\\Profile", host.path(), Mount::Writing::OnClose});
        ASSERT_TRUE(Save(files, Generation(0)));
    }
    std::mt19937 random(20070307); // NOLINT: the same run every time, as far as the scheduler allows
    unsigned turnsOfASave = 0;
    int withOld = 0;
    int withNew = 0;
    for (int kill = 0; kill < kKills; ++kill) {
        const std::uint32_t before = progress.finished;
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0)
            SaveForEver(host, progress);
        while (progress.begun == before)
            ASSERT_EQ(waitpid(child, nullptr, WNOHANG), 0) << "a save failed";
        // The first child tells how long a save takes; then a random number of turns up to twice that decides the moment.
        if (kill == 0)
            while (progress.finished == before)
                ++turnsOfASave;
        else
            for (unsigned turns = random() % (2 * turnsOfASave + 1); turns != 0; --turns)
                (void)progress.finished.load();
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "a save failed";

        const std::uint32_t begun = progress.begun;
        const std::uint32_t finished = progress.finished;
        const std::string content = ContentOf(host / "DMB.dat");
        const bool isOld = content == Generation(finished);
        ASSERT_TRUE(isOld || content == Generation(begun)) << "kill " << kill << ": " << content.size() << " bytes";
        if (begun != finished)
            ++(isOld ? withOld : withNew);
        progress.finished = isOld ? finished : begun;
        progress.begun = progress.finished.load();
    }
    // Most of the time is spent saving, so most kills must have hit a save, before its last step or after it; otherwise this
    // test shows nothing.
    RecordProperty("withOld", withOld);
    RecordProperty("withNew", withNew);
    EXPECT_GT(withOld + withNew, kKills / 2);
    EXPECT_GT(withOld, 0);
    munmap(shared, sizeof(Progress));
}

} // namespace
} // namespace ce
