// How long a picture takes to 320x240 RGB565, class by class, against libjpeg-turbo and stb_image doing the same work.
//
//   cmake --preset bench && cmake --build --preset bench --target bench_jpeg
//   DMB_TEST_DATA=... build/bench/bin/bench_jpeg
//
// Pictures come from tests/data/jpeg/, and with DMB_TEST_DATA from its folder jpeg/ as well. A class is frame type, sampling
// and reduction, x at the end when no resampling runs, * when stb_image refuses
// the picture. All pictures of a class are decoded in turn; the fastest of the
// repetitions counts, as other work on the machine only adds.
#include "bench/jpeg_rivals.h"
#include "jpeg/Fit.h"
#include "jpeg/JpegDecoder.h"
#include "jpeg/MarkerReader.h"
#include "jpeg/PictureDecoder.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;
using Decoder = bool (*)(std::span<const std::uint8_t>, std::uint16_t*);

constexpr int kWidth = 320;
constexpr int kHeight = 240;

bool DecodeWithOurs(std::span<const std::uint8_t> data, std::uint16_t* pixels) {
    JpegImageInfo info{};
    info.noThumbnail = 1;
    return ImgDecodeJPEG(data.data(), static_cast<int>(data.size()), reinterpret_cast<unsigned char*>(pixels), kWidth,
                         kHeight, &info) == 1;
}

Bytes ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Empty for what is not to be measured: pictures that one of the decoders refuses or that are damaged on purpose.
std::string ClassOf(const std::filesystem::path& path, const Bytes& data) {
    const std::string name = path.filename().string();
    for (const char* damaged :
         {"flip-", "noise", "trunc", "afl", "fuzz", "crash", "bugs_", "extreme", "ImageTestSuite"}) {
        if (name.find(damaged) != std::string::npos) {
            return "";
        }
    }
    jpeg::MarkerReader reader(data);
    std::vector<std::uint16_t> pixels(kWidth * kHeight);
    if (!bench::DecodeWithTurbo(data, pixels.data()) || !DecodeWithOurs(data, pixels.data()) ||
        reader.ReadToFirstScan() != jpeg::Status::kOk) {
        return "";
    }
    const jpeg::Frame& frame = reader.GetFrame();
    const jpeg::Fit fit = jpeg::FitPicture(frame.width, frame.height, kWidth, kHeight);
    jpeg::SourceShape shape;
    if (fit.Empty() || jpeg::FindSubsampling(frame, reader.Colour(), shape) != jpeg::Status::kOk) {
        return "";
    }
    std::string text = frame.kind == jpeg::FrameKind::kBaseline ? "base" : "prog";
    if (frame.kind == jpeg::FrameKind::kBaseline && reader.Scan().componentCount != frame.componentCount) {
        text += "-multi";
    }
    if (reader.Colour() == jpeg::ColourModel::kYcc) {
        text += shape.chromaShiftX == 0 ? "-444" : shape.chromaShiftY == 0 ? "-422" : "-420";
    } else {
        text += reader.Colour() == jpeg::ColourModel::kGrey ? "-grey" : "-rgb";
    }
    const bool stbDecodes = bench::DecodeWithStb(data, pixels.data());
    return text + "-s" + std::to_string(fit.reduction) + (fit.exact ? "x" : "") + (stbDecodes ? "" : "*");
}

std::map<std::string, std::vector<Bytes>> LoadClasses() {
    std::vector<std::filesystem::path> folders{std::filesystem::path(DMB_SOURCE_DIR) / "tests/data/jpeg"};
    if (const char* outer = std::getenv("DMB_TEST_DATA")) {
        folders.push_back(std::filesystem::path(outer) / "jpeg");
    }
    std::map<std::string, std::vector<Bytes>> classes;
    for (const auto& folder : folders) {
        if (!std::filesystem::exists(folder)) {
            continue;
        }
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            const auto extension = entry.path().extension();
            if (!entry.is_regular_file() || (extension != ".jpg" && extension != ".jpeg")) {
                continue;
            }
            Bytes data = ReadFile(entry.path());
            const std::string name = ClassOf(entry.path(), data);
            if (!name.empty()) {
                classes[name].push_back(std::move(data));
            }
        }
    }
    return classes;
}

