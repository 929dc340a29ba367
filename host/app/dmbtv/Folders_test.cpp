#include "host/app/dmbtv/Folders.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "host/app/dmbtv/Options.h"
#include "host/app/dmbtv/WindowState.h"

namespace dmbtv {

TEST(Folders, VideosAreWhereTheDesktopSays) {
    EXPECT_EQ(UserDirectoryOf("XDG_VIDEOS_DIR=\"$HOME/Filme\"", "XDG_VIDEOS_DIR", "/home/kim"), "/home/kim/Filme");
    EXPECT_EQ(UserDirectoryOf("XDG_VIDEOS_DIR=\"/data/videos\"", "XDG_VIDEOS_DIR", "/home/kim"), "/data/videos");
}

TEST(Folders, LinesThatSayNothingGiveNothing) {
    EXPECT_EQ(UserDirectoryOf("# XDG_VIDEOS_DIR", "XDG_VIDEOS_DIR", "/home/kim"), "");
    EXPECT_EQ(UserDirectoryOf("XDG_MUSIC_DIR=\"$HOME/Music\"", "XDG_VIDEOS_DIR", "/home/kim"), "");
    EXPECT_EQ(UserDirectoryOf("XDG_VIDEOS_DIR=\"relative\"", "XDG_VIDEOS_DIR", "/home/kim"), "");
    EXPECT_EQ(UserDirectoryOf("XDG_VIDEOS_DIR=\"", "XDG_VIDEOS_DIR", "/home/kim"), "");
}

TEST(Folders, SettingsAndListLieTogetherWhereXdgSays) {
    setenv("XDG_CONFIG_HOME", "/somewhere/config", 1);
    setenv("XDG_CACHE_HOME", "relative/counts/not", 1);
    setenv("HOME", "/home/kim", 1);
    Options options;
    ASSERT_EQ(Complete(options), "");
    EXPECT_EQ(options.profile, "/somewhere/config/dmbview");
    EXPECT_EQ(options.keys, "/somewhere/config/dmbview/keys");
    EXPECT_EQ(CacheFolder(), "/home/kim/.cache/dmbview");
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("XDG_CACHE_HOME");
}

TEST(Options, ASourceAndACommandAreTooMuch) {
    Options options;
    options.source = "a";
    options.command = "b";
    EXPECT_NE(Complete(options), "");
}

TEST(WindowState, ComesBackAsItWasKept) {
    const WindowState state{35, true, true};
    EXPECT_EQ(ReadWindowState(WriteWindowState(state)), state);
}

TEST(WindowState, NonsenseIsAsAtTheFirstStart) {
    EXPECT_EQ(ReadWindowState(""), WindowState{});
    EXPECT_EQ(ReadWindowState("loud very\nvolume x"), WindowState{});
    EXPECT_EQ(ReadWindowState("volume 900").volume, 100);
    EXPECT_EQ(ReadWindowState("volume -5").volume, 0);
}

} // namespace dmbtv
