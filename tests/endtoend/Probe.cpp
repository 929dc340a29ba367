#include "tests/endtoend/Probe.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/Places.h"

namespace endtoend {

namespace {

std::string ReadAll(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

} // namespace

void ExpectPlays(const std::filesystem::path& file, const std::filesystem::path& folder, unsigned pictures,
                 unsigned seconds) {
    const std::filesystem::path sound = folder / "sound.wav";
    const std::filesystem::path video = folder / "pictures.yuv";
    const std::string command = "'" + testing_support::BinaryDir() + "/bin/dmbprobe' play '" + file.string() +
                                "' --audio '" + sound.string() + "' --video '" + video.string() + "' >/dev/null 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
    constexpr std::size_t kPicture = 320 * 240 * 3 / 2;
    const std::string yuv = ReadAll(video);
    const std::size_t count = yuv.size() / kPicture;
    EXPECT_EQ(yuv.size() % kPicture, 0U);
    EXPECT_GT(count, pictures);
    ASSERT_GT(count, 1U);
    EXPECT_NE(yuv.substr(0, kPicture), yuv.substr((count - 1) * kPicture, kPicture));
    constexpr std::size_t kHeader = 44;
    const std::string wav = ReadAll(sound);
    ASSERT_GT(wav.size(), kHeader);
    double power = 0;
    const std::size_t samples = (wav.size() - kHeader) / 2;
    for (std::size_t i = 0; i < samples; ++i) {
        const auto low = static_cast<std::uint8_t>(wav[kHeader + 2 * i]);
        const auto high = static_cast<std::int8_t>(wav[kHeader + 2 * i + 1]);
        const double value = high * 256 + low;
        power += value * value;
    }
    EXPECT_GT(samples, 48000U * 2 * seconds);
    EXPECT_GT(std::sqrt(power / static_cast<double>(samples)), kHeard);
}

} // namespace endtoend
