#include "host/shell/sdl/KeyMap.h"

#include <SDL.h>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

#include "tests/support/Places.h"

namespace shell::sdl {

TEST(KeyMap, EveryBuiltInKeyExistsAndNoneIsThereTwice) {
    std::map<KeyCode, std::string> seen;
    for (const KeyMap::Entry& entry : KeyMap::BuiltIn()) {
        const KeyCode key = SDL_GetKeyFromName(entry.key);
        EXPECT_NE(key, SDLK_UNKNOWN) << entry.key;
        EXPECT_TRUE(seen.emplace(key, entry.key).second) << entry.key << " and " << seen[key];
    }
}

TEST(KeyMap, TheDocumentationListsEveryBuiltInKeyWithItsAction) {
    std::ifstream in(testing_support::SourceDir() + "/docs/keys.md");
    const std::string text{std::istreambuf_iterator<char>(in), {}};
    for (const KeyMap::Entry& entry : KeyMap::BuiltIn()) {
        const std::string row = "| `" + std::string(entry.key) + "` | `" + std::string(NameOf(entry.action)) + "` |";
        EXPECT_NE(text.find(row), std::string::npos) << row;
    }
}

TEST(KeyMap, EveryActionHasANameOfItsOwn) {
    for (int i = 0; i < kActionCount; ++i) {
        const auto action = static_cast<Action>(i);
        EXPECT_EQ(ActionOf(NameOf(action)), action);
    }
    EXPECT_FALSE(ActionOf("dance").has_value());
    EXPECT_EQ(DigitOf(Action::Digit7), 7);
    EXPECT_EQ(DigitOf(Action::Mute), -1);
}

TEST(KeyMap, TheUsersLinesGoOverTheBuiltInOnes) {
    KeyMap keys;
    ASSERT_EQ(keys.Read("# mine\n\nG = full-screen\n= = mute\nR=none\r\n"), "");
    EXPECT_EQ(keys.Find(SDLK_g), Action::FullScreen);
    EXPECT_EQ(keys.Find(SDLK_EQUALS), Action::Mute);
    EXPECT_EQ(keys.Find(SDLK_r), Action::None);
    EXPECT_EQ(keys.Find(SDLK_s), Action::Scan);
}

TEST(KeyMap, AMistakeIsToldWithItsLineAndChangesNothing) {
    KeyMap keys;
    EXPECT_EQ(keys.Read("G = mute\nG mute"), "line 2: expected KEY = ACTION");
    EXPECT_EQ(keys.Read("Nokey = mute"), "line 1: no key is called 'Nokey'");
    EXPECT_EQ(keys.Read("G = sing"), "line 1: no action is called 'sing'");
    EXPECT_EQ(keys.Find(SDLK_g), Action::None);
}

} // namespace shell::sdl
