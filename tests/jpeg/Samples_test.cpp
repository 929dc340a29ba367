// Every sample picture of the outer test data, one row of its index each: what the probe says, what is accepted, how the
// picture is fitted, and how far its pixels are from the float model's.
#include "jpeg/Fit.h"
#include "jpeg/HeaderScan.h"
#include "jpeg/JpegDecoder.h"
#include "jpeg/MarkerReader.h"
#include "jpeg/ThumbnailChoice.h"
#include "tests/jpeg/FloatModel.h"
#include "tests/support/OuterData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace jpeg {
namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;
constexpr std::size_t kGuard = 4096;
constexpr std::uint8_t kUntouched = 0xA5;

// How far an 8-bit channel may lie outside the interval that its 565 field stands for. Each truncation of the transform,
// of the six-bit contributions and of the packing takes off up to a level or two; nothing adds more than rounding.
constexpr double kMaxError = 7.0;
constexpr double kMeanError = 0.5;

using Row = std::map<std::string, std::string>;

std::vector<std::string> Split(const std::string& line) {
    std::vector<std::string> fields;
    std::stringstream stream(line);
    for (std::string field; std::getline(stream, field, '\t');) {
        fields.push_back(field);
    }
    return fields;
}

std::vector<Row> ReadIndex(const std::filesystem::path& path) {
    std::ifstream file(path);
    std::vector<Row> rows;
    std::string line;
    std::getline(file, line);
    const auto names = Split(line);
    while (std::getline(file, line)) {
        const auto fields = Split(line);
        Row row;
        for (std::size_t i = 0; i < names.size(); ++i) {
            row[names[i]] = i < fields.size() ? fields[i] : "";
        }
        rows.push_back(row);
    }
    return rows;
}

std::vector<std::uint8_t> ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

int Number(const Row& row, const char* name) {
    return std::stoi(row.at(name));
}

// As the index writes it: 2x2.1x1.1x1
std::string SamplingText(const Frame& frame) {
    std::ostringstream text;
    for (int i = 0; i < frame.componentCount; ++i) {
        text << (i == 0 ? "" : ".") << frame.components[i].h << 'x' << frame.components[i].v;
    }
    return text.str();
}

class SampleCheck {
public:
    SampleCheck(const Row& theRow, std::vector<std::uint8_t> bytes) : row(theRow), file(std::move(bytes)) {}

    void Run() {
        CheckProbe();
        CheckDecode();
        if (probed) {
            CheckHeaders();
        }
        if (decoded && fitKnown && !fit.Empty()) {
            CheckOutside();
            CheckPixels();
        }
    }

    double mean = 0;
    double max = 0;
    bool compared = false;

private:
    void CheckProbe() {
        JpegImageInfo info{};
        probed = MES_ParseJPEG(file.data(), static_cast<int>(file.size()), &info) == 1;
        EXPECT_EQ(probed, row.at("probe") == "1");
        if (probed) {
            EXPECT_EQ(info.imageWidth, Number(row, "pw"));
            EXPECT_EQ(info.imageHeight, Number(row, "ph"));
            EXPECT_EQ(info.thumbWidth, Number(row, "tw"));
            EXPECT_EQ(info.thumbHeight, Number(row, "th"));
        }
    }

    void CheckDecode() {
        buffer.assign(kWidth * kHeight * 2 + 2 * kGuard, kUntouched);
        JpegImageInfo info{};
        decoded = ImgDecodeJPEG(file.data(), static_cast<int>(file.size()), buffer.data() + kGuard, kWidth, kHeight,
                                &info) == 1;
        EXPECT_EQ(decoded, row.at("decode") == "1") << row.at("why") << " " << row.at("amb");
        const auto isUntouched = [](std::uint8_t byte) { return byte == kUntouched; };
        EXPECT_TRUE(std::all_of(buffer.begin(), buffer.begin() + kGuard, isUntouched));
        EXPECT_TRUE(std::all_of(buffer.end() - kGuard, buffer.end(), isUntouched));
    }

