// The program as a user starts it: exit statuses, what goes to which output, signals.
#include <signal.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <filesystem>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/support/Places.h"

namespace {

namespace fs = std::filesystem;

struct Outcome {
    int status = -1;
    std::string output;
};

// Runs a shell line in which DMBTV is the program.
Outcome Call(const std::string& line) {
    // A sanitizer's look for leaks at the end (font library, window library) would change the exit status.
    const std::string program =
        "export ASAN_OPTIONS=detect_leaks=0; DMBTV=" + testing_support::BinaryDir() + "/bin/dmbtv; ";
    Outcome outcome;
    FILE* pipe = popen((program + line).c_str(), "r");
    std::array<char, 4096> buffer;
    for (std::size_t got = 0; (got = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;)
        outcome.output.append(buffer.data(), got);
    const int ended = pclose(pipe);
    outcome.status = WIFEXITED(ended) ? WEXITSTATUS(ended) : -1;
    return outcome;
}

class ProgramTest : public ::testing::Test {
protected:
    ProgramTest() {
        std::string pattern = (fs::temp_directory_path() / "dmbtv-test-XXXXXX").string();
        base = mkdtemp(pattern.data());
        air = testing_support::SourceDir() + "/tests/data/broadcast";
        folders = " --profile " + base + "/profile --card " + base + "/card --device-root " + base + "/device ";
    }
    ~ProgramTest() override {
        std::error_code ignored;
        fs::remove_all(base, ignored);
    }
    std::string base, air, folders;
};

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

} // namespace

TEST_F(ProgramTest, HelpAndVersionGoToTheOutputAndAreNoErrors) {
    const Outcome help = Call("$DMBTV --help 2>/dev/null");
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(Contains(help.output, "130 interrupted"));
    const Outcome version = Call("$DMBTV --version 2>/dev/null");
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output.rfind("dmbtv ", 0), 0u);
    EXPECT_EQ(Call("$DMBTV scan --help 2>/dev/null").status, 0);
}

TEST_F(ProgramTest, WrongUsageIsStatus2) {
    EXPECT_EQ(Call("$DMBTV --nonsense 2>&1").status, 2);
    EXPECT_EQ(Call("$DMBTV --lang fr 2>&1").status, 2);
    EXPECT_EQ(Call("$DMBTV a --command b 2>&1").status, 2);
    const Outcome script = Call("echo 'dance' >" + base + "/s; $DMBTV --headless --script " + base + "/s 2>&1");
    EXPECT_EQ(script.status, 2);
    EXPECT_TRUE(Contains(script.output, "line 1: unknown line 'dance'"));
    const Outcome keys = Call("echo 'G = sing' >" + base + "/k; SDL_VIDEODRIVER=dummy $DMBTV --keys " + base + "/k " +
                              air + folders + " 2>&1");
    EXPECT_EQ(keys.status, 2);
    EXPECT_TRUE(Contains(keys.output, "no action is called 'sing'"));
}

TEST_F(ProgramTest, WhatCannotBeOpenedIsStatus3) {
    EXPECT_EQ(Call("$DMBTV --headless /no/such/source" + folders + "2>&1").status, 3);
    EXPECT_EQ(Call("$DMBTV --headless --script /no/such/script " + air + folders + "2>&1").status, 3);
    EXPECT_EQ(Call("$DMBTV scan /no/such/source --json" + folders + "2>&1").status, 3);
}

// Edge case: no display
TEST_F(ProgramTest, WithoutADisplayItSaysWhatToDo) {
    const Outcome outcome =
        Call("env -u DISPLAY -u WAYLAND_DISPLAY SDL_VIDEODRIVER=x11 $DMBTV " + air + folders + " 2>&1");
    EXPECT_EQ(outcome.status, 3);
    EXPECT_TRUE(Contains(outcome.output, "--headless")) << outcome.output;
}

TEST_F(ProgramTest, TheScanTellsAll21BlocksAndLeavesTheList) {
    const Outcome outcome = Call("$DMBTV scan " + air + " --json" + folders + "2>/dev/null");
    ASSERT_EQ(outcome.status, 0);
    const auto told = nlohmann::json::parse(outcome.output);
    ASSERT_EQ(told.at("blocks").size(), 21u);
    int listed = 0;
    for (const auto& block : told.at("blocks")) {
        EXPECT_TRUE(block.at("frequency").is_number());
        const std::string state = block.at("state");
        EXPECT_TRUE(state == "ok" || state == "no source" || state == "no sync" || state == "no services") << state;
        for (const auto& service : block.at("services"))
            listed += service.at("kind").is_number() ? 1 : 0;
    }
    const auto& block = told.at("blocks").at(15);
    EXPECT_EQ(block.at("block"), "12A");
    EXPECT_EQ(block.at("frequency"), 205280000);
    EXPECT_EQ(block.at("state"), "ok");
    EXPECT_EQ(told.at("blocks").at(0).at("state"), "no source");
    EXPECT_EQ(told.at("channels"), listed);
    EXPECT_EQ(fs::file_size(base + "/profile/DMBChannel.lst"), 32u * static_cast<unsigned>(listed));
}

