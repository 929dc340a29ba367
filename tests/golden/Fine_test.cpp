// The screen at twice the size: the same picture, only sharper.
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <ostream>

#include <gtest/gtest.h>

#include "tests/golden/Scenes.h"
#include "tests/support/Places.h"

namespace golden {

namespace {

// Shrunk, finer outlines lie within a part of a pixel of the coarse ones: only edges differ. A line that broke elsewhere, art that was
// merely enlarged (mean 0.27 for television) or a part that was not painted is beyond these bounds.
constexpr double kEdges = 0.2;    // mean shade over all pixels and channels, of 255
constexpr int kOtherPerMille = 1; // of all pixels may be others
// The device's own picture has no finer pixels: its steps are smoothed.
constexpr double kEdgesAndSlide = 0.6;
constexpr int kOtherPerMilleWithSlide = 15;
// Repeated pixels have the same steps as before.
constexpr double kAnySharpness = 0, kSharper = 1.05;

struct FineScene {
    const char* name;
    double meanShade = kEdges;
    int otherPerMille = kOtherPerMille;
    double sharper = kAnySharpness;
};

constexpr FineScene kFineScenes[] = {
    {"scanning"},
    {"television", kEdges, kOtherPerMille, kSharper},
    {"television-recording", kEdges, kOtherPerMille, kSharper},
    {"radio", kEdgesAndSlide, kOtherPerMilleWithSlide},
    {"small-television"},
    {"reason-weak-signal"},
    {"home-while-radio-plays"},
    {"list-television", kEdges, kOtherPerMille, kSharper},
    {"list-files"},
    {"settings", kEdges, kOtherPerMille, kSharper},
    {"debug"},
    {"box-stop-recording"},
};

void PrintTo(const FineScene& scene, std::ostream* out) {
    *out << scene.name;
}

class TwiceTheSize : public ::testing::TestWithParam<FineScene> {};

std::string SceneName(const ::testing::TestParamInfo<FineScene>& info) {
    std::string name = info.param.name;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}

const Scene* Find(const std::string& name) {
    const auto found =
        std::find_if(Scenes().begin(), Scenes().end(), [&](const Scene& scene) { return scene.name == name; });
    return found == Scenes().end() ? nullptr : &*found;
}

// How hard the steps between neighbours are: a blurred edge has several small ones.
double Sharpness(const Picture& picture) {
    double sum = 0;
    for (std::size_t i = 1; i < picture.pixels.size(); ++i) {
        const double step =
            static_cast<double>(picture.pixels[i] >> 8 & 0xFF) - static_cast<double>(picture.pixels[i - 1] >> 8 & 0xFF);
        sum += step * step;
    }
    return sum / picture.height;
}

Picture Play(const Scene& scene, int scale) {
    ScreenStory story;
    story.SpeakIn(shell::Language::Korean);
    story.device.shell.SetScale(scale);
    scene.play(story);
    if (story.device.shell.View() != nullptr)
        story.Close();
    return story.Taken().value_or(Picture{});
}

} // namespace

TEST_P(TwiceTheSize, IsTheSamePictureOnlySharper) {
    const FineScene& wanted = GetParam();
    const Scene* scene = Find(wanted.name);
    ASSERT_NE(scene, nullptr);
    const Picture coarse = Play(*scene, 1);
    const Picture fine = Play(*scene, 2);
    ASSERT_EQ(fine.width, 1600);
    ASSERT_EQ(fine.height, 960);
    if (const char* folder = std::getenv("DMB_FINE_FOLDER"); folder != nullptr) {
        EXPECT_TRUE(Write(fine, std::filesystem::path(folder) / (std::string(wanted.name) + ".png")));
    }
    const Difference difference = Compare(coarse, Halved(fine));
    EXPECT_LE(difference.mean, wanted.meanShade);
    EXPECT_LE(difference.others * 1000, coarse.width * coarse.height * wanted.otherPerMille);
    EXPECT_GE(Sharpness(fine), Sharpness(coarse) * wanted.sharper);
}

INSTANTIATE_TEST_SUITE_P(Screen, TwiceTheSize, ::testing::ValuesIn(kFineScenes), SceneName);

TEST(FineScreen, ComesAndGoesWithoutATrace) {
    for (const auto& open : {+[](ScreenStory& story) { story.WatchTelevision(); },
                             +[](ScreenStory& story) {
                                 story.HearRadio();
                                 story.device.shell.Minimize();
                                 story.Idle();
                             }}) {
        ScreenStory story;
        open(story);
        const Picture before = story.Look();
        story.device.shell.SetScale(2);
        const Picture fine = story.Look();
        EXPECT_EQ(fine.width, 1600);
        EXPECT_LE(Compare(before, Halved(fine)).mean, kEdgesAndSlide);
        story.device.shell.SetScale(1);
        EXPECT_EQ(story.Look().pixels, before.pixels);
        story.Close();
    }
}

TEST(FineScreen, ComesAndGoesUnderAnOpenDialogToo) {
    ScreenStory story;
    story.WatchTelevision();
    Picture before, fine, after;
    story.device.shell.DuringModal([&] {
        before = story.Look();
        story.device.shell.SetScale(2);
        fine = story.Look();
        story.device.shell.SetScale(1);
        after = story.Look();
    });
    story.Command(kCmdList);
    EXPECT_EQ(fine.width, 1600);
    EXPECT_LE(Compare(before, Halved(fine)).mean, kEdgesAndSlide);
    EXPECT_EQ(after.pixels, before.pixels);
    story.Close();
}

TEST(FineScreen, LeavesScreenshotsOfTwiceTheSize) {
    ScreenStory story;
    story.WatchTelevision();
    const std::filesystem::path file = story.device.Root() / "fine.png";
    story.device.shell.SetScale(2);
    ASSERT_TRUE(story.device.shell.Screenshot(file));
    const std::optional<Picture> read = Read(file);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->width, 1600);
    EXPECT_EQ(read->height, 960);
    story.Close();
}

} // namespace golden
