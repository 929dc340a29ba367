// The transmitter before judges that share no line with it: an independent DAB receiver and an independent player.
#include <array>
#include <cstdio>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "host/headend/Headend.h"
#include "host/headend/Programme.h"
#include "tests/support/OuterData.h"
#include "tests/support/Places.h"

namespace {

struct Answer {
    int status = 0;
    std::string text;
};

Answer Ask(const std::string& command) {
    Answer answer;
    std::FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr)
        return {-1, {}};
    std::array<char, 4096> buffer{};
    for (std::size_t size = 0; (size = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;)
        answer.text.append(buffer.data(), size);
    const int status = pclose(pipe);
    answer.status = WEXITSTATUS(status);
    return answer;
}

bool Has(const Answer& answer, const std::string& part) {
    return answer.text.find(part) != std::string::npos;
}

const std::string kServices = R"(
    {"kind": "television", "id": "0xF1E00401", "label": {"text": "TELEVISION"}, "subChannel": 1, "bitRate": 544,
     "video": {"scene": "city", "framesPerSecond": 15}, "sound": {"melody": "joy"}},
    {"kind": "radio", "id": "0xE201", "label": {"text": "FULL RATE"}, "subChannel": 2, "bitRate": 160,
     "protection": "UEP 3", "padBytes": 88, "texts": [{"text": "Hello"}], "slides": [{"title": "Slide"}],
     "sound": {"melody": "tone:440"}},
    {"kind": "radio", "id": "0xE202", "label": {"text": "HALF RATE"}, "subChannel": 3, "bitRate": 64,
     "padBytes": 58, "texts": [{"text": "Hello"}], "sound": {"melody": "tone:440", "sampleRate": 24000, "channels": 1}})";

headend::Description Load() {
    return headend::ParseDescription(
        R"({"seconds": 3, "ensembles": [{"block": "8B", "id": "0xE1A0", "label": {"text": "TEST ENSEMBLE"}, "services": [)" +
            kServices + "]}]}",
        "x", {});
}

const std::string kTools = testing_support::SourceDir() + "/tools/";

TEST(IndependentReceiver, ListsAndDecodesTheRadioServices) {
    const std::filesystem::path directory = std::filesystem::path(testing_support::BinaryDir()) / "headend_dablin";
    headend::WriteBroadcast(headend::MakeBroadcast(Load()), directory);
    const std::string file = (directory / "8B.eti").string();
    const Answer full = Ask(kTools + "check_with_dablin.sh " + file + " 0xE201");
    if (full.status == 3) {
        testing_support::ReportNotRun("the program dablin");
        return;
    }
    EXPECT_TRUE(Has(full, "ensemble label 'TEST ENSEMBLE'")) << full.text;
    EXPECT_TRUE(Has(full, "SId 0xE201: programme service label 'FULL RATE'")) << full.text;
    EXPECT_TRUE(Has(full, "SId 0xE202: programme service label 'HALF RATE'")) << full.text;
    EXPECT_TRUE(Has(full, "SubChId  2: start 408 CUs, size 116 CUs, PL UEP 3   = 160 kBit/s")) << full.text;
    EXPECT_TRUE(Has(full, "SId 0xE201, SCIdS  0: Slideshow")) << full.text;
    EXPECT_TRUE(Has(full, "48 kHz Stereo @ 160 kBit/s")) << full.text;
    EXPECT_FALSE(Has(full, "CRC")) << full.text;
    EXPECT_FALSE(Has(full, "error")) << full.text;
    const Answer half = Ask(kTools + "check_with_dablin.sh " + file + " 0xE202");
    EXPECT_TRUE(Has(half, "24 kHz Mono @ 64 kBit/s")) << half.text;

    // Samples of four bytes: all of the three seconds but what passes before the service is known.
    const auto bytes = [](const Answer& answer) {
        const std::size_t at = answer.text.find("pcm bytes: ");
        return at == std::string::npos ? 0 : std::stoul(answer.text.substr(at + 11));
    };
    EXPECT_GT(bytes(full), 2.0 * 48000 * 2 * 4);
    EXPECT_GT(bytes(half), 2.0 * 24000 * 4);
    std::filesystem::remove_all(directory);
}

TEST(IndependentPlayer, ShowsThePicture) {
    const headend::Description description = Load();
    const auto& service = description.ensembles[0].services[0];
    const auto stream = headend::MakeTransportStream(description, service, {0, 125, 544});
    const std::string file = testing_support::BinaryDir() + "/headend_picture.ts";
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(stream.packets.data()),
               static_cast<std::streamsize>(stream.packets.size()));
    const Answer answer = Ask(kTools + "check_picture.sh " + file);
    std::filesystem::remove(file);
    if (answer.status == 3) {
        testing_support::ReportNotRun("the programs ffprobe and ffmpeg");
        return;
    }
    EXPECT_EQ(answer.text, "320x240 Constrained Baseline pictures 45\n");
}

} // namespace
