// The screen as it was once looked at and found good, in both languages.
//
// A stored picture changes only with a reason: tools/golden.sh paints them anew. A picture that differs is left in the build's
// folder `golden` with the pixels in question marked.
#include <cctype>
#include <cstdlib>

#include <gtest/gtest.h>

#include "tests/golden/Scenes.h"
#include "tests/support/Places.h"

namespace golden {

namespace {

using Which = std::tuple<std::size_t, shell::Language>;

std::string FileOf(const Which& which) {
    const auto& [scene, language] = which;
    return std::string(Scenes()[scene].name) + (language == shell::Language::Korean ? ".ko.png" : ".en.png");
}

std::string NameOf(const ::testing::TestParamInfo<Which>& info) {
    std::string name = FileOf(info.param);
    name.resize(name.size() - 4);
    for (char& c : name)
        c = std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
    return name;
}

class Golden : public ::testing::TestWithParam<Which> {};

} // namespace

TEST_P(Golden, LooksAsItDid) {
    const auto& [scene, language] = GetParam();
    ScreenStory story;
    story.SpeakIn(language);
    Scenes()[scene].play(story);
    ASSERT_TRUE(story.Taken()) << "the scene took no picture";
    const Picture& now = *story.Taken();
    if (story.device.shell.View() != nullptr)
        story.Close();

    if (const char* folder = std::getenv("DMB_GOLDEN_FOLDER"); folder != nullptr) {
        ASSERT_TRUE(WritePlain(now, (std::filesystem::path(folder) / FileOf(GetParam())).replace_extension("ppm")));
        return;
    }
    const std::optional<Picture> stored = Read(harness::TestData("golden/" + FileOf(GetParam())));
    ASSERT_TRUE(stored) << "no stored picture " << FileOf(GetParam());
    ASSERT_EQ(stored->width, now.width);
    ASSERT_EQ(stored->height, now.height);
    const Difference difference = Compare(*stored, now);
    if (!difference.IsAlike(now)) {
        const std::filesystem::path folder = std::filesystem::path(testing_support::BinaryDir()) / "golden";
        std::filesystem::create_directories(folder);
        EXPECT_TRUE(Write(now, folder / FileOf(GetParam())));
        EXPECT_TRUE(Write(Marked(*stored, now), folder / ("marked-" + FileOf(GetParam()))));
        ADD_FAILURE() << FileOf(GetParam()) << ": " << difference.others << " pixels differ, mean shade "
                      << difference.mean << "; see " << folder.string();
    }
}

INSTANTIATE_TEST_SUITE_P(Screen, Golden,
                         ::testing::Combine(::testing::Range(std::size_t{0}, Scenes().size()),
                                            ::testing::Values(shell::Language::Korean, shell::Language::English)),
                         NameOf);

// What the comparison must tell apart: one letter on the screen.
TEST(GoldenComparison, ALetterIsADifferenceAndAShadeIsNot) {
    Picture plain{800, 480, std::vector<std::uint32_t>(800 * 480, 0x202020)};
    Picture shade = plain;
    for (std::uint32_t& pixel : shade.pixels)
        pixel += 0x020202;
    EXPECT_TRUE(Compare(plain, shade).IsAlike(plain));
    Picture letter = plain;
    for (int y = 100; y < 120; ++y)
        for (int x = 100; x < 120; ++x)
            letter.pixels[static_cast<std::size_t>(y * 800 + x)] = 0xF0F0F0;
    EXPECT_FALSE(Compare(plain, letter).IsAlike(plain));
    EXPECT_EQ(Compare(plain, letter).others, 400);
}

} // namespace golden
