// The thinnest whole path: load the module, create its view by name, configure it, draw one frame, unload; twice.
#include <dlfcn.h>

#include <gtest/gtest.h>

#include "tests/harness/DeviceFixture.h"

using harness::Device;

namespace {

bool IsLoaded(const std::filesystem::path& module) {
    void* handle = dlopen(module.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr)
        dlclose(handle);
    return handle != nullptr;
}

bool LogHas(const shell::Shell& shell, const std::string& part) {
    for (const std::string& line : shell.Log()) {
        if (line.find(part) != std::string::npos)
            return true;
    }
    return false;
}

} // namespace

TEST(WalkingPath, LoadCreateConfigureDrawUnloadTwice) {
    Device device(harness::TestData("skin-two"));
    for (int round = 0; round < 2; ++round) {
        ASSERT_FALSE(IsLoaded(harness::ModulePath()));
        ASSERT_EQ(device.shell.LoadModule(harness::ModulePath()), "");
        ASSERT_TRUE(IsLoaded(harness::ModulePath()));

        CVelPlayerView* view = device.shell.OpenView("CVelDMBView");
        ASSERT_NE(view, nullptr);
        EXPECT_EQ(WString(view->GetAlias()), WTEXT("디지털방송"));
        EXPECT_EQ(WString(view->GetResourceName()), WTEXT("VelDMB"));
        EXPECT_STREQ(view->GetRuntimeClass()->className, "CVelDMBView");
        EXPECT_TRUE(view->IsKindOf(&CVelPlayerView::classCVelPlayerView));

        device.shell.RunUntilIdle();
        EXPECT_TRUE(LogHas(device.shell, "tuner.Open"));
        // No list file: the information text says that there are no channels.
        ASSERT_NE(view->Find(43), nullptr);
        EXPECT_EQ(WString(view->Find(43)->GetText()), WTEXT("채널이 없습니다."));
        EXPECT_EQ(view->Find(99), nullptr);

        const auto picture = device.folder.path / "frame.png";
        ASSERT_TRUE(device.shell.Screenshot(picture));
        const std::string png = harness::ReadFile(picture);
        EXPECT_EQ(png.substr(1, 3), "PNG");
        EXPECT_GT(png.size(), 1000u); // text is on it

        EXPECT_TRUE(device.shell.CloseView());
        device.shell.RunUntilIdle();
        EXPECT_EQ(scripted::Tuner().controlsAlive, 0);
        EXPECT_EQ(scripted::Tuner().streamsAlive, 0);
        EXPECT_EQ(device.shell.Leaks(), std::vector<std::string>{});
        EXPECT_TRUE(device.shell.UnloadModule(harness::ModulePath()));
    }
    EXPECT_FALSE(IsLoaded(harness::ModulePath()));
    EXPECT_EQ(device.shell.OpenView("CVelDMBView"), nullptr); // withdrawn with its library
}

TEST(WalkingPath, ModuleThatIsNotThereIsNamedWithTheReason) {
    Device device(harness::TestData("skin-two"));
    const std::string reason = device.shell.LoadModule("/nowhere/libveldmb.so");
    EXPECT_NE(reason.find("/nowhere/libveldmb.so"), std::string::npos) << reason;
    EXPECT_NE(reason.find("No such file"), std::string::npos) << reason;
}

TEST(WalkingPath, UnknownClassGivesNoView) {
    Device device(harness::TestData("skin-two"));
    ASSERT_EQ(device.shell.LoadModule(harness::ModulePath()), "");
    EXPECT_EQ(device.shell.OpenView("CNoSuchView"), nullptr);
    EXPECT_EQ(device.shell.OpenView("CVelPlayerView"), nullptr); // known, but not to be created by name
}

TEST(WalkingPath, SettingsSurviveARestart) {
    Device device(harness::TestData("skin-two"));
    device.WriteProfile(std::string("\x10\0\x02\0\x03\0\x0A\0\x14\0\x1E\0\x28\0\x01\0", 16));
    ASSERT_EQ(device.shell.LoadModule(harness::ModulePath()), "");
    ASSERT_NE(device.shell.OpenView("CVelDMBView"), nullptr);
    device.shell.RunUntilIdle();
    device.shell.SaveAll();
    EXPECT_EQ(device.ReadProfile(), std::string("\x10\0\x02\0\x03\0\x0A\0\x14\0\x1E\0\x28\0\x01\0", 16));
    EXPECT_TRUE(device.shell.CloseView());
}
