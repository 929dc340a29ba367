// Sums of every picture under tests/data/jpeg in every format and two target sizes. A change of any pixel is a changed line
// of tests/golden/jpeg.sums; tools/jpeg_sums.sh writes the file anew.
#include "jpeg/JpegDecoder.h"
#include "tests/support/Places.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace {

// FNV-1a.
std::uint64_t SumOf(const std::vector<std::uint8_t>& bytes) {
    std::uint64_t sum = 0xCBF29CE484222325;
    for (const std::uint8_t byte : bytes) {
        sum = (sum ^ byte) * 0x100000001B3;
    }
    return sum;
}

std::string LinesFor(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<std::uint8_t> data{std::istreambuf_iterator<char>(file), {}};
    std::ostringstream lines;
    for (const auto& [width, height] : {std::pair{320, 240}, {77, 101}}) {
        for (int format = 0; format < 3; ++format) {
            std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width * height * 3));
            JpegImageInfo info{};
            info.outputFormat = format;
            const int result =
                ImgDecodeJPEG(data.data(), static_cast<int>(data.size()), pixels.data(), width, height, &info);
            lines << path.filename().string() << ' ' << width << 'x' << height << ' ' << format << ' ';
            if (result == 1) {
                lines << std::hex << SumOf(pixels) << std::dec << '\n';
            } else {
                lines << "refused\n";
            }
        }
    }
    return lines.str();
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

TEST(JpegGolden, SumsAreUnchanged) {
    std::vector<std::filesystem::path> pictures;
    const std::filesystem::path root = testing_support::SourceDir();
    for (const auto& entry : std::filesystem::directory_iterator(root / "tests/data/jpeg")) {
        if (entry.path().extension() == ".jpg") {
            pictures.push_back(entry.path());
        }
    }
    ASSERT_FALSE(pictures.empty());
    std::sort(pictures.begin(), pictures.end());
    std::string text;
    for (const auto& picture : pictures) {
        text += LinesFor(picture);
    }
    std::ofstream(std::filesystem::path(testing_support::BinaryDir()) / "jpeg.sums") << text;

    std::ifstream kept(root / "tests/golden/jpeg.sums");
    const std::string wanted{std::istreambuf_iterator<char>(kept), {}};
    EXPECT_EQ(LinesOf(text), LinesOf(wanted));
}

} // namespace
