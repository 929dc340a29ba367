// The program itself, on the short recordings.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "tests/support/Places.h"

namespace {

namespace fs = std::filesystem;

const fs::path kData = fs::path(testing_support::SourceDir()) / "tests/data/broadcast";

struct Result {
    int status = -1;
    std::string output;
};

Result Probe(const std::string& arguments) {
    const std::string command = testing_support::BinaryDir() + "/bin/dmbprobe " + arguments + " 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    Result result;
    char text[4096];
    while (const std::size_t got = std::fread(text, 1, sizeof text, pipe))
        result.output.append(text, got);
    result.status = WEXITSTATUS(pclose(pipe));
    return result;
}

std::string Read(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

class DmbProbe : public ::testing::Test {
protected:
    void SetUp() override { fs::create_directories(folder); }
    void TearDown() override { fs::remove_all(folder); }
    const fs::path folder = fs::temp_directory_path() / ("dmbprobe-" + std::to_string(getpid()));
};

TEST_F(DmbProbe, TsFindsTheServiceInAFolder) {
    const fs::path out = folder / "one.ts";
    EXPECT_EQ(Probe("ts " + kData.string() + " --service 'TV ONE' " + out.string()).status, 0);
    const std::string packets = Read(out);
    ASSERT_EQ(packets.size(), 309u * 188u);
    for (std::size_t at = 0; at < packets.size(); at += 188) {
        EXPECT_EQ(packets[at], 0x47);
        EXPECT_EQ(packets[at + 1] & 0x80, 0);
    }
}

TEST_F(DmbProbe, TsReadsStandardInput) {
    const fs::path out = folder / "one.ts";
    EXPECT_EQ(Probe("ts - --service 0xF1E00401 " + out.string() + " < " + (kData / "12A.eti").string()).status, 0);
    EXPECT_EQ(fs::file_size(out), 309u * 188u);
    const fs::path piped = folder / "piped.ts";
    const std::string file = (kData / "12A.eti").string();
    EXPECT_EQ(std::system(("cat " + file + " | " + testing_support::BinaryDir() +
                           "/bin/dmbprobe ts - --service 'TV ONE' " + piped.string() + " 2> /dev/null")
                              .c_str()),
              0);
    EXPECT_EQ(Read(piped), Read(out));
}

TEST_F(DmbProbe, PadWritesTheTexts) {
    EXPECT_EQ(Probe("pad " + (kData / "8B.eti").string() + " --service KURZ " + (folder / "pad").string()).status, 0);
    EXPECT_EQ(Read(folder / "pad/labels.txt"), "UTF-8: Zażółć gęślą jaźń — Ελλάδα — Москва\n");
}

TEST_F(DmbProbe, AudioWritesEveryFrame) {
    const fs::path out = folder / "a.wav";
    EXPECT_EQ(Probe("audio " + (kData / "8B.eti").string() + " --service '한국방송 라디오' " + out.string()).status, 0);
    EXPECT_EQ(fs::file_size(out), 44u + 120u * 1152u * 2u);
    // A label as a channel list shows it, where code page 949 lacks its letters.
    EXPECT_EQ(Probe("audio " + (kData / "8B.eti").string() + " --service 0xE204 " + out.string()).status, 0);
    EXPECT_EQ(fs::file_size(out), 44u + 60u * 1152u * 2u);
}

TEST_F(DmbProbe, FicAndInfoNameWhatIsThere) {
    const Result fic = Probe("fic " + kData.string());
    EXPECT_EQ(fic.status, 0);
    EXPECT_NE(fic.output.find("0xE203 \"한국방송 라디오\" radio"), std::string::npos);
    EXPECT_NE(fic.output.find("0xF1E00402 \"TV TWO SIXTEEN16\" television"), std::string::npos);
    const Result info = Probe("info " + kData.string());
    EXPECT_EQ(info.status, 0);
    EXPECT_NE(info.output.find("packets 309, corrected 0"), std::string::npos);
    EXPECT_NE(info.output.find("all is well"), std::string::npos);
}

TEST_F(DmbProbe, ExitStatusesTellWhatWasWrong) {
    const std::string out = (folder / "x").string();
    EXPECT_EQ(Probe("ts /no/such/file --service A " + out).status, 3);
    EXPECT_EQ(Probe("ts " + kData.string() + " --service NOBODY " + out).status, 5);
    EXPECT_EQ(Probe("ts " + kData.string() + " --service KURZ " + out).status, 5);
    EXPECT_EQ(Probe("ts " + kData.string()).status, 2);
    EXPECT_EQ(Probe("info " + (kData / "README.md").string()).status, 4);
    EXPECT_NE(Probe("info " + (kData / "README.md").string()).output.find("no ETI frame found"), std::string::npos);
    EXPECT_EQ(Probe("--help").status, 0);
}

} // namespace