TEST_F(ProgramTest, AScanFindsOutWhatIsWrongWithABlock) {
    fs::create_directories(base + "/air");
    std::system(("head -c 300000 /dev/zero >" + base + "/air/7A.eti").c_str());
    const Outcome outcome = Call("$DMBTV scan " + base + "/air --json" + folders + "2>/dev/null");
    ASSERT_EQ(outcome.status, 0);
    const auto told = nlohmann::json::parse(outcome.output);
    EXPECT_EQ(told.at("blocks").at(0).at("state"), "no sync");
    EXPECT_EQ(told.at("channels"), 0);
}

// Edge case: the profile folder is read-only
TEST_F(ProgramTest, AListThatCannotBeStoredIsTold) {
    const Outcome outcome = Call("$DMBTV scan " + air + " --json --profile /proc/nothing --card " + base +
                                 "/card --device-root " + base + "/device 2>&1 >/dev/null");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(Contains(outcome.output, "the channel list could not be written")) << outcome.output;
}

TEST_F(ProgramTest, AFailedExpectationIsStatus1WithLineWantedAndGot) {
    const Outcome outcome =
        Call("printf '# remark\\nexpect type 7\\n' >" + base + "/s; $DMBTV --headless " + air +
             " --log-level error --script " + base + "/s --transcript " + base + "/t" + folders + "2>&1");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(Contains(outcome.output, "line 2 (expect type 7): wanted 7, got ")) << outcome.output;
    EXPECT_TRUE(Contains(Call("cat " + base + "/t").output, "FAILED"));
}

TEST_F(ProgramTest, AnInterruptEndsInOrderWithStatus130) {
    for (const std::string window : {"--headless", ""}) {
        // The program itself tells when it is there: the pipe ends the waiting.
        const Outcome outcome =
            Call("SDL_VIDEODRIVER=dummy SDL_AUDIODRIVER=dummy; export SDL_VIDEODRIVER SDL_AUDIODRIVER; mkfifo " + base +
                 "/said" + window + "; $DMBTV " + window + " " + air + folders + " 2>" + base + "/said" + window +
                 " & read line <" + base + "/said" + window + "; kill -INT $!; wait $!");
        EXPECT_EQ(outcome.status, 130) << window;
        fs::remove_all(base + "/profile");
    }
}

// Edge case: no sound card
TEST_F(ProgramTest, WithoutASoundCardAWindowPlaysOn) {
    const Outcome outcome = Call("printf 'wait 100\\nexpect mode 4\\n' >" + base +
                                 "/s; SDL_VIDEODRIVER=dummy "
                                 "SDL_AUDIODRIVER=none-such $DMBTV " +
                                 air + " --script " + base + "/s" + folders + "2>&1");
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    EXPECT_TRUE(Contains(outcome.output, "no sound card")) << outcome.output;
}

// Edge case: the demodulator's command ends at once, or does not exist
TEST_F(ProgramTest, ACommandThatFailsIsABlockWithoutASource) {
    for (const char* command : {"/no/such/program {hz}", "false {block}"}) {
        const Outcome outcome =
            Call(std::string("$DMBTV scan --json --command '") + command + "'" + folders + "2>/dev/null");
        ASSERT_EQ(outcome.status, 0);
        EXPECT_EQ(nlohmann::json::parse(outcome.output).at("channels"), 0);
    }
}

// Edge case: the window is closed, or the program interrupted, while the demo broadcast is made
TEST_F(ProgramTest, LeavingWhileTheDemoIsMadeSaysSoAndLeavesNoHalfOfIt) {
    for (const std::string line : {"", " --headless", " demo"}) {
        const std::string cache = base + "/cache";
        const std::string begin = "export ASAN_OPTIONS=detect_leaks=0 XDG_CACHE_HOME=" + cache +
                                  " SDL_VIDEODRIVER=dummy SDL_AUDIODRIVER=dummy; echo $$; exec ";
        FILE* pipe = popen(
            (begin + testing_support::BinaryDir() + "/bin/dmbtv --log-level debug" + folders + line + " 2>&1").c_str(),
            "r");
        std::array<char, 4096> buffer;
        ASSERT_NE(fgets(buffer.data(), buffer.size(), pipe), nullptr);
        const int process = std::atoi(buffer.data());
        ASSERT_GT(process, 0);
        std::string told;
        bool asked = false;
        while (fgets(buffer.data(), buffer.size(), pipe) != nullptr) {
            told += buffer.data();
            if (!asked && Contains(told, "making the demo broadcast")) {
                asked = true;
                kill(process, SIGTERM);
            }
        }
        const int ended = pclose(pipe);
        EXPECT_TRUE(asked) << told;
        EXPECT_TRUE(WIFEXITED(ended));
        EXPECT_EQ(WEXITSTATUS(ended), 130) << told;
        EXPECT_TRUE(Contains(told, "making the demo broadcast was interrupted")) << told;
        EXPECT_FALSE(Contains(told, "services found")) << told;
        EXPECT_FALSE(fs::exists(cache + "/dmbview/demo/demo/recipe.txt"));
    }
}