    void CheckHeaders() {
        HeaderScanResult headers = ScanHeaders(file, kExifScan);
        const ImageChoice choice = ChooseImage(file, kWidth, kHeight, headers.thumbnail);
        EXPECT_EQ(choice != ImageChoice::kMainImage, row.at("from") == "thumb");
        picture = file;
        if (choice == ImageChoice::kJpegThumbnail) {
            picture = picture.subspan(static_cast<std::size_t>(headers.thumbnail.offset), headers.thumbnail.length);
        }
        MarkerReader reader(picture);
        const bool accepted = choice != ImageChoice::kFailure && reader.ReadToFirstScan() == Status::kOk;
        EXPECT_EQ(accepted, row.at("colour") != "-");
        if (!accepted || row.at("colour") == "-") {
            return;
        }
        const Frame& frame = reader.GetFrame();
        fit = FitPicture(frame.width, frame.height, kWidth, kHeight);
        fitKnown = true;
        EXPECT_EQ(fit.width, Number(row, "ow"));
        EXPECT_EQ(fit.height, Number(row, "oh"));
        EXPECT_EQ(fit.reduction, Number(row, "s"));
        EXPECT_EQ(fit.exact, row.at("exact") == "1");
        if (row.at("decode") == "1" && !fit.Empty()) {
            EXPECT_EQ(fit.offsetX, Number(row, "xoff"));
            EXPECT_EQ(fit.offsetY, Number(row, "yoff"));
        }
        EXPECT_EQ(frame.kind == FrameKind::kProgressive, row.at("frame") == "prog");
        if (frame.componentCount > 1) {
            EXPECT_EQ(SamplingText(frame), row.at("sampling"));
        }
        if (reader.Scan().componentCount == frame.componentCount && frame.kind == FrameKind::kBaseline) {
            EXPECT_EQ(reader.GetTables().restartInterval, Number(row, "restart")); // else a later one may be meant
        }
        colour = row.at("colour")[0];
        EXPECT_EQ(reader.Colour(), colour == 'y'   ? ColourModel::kYcc
                                   : colour == 'g' ? ColourModel::kGrey
                                                   : ColourModel::kRgb);
    }

    [[nodiscard]] unsigned PixelAt(int x, int y) const {
        const std::size_t at = kGuard + 2 * static_cast<std::size_t>(y * kWidth + x);
        std::uint16_t word;
        std::memcpy(&word, buffer.data() + at, 2);
        return word;
    }

    void CheckOutside() const {
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                const bool inside =
                    x >= fit.offsetX && x < fit.offsetX + fit.width && y >= fit.offsetY && y < fit.offsetY + fit.height;
                if (!inside && PixelAt(x, y) != kUntouched * 0x0101u) {
                    ADD_FAILURE() << "written outside at " << x << "," << y;
                    return;
                }
            }
        }
    }

    // Rows that come before the damage, as the index tells.
    [[nodiscard]] int ComparableRows() const {
        const std::string& score = row.at("score");
        if (score == "full") {
            return fit.height;
        }
        return score.rfind("rows:", 0) == 0 ? std::stoi(score.substr(5)) : 0;
    }

    void CheckPixels() {
        const int rows = ComparableRows();
        if (rows == 0) {
            return;
        }
        const auto model = float_model::Decode(picture, {fit.width, fit.height, fit.reduction}, colour);
        double sum = 0;
        for (int y = 0; y < rows; ++y) {
            for (int x = 0; x < fit.width; ++x) {
                const unsigned word = PixelAt(x + fit.offsetX, y + fit.offsetY);
                const double low[3] = {static_cast<double>(word >> 8 & 0xF8), static_cast<double>(word >> 3 & 0xFC),
                                       static_cast<double>(word << 3 & 0xF8)};
                const double step[3] = {8, 4, 8};
                for (int c = 0; c < 3; ++c) {
                    const double wanted =
                        model.rgb[3 * static_cast<std::size_t>(y * fit.width + x) + static_cast<std::size_t>(c)];
                    const double error = std::max({0.0, low[c] - wanted, wanted - (low[c] + step[c])});
                    sum += error;
                    max = std::max(max, error);
                }
            }
        }
        mean = sum / (3.0 * rows * fit.width);
        compared = true;
        EXPECT_LE(max, kMaxError);
        EXPECT_LE(mean, kMeanError);
    }

    const Row& row;
    std::vector<std::uint8_t> file;
    std::vector<std::uint8_t> buffer;
    std::span<const std::uint8_t> picture;
    bool probed = false;
    bool decoded = false;
    bool fitKnown = false;
    Fit fit;
    char colour = '-';
};

TEST(JpegSamples, AgreeWithTheirIndex) {
    DMB_OUTER_DATA(folder, "jpeg");
    const auto rows = ReadIndex(folder / "index.tsv");
    ASSERT_FALSE(rows.empty());
    double worstMean = 0;
    double worstMax = 0;
    int compared = 0;
    std::map<std::string, std::pair<double, double>> byReduction;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.at("file"));
        SampleCheck check(row, ReadFile(folder / row.at("file")));
        try {
            check.Run();
        } catch (const std::exception& problem) {
            ADD_FAILURE() << problem.what();
        }
        worstMean = std::max(worstMean, check.mean);
        worstMax = std::max(worstMax, check.max);
        auto& [mean, max] = byReduction["s" + row.at("s") + "x" + row.at("exact")];
        mean = std::max(mean, check.mean);
        max = std::max(max, check.max);
        compared += check.compared ? 1 : 0;
    }
    for (const auto& [name, worst] : byReduction) {
        RecordProperty(name + "_mean", std::to_string(worst.first));
        RecordProperty(name + "_max", std::to_string(worst.second));
        std::printf("%s mean %.3f max %.2f\n", name.c_str(), worst.first, worst.second);
    }
    std::printf("%d pictures compared: worst mean error %.3f, worst error %.2f\n", compared, worstMean, worstMax);
}

} // namespace
} // namespace jpeg
