// A shell on a manual clock with the product's skin and folders of its own.
#pragma once

#include "host/ce/Ce.h"
#include "host/shell/Shell.h"
#include "tests/shell/TestView.h"
#include "tests/support/Places.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <unistd.h>

namespace shell {

class ShellFixture : public testing::Test {
protected:
    ShellFixture() {
        const auto* info = testing::UnitTest::GetInstance()->current_test_info();
        root = std::filesystem::temp_directory_path() /
               ("dmbshell-" + std::to_string(getpid()) + "-" + info->test_suite_name() + "-" + info->name());
        std::filesystem::remove_all(root);
        std::filesystem::create_directories(root / "device");
        std::filesystem::create_directories(root / "profile");
        std::filesystem::create_directories(root / "card");
        system.files().AddMount({u"\\", root / "device"});
        system.files().AddMount({u"\\Profile", root / "profile", ce::Mount::Writing::OnClose});
        system.files().AddMount({u"\\SDMMC Card", root / "card", ce::Mount::Writing::InPlace, true});
        ::shell::Setup setup;
        setup.skinFolder = std::filesystem::path(testing_support::BinaryDir()) / "skin";
        shell = std::make_unique<Shell>(system, setup);
        TestView::Calls().clear();
        TestView::RefuseCreate() = false;
    }
    ~ShellFixture() override {
        if (shell->View()) {
            shell->CloseView();
        }
        shell->RunUntilIdle();
        EXPECT_EQ(shell->Leaks(), std::vector<std::string>{});
        shell.reset();
        std::filesystem::remove_all(root);
    }

    TestView& Open() { return *static_cast<TestView*>(shell->OpenView(TestView::classTestView)); }
    [[nodiscard]] bool Logged(const std::string& line) const {
        const auto lines = shell->Log();
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    }
    using Calls = std::vector<std::string>;

    std::filesystem::path root;
    ce::ManualClock clock;
    ce::Ce system{clock};
    std::unique_ptr<Shell> shell;
};

} // namespace shell