void Measure(benchmark::State& state, const std::vector<Bytes>& pictures, Decoder decode) {
    std::vector<std::uint16_t> pixels(kWidth * kHeight);
    for (const auto& picture : pictures) {
        if (!decode(picture, pixels.data())) {
            state.SkipWithError("refused");
            return;
        }
    }
    for ([[maybe_unused]] auto step : state) {
        for (const auto& picture : pictures) {
            benchmark::DoNotOptimize(decode(picture, pixels.data()));
        }
    }
}

// Keeps the fastest repetition of each run and prints the table at the end.
class RatioTable : public benchmark::ConsoleReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.error_occurred || run.run_type == Run::RT_Aggregate) {
                continue;
            }
            const std::string name = run.run_name.function_name;
            const std::size_t slash = name.find('/');
            double& best = times[name.substr(0, slash)][name.substr(slash + 1)];
            const double now = run.GetAdjustedCPUTime();
            best = best == 0 ? now : std::min(best, now);
        }
    }

    void Print(const std::map<std::string, std::vector<Bytes>>& classes) {
        std::printf("| class | pictures | ours, us | libjpeg-turbo | stb_image |\n|---|---|---|---|---|\n");
        std::vector<double> turbo;
        std::vector<double> stb;
        for (auto& [name, run] : times) {
            const std::size_t count = classes.at(name).size();
            std::printf("| %s | %zu | %.1f |%s|%s|\n", name.c_str(), count, run["ours"] / 1000 / count,
                        Ratio(run["turbo"], run["ours"], turbo).c_str(), Ratio(run["stb"], run["ours"], stb).c_str());
        }
        std::printf("| geometric mean | | | %.2f | %.2f |\n", GeometricMean(turbo), GeometricMean(stb));
        std::printf("| smallest | | | %.2f | %.2f |\n", Smallest(turbo), Smallest(stb));
    }

private:
    static std::string Ratio(double other, double ours, std::vector<double>& ratios) {
        if (other == 0 || ours == 0) {
            return " - ";
        }
        ratios.push_back(other / ours);
        char text[32];
        std::snprintf(text, sizeof text, " %.2f ", other / ours);
        return text;
    }
    static double GeometricMean(const std::vector<double>& ratios) {
        double sum = 0;
        for (const double ratio : ratios) {
            sum += std::log(ratio);
        }
        return ratios.empty() ? 0 : std::exp(sum / static_cast<double>(ratios.size()));
    }
    static double Smallest(const std::vector<double>& ratios) {
        return ratios.empty() ? 0 : *std::min_element(ratios.begin(), ratios.end());
    }

    std::map<std::string, std::map<std::string, double>> times; // by class, then by decoder
};

} // namespace

int main(int argc, char** argv) {
    // Interleaved, so that a busy moment of the machine meets all three alike.
    std::vector<char*> arguments(argv, argv + argc);
    std::string interleave = "--benchmark_enable_random_interleaving=true";
    arguments.push_back(interleave.data());
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    const auto classes = LoadClasses();
    const std::vector<std::pair<const char*, Decoder>> decoders = {
        {"ours", DecodeWithOurs}, {"turbo", bench::DecodeWithTurbo}, {"stb", bench::DecodeWithStb}};
    for (const auto& [name, pictures] : classes) {
        for (const auto& [who, decode] : decoders) {
            benchmark::RegisterBenchmark((name + "/" + who).c_str(), Measure, pictures, decode)
                ->MinTime(0.01)
                ->Repetitions(15);
        }
    }
    RatioTable table;
    benchmark::RunSpecifiedBenchmarks(&table);
    table.Print(classes);
    return 0;
}
