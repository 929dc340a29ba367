#include "host/shell/sdl/SoundCard.h"

#include <SDL.h>
#include <cstdlib>
#include <future>
#include <gtest/gtest.h>
#include <vector>

namespace shell::sdl {

namespace {

struct Said {
    std::vector<std::string> lines;
    SoundCard::Say Port() {
        return [this](const std::string& line) { lines.push_back(line); };
    }
};

} // namespace

TEST(SoundCard, PullsStereoFramesUntilItIsStopped) {
    setenv("SDL_AUDIODRIVER", "dummy", 1);
    Said said;
    SoundCard card(said.Port());
    std::promise<std::size_t> pulled;
    bool told = false;
    ASSERT_TRUE(card.Start([&](std::span<std::int16_t> frames) {
        std::fill(frames.begin(), frames.end(), std::int16_t{0});
        if (!std::exchange(told, true)) {
            pulled.set_value(frames.size());
        }
    }));
    const std::size_t samples = pulled.get_future().get();
    EXPECT_GT(samples, 0u);
    EXPECT_EQ(samples % 2, 0u);
    EXPECT_GT(card.LatencyMs(), 0);
    EXPECT_LT(card.LatencyMs(), 200);
    card.Stop();
    EXPECT_TRUE(said.lines.empty());
}

TEST(SoundCard, WithoutACardItSaysSoOnceAndGivesUp) {
    setenv("SDL_AUDIODRIVER", "no-such-driver", 1);
    Said said;
    SoundCard card(said.Port());
    EXPECT_FALSE(card.Start([](std::span<std::int16_t>) {}));
    EXPECT_FALSE(card.Start([](std::span<std::int16_t>) {}));
    ASSERT_EQ(said.lines.size(), 1u);
    EXPECT_NE(said.lines[0].find("nothing will be heard"), std::string::npos);
    setenv("SDL_AUDIODRIVER", "dummy", 1);
}

} // namespace shell::sdl
