#include "host/ce/DevicePath.h"

#include <gtest/gtest.h>

namespace ce {
namespace {

using Names = std::vector<std::string>;

TEST(DevicePath, SplitsIntoNames) {
    EXPECT_EQ(SplitDevicePath(u"\\SDMMC Card\\DMB\\한국.dmb"), (Names{"SDMMC Card", "DMB", "한국.dmb"}));
    EXPECT_EQ(SplitDevicePath(u"\\"), Names{});
    EXPECT_EQ(SplitDevicePath(u"\\\\a\\\\b\\"), (Names{"a", "b"}));
}

TEST(DevicePath, MustBeAbsolute) {
    EXPECT_FALSE(SplitDevicePath(u""));
    EXPECT_FALSE(SplitDevicePath(u"MotBody.dat"));
    EXPECT_FALSE(SplitDevicePath(u"C:\\x"));
    EXPECT_FALSE(SplitDevicePath(u"/etc/passwd"));
}

TEST(DevicePath, NoNameLeadsOut) {
    for (const char16_t* path : {u"\\..\\x", u"\\a\\..", u"\\a\\.\\b", u"\\a/../../b", u"\\/etc/passwd", u"\\c:\\x"})
        EXPECT_FALSE(SplitDevicePath(path)) << std::filesystem::path(path);
    EXPECT_EQ(SplitDevicePath(u"\\...\\..a"), (Names{"...", "..a"})) << "harmless";
}

TEST(DevicePath, RefusesWhatTheDeviceRefuses) {
    for (const char16_t* path : {u"\\a*", u"\\a?", u"\\\"a\"", u"\\a<b", u"\\a>b", u"\\a|b", u"\\a:b", u"\\a\nb"})
        EXPECT_FALSE(SplitDevicePath(path));
    EXPECT_FALSE(SplitDevicePath(WString{u'\\', u'a', WCHAR{0xD800}}));
    EXPECT_FALSE(SplitDevicePath(WStringView(u"\\a\0b", 4)));
}

TEST(DevicePath, TheLongestMountWins) {
    const std::vector<Mount> mounts{
        {u"\\", "/root"}, {u"\\SDMMC Card", "/card"}, {u"\\SDMMC Card\\DMB\\deep", "/deep"}};
    const auto onCard = Locate(mounts, u"\\sdmmc card\\DMB\\x.dmb");
    ASSERT_TRUE(onCard);
    EXPECT_EQ(onCard->mount->host, "/card");
    EXPECT_EQ(onCard->names, (Names{"DMB", "x.dmb"}));
    const auto besides = Locate(mounts, u"\\SDMMC Card2\\x");
    ASSERT_TRUE(besides);
    EXPECT_EQ(besides->mount->host, "/root");
    const auto card = Locate(mounts, u"\\SDMMC Card\\");
    ASSERT_TRUE(card);
    EXPECT_TRUE(card->names.empty());
    EXPECT_FALSE(Locate({}, u"\\x"));
}

} // namespace
} // namespace ce
