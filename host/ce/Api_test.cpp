// The calls of platform/wince.h on the current system.
#include "host/ce/Ce.h"
#include "host/ce/TemporaryFolder.h"
#include "platform/wince.h"

#include <array>
#include <cstring>
#include <memory>

#include <gtest/gtest.h>

namespace ce {
namespace {

class Api : public ::testing::Test {
protected:
    Api() { system.files().AddMount({WTEXT("\\"), host.path()}); }

    TemporaryFolder host;
    ManualClock clock{1173268800}; // 2007-03-07 12:00:00 UTC
    Ce system{clock};
};

TEST(ApiWithoutASystem, EveryCallFailsInItsOwnWay) {
    ASSERT_EQ(Ce::Current(), nullptr);
    EXPECT_FALSE(PostMessageW(nullptr, WM_USER, 0, 0));
    EXPECT_EQ(SetTimer(nullptr, 1, 100, nullptr), 0u);
    EXPECT_FALSE(KillTimer(nullptr, 1));
    Sleep(100000);
    EXPECT_EQ(CreateFileW(WTEXT("\\x"), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr), INVALID_HANDLE_VALUE);
    DWORD done = 7;
    char byte = 0;
    EXPECT_FALSE(ReadFile(nullptr, &byte, 1, &done, nullptr));
    EXPECT_EQ(done, 0u);
    EXPECT_FALSE(WriteFile(nullptr, &byte, 1, &done, nullptr));
    EXPECT_EQ(SetFilePointer(nullptr, 0, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetFileSize(nullptr, nullptr), INVALID_FILE_SIZE);
    EXPECT_FALSE(CloseHandle(nullptr));
    EXPECT_FALSE(GetDiskFreeSpaceExW(WTEXT("\\"), nullptr, nullptr, nullptr));
    OutputDebugStringW(WTEXT("x"));
    EXPECT_EQ(CurrentTime(), 0);
}

TEST_F(Api, TheObjectIsCurrentWhileItLives) {
    EXPECT_EQ(Ce::Current(), &system);
}

TEST_F(Api, MessagesAndTimersReachTheLoop) {
    UINT last = 0;
    const HWND window = system.loop().AddWindow([&](HWND, UINT message, WPARAM, LPARAM) {
        last = message;
        return LRESULT{0};
    });
    EXPECT_TRUE(PostMessageW(window, WM_USER + 5, 0x180418, 0));
    system.loop().RunUntilIdle();
    EXPECT_EQ(last, WM_USER + 5);
    EXPECT_EQ(SetTimer(window, 200, 1000, nullptr), 200u);
    Sleep(1000);
    system.loop().RunUntilIdle();
    EXPECT_EQ(last, WM_TIMER);
    EXPECT_TRUE(KillTimer(window, 200));
    EXPECT_FALSE(KillTimer(window, 200));
}

TEST_F(Api, ClosingMakesSleepReturnAtOnce) {
    system.BeginClosing();
    Sleep(250);
    EXPECT_EQ(clock.Now(), 0);
    EXPECT_TRUE(system.IsClosing());
    EXPECT_FALSE(system.loop().RunUntil([] { return false; }));
}

TEST_F(Api, AFileRoundTrip) {
    HANDLE file = CreateFileW(WTEXT("\\DMBChannel.lst"), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    DWORD done = 0;
    EXPECT_TRUE(WriteFile(file, "0123", 4, &done, nullptr));
    EXPECT_EQ(done, 4u);
    EXPECT_TRUE(WriteFile(file, "4567", 4, nullptr, nullptr));
    EXPECT_TRUE(CloseHandle(file));
    file = CreateFileW(WTEXT("\\DMBChannel.lst"), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(GetFileSize(file, nullptr), 8u);
    std::array<char, 9> text{};
    EXPECT_TRUE(ReadFile(file, text.data(), 8, &done, nullptr));
    EXPECT_STREQ(text.data(), "01234567");
    EXPECT_TRUE(CloseHandle(file));
}

TEST_F(Api, PositionsHaveTwoWords) {
    const HANDLE file =
        CreateFileW(WTEXT("\\big"), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    LONG high = 1;
    EXPECT_EQ(SetFilePointer(file, 2, &high, FILE_BEGIN), 2u);
    EXPECT_EQ(high, 1);
    DWORD done = 0;
    EXPECT_TRUE(WriteFile(file, "x", 1, &done, nullptr)); // a sparse file: 4 GiB of nothing
    DWORD sizeHigh = 0;
    EXPECT_EQ(GetFileSize(file, &sizeHigh), 3u);
    EXPECT_EQ(sizeHigh, 1u);
    high = -1;
    EXPECT_EQ(SetFilePointer(file, -3, &high, FILE_END), 0u);
    EXPECT_EQ(high, 1);
    EXPECT_EQ(SetFilePointer(file, -1, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
    EXPECT_TRUE(CloseHandle(file));
}

TEST_F(Api, FreeSpaceHasTwoWords) {
    system.files().SetFaults({.freeBytes = 0x1'00000002});
    ULARGE_INTEGER free{};
    EXPECT_TRUE(GetDiskFreeSpaceExW(WTEXT("\\"), &free, nullptr, nullptr));
    EXPECT_EQ(free.HighPart, 1u);
    EXPECT_EQ(free.LowPart, 2u);
}

TEST_F(Api, ANarrowLabelIntoAZeroedField) {
    std::array<WCHAR, 20> wide{};
    EXPECT_EQ(MultiByteToWideChar(kNarrowCodePage, 0, "\xC7\xD1\xB1\xB9TV", -1, wide.data(), 20), 5);
    EXPECT_EQ(WString(wide.data()), WTEXT("한국TV"));
    EXPECT_EQ(MultiByteToWideChar(kNarrowCodePage, 0, "\xC7\xD1\xB1\xB9TV", 4, wide.data(), 20), 2);
}

TEST_F(Api, ATooSmallFieldIsFilledAndFails) {
    std::array<WCHAR, 3> wide{};
    EXPECT_EQ(MultiByteToWideChar(kNarrowCodePage, 0, "abcdef", -1, nullptr, 0), 7);
    EXPECT_EQ(MultiByteToWideChar(kNarrowCodePage, 0, "abcdef", -1, wide.data(), 3), 0);
    EXPECT_EQ(LastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(WString(wide.data(), 3), WTEXT("abc"));
}

TEST_F(Api, OtherCodePagesAreRefused) {
    WCHAR wide = 0;
    EXPECT_EQ(MultiByteToWideChar(1252, 0, "a", 1, &wide, 1), 0);
    EXPECT_EQ(MultiByteToWideChar(kNarrowCodePage, 0, nullptr, 1, &wide, 1), 0);
    EXPECT_EQ(MultiByteToWideChar(kNarrowCodePage, 0, "a", 0, &wide, 1), 0);
    EXPECT_EQ(LastError(), ERROR_INVALID_PARAMETER);
}

TEST_F(Api, DebuggerLinesCanBeRead) {
    OutputDebugStringW(WTEXT("[DMB|FILTER] a\r\n"));
    OutputDebugStringW(nullptr);
    EXPECT_EQ(system.debug().Lines(), (std::vector<WString>{WTEXT("[DMB|FILTER] a\r\n")}));
}

TEST_F(Api, TimeOnTheWall) {
    Sleep(5 * 3600 * 1000 + 9000);
    const LocalTime local = LocalTimeOf(CurrentTime());
    EXPECT_EQ(local.year, 2007);
    EXPECT_EQ(local.day, 8);
    EXPECT_EQ(local.hour, 2);
    EXPECT_EQ(local.second, 9);
}

} // namespace
} // namespace ce
