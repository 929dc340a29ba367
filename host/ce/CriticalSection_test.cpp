#include "platform/wince.h"

#include <memory>
#include <thread>

#include <gtest/gtest.h>

namespace {

TEST(CriticalSection, TheOwnerMayEnterAgain) {
    CriticalSection section;
    section.Enter();
    section.Enter();
    EXPECT_TRUE(section.TryEnter());
    section.Leave();
    section.Leave();
    std::thread([&] { EXPECT_FALSE(section.TryEnter()) << "still entered once"; }).join();
    section.Leave();
    std::thread([&] {
        EXPECT_TRUE(section.TryEnter());
        section.Leave();
    }).join();
}

TEST(CriticalSection, AnotherThreadWaits) {
    CriticalSection section;
    int value = 0;
    section.Enter();
    std::thread other([&] {
        const SectionLock lock(section);
        ++value;
    });
    value = 10;
    section.Leave();
    other.join();
    EXPECT_EQ(value, 11);
}

TEST(CriticalSection, ManyThreadsCountExactly) {
    CriticalSection section;
    int count = 0;
    std::thread threads[4];
    for (std::thread& thread : threads)
        thread = std::thread([&] {
            for (int i = 0; i < 2000; ++i) {
                const SectionLock outer(section);
                const SectionLock inner(section);
                ++count;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(count, 8000);
}

TEST(CriticalSection, DestroyingAnOwnedOneIsHarmless) {
    auto section = std::make_unique<CriticalSection>();
    section->Enter();
    section.reset();
}

TEST(CriticalSection, AForeignLeaveFreesNothing) {
    CriticalSection section;
    section.Enter();
    std::thread([&] {
        section.Leave();
        EXPECT_FALSE(section.TryEnter());
    }).join();
    section.Leave();
    section.Leave(); // one too many
    EXPECT_TRUE(section.TryEnter());
}

TEST(CriticalSection, TheTryingGuardSkipsWhenBusy) {
    CriticalSection section;
    {
        const TrySectionLock mine(section);
        EXPECT_TRUE(mine);
        std::thread([&] {
            const TrySectionLock theirs(section);
            EXPECT_FALSE(theirs);
        }).join();
    }
    std::thread([&] { EXPECT_TRUE(TrySectionLock(section)) << "the guard gave it back"; }).join();
}

TEST(Settings, ReadAndWriteAreInterlocked) {
    LONG setting = 3;
    EXPECT_EQ(WriteSetting(setting, 5), 3);
    EXPECT_EQ(ReadSetting(setting), 5);
    std::thread writer([&] { WriteSetting(setting, 6); });
    const LONG seen = ReadSetting(setting);
    EXPECT_TRUE(seen == 5 || seen == 6);
    writer.join();
    EXPECT_EQ(ReadSetting(setting), 6);
}

} // namespace
