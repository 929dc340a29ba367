// A device for one test: system core with a manual clock, folders of its own, class table, scripted tuner, shell.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/ce/Ce.h"
#include "host/dshow/ClassTable.h"
#include "host/shell/Shell.h"
#include "tests/tuner/ScriptedTuner.h"
#include "tuner/ChannelRecord.h"

namespace harness {

// Host folder that holds a device's folders; removed with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path path;
};

// The module as it was built, and the folder of the product's skin.
[[nodiscard]] std::filesystem::path ModulePath();
[[nodiscard]] std::filesystem::path ProductSkin();
[[nodiscard]] std::filesystem::path TestData(const std::string& relativePath);

// Everything below the module, in the order in which a program builds it.
class Device {
public:
    explicit Device(const std::filesystem::path& skin);
    ~Device();

    // Host paths of the device's folders.
    [[nodiscard]] std::filesystem::path Profile() const { return folder.path / "profile"; }
    [[nodiscard]] std::filesystem::path Card() const { return folder.path / "card"; }
    [[nodiscard]] std::filesystem::path Root() const { return folder.path / "root"; }

    void WriteProfile(const std::string& bytes) const;
    [[nodiscard]] std::string ReadProfile() const;
    void WriteChannels(const std::vector<ChannelRecord>& records) const;

    TemporaryFolder folder;
    ce::ManualClock clock;
    ce::Ce ce;
    dshow::ClassTable classes;
    shell::Shell shell;
};

// A record for a list.
[[nodiscard]] ChannelRecord Channel(DWORD frequency, const std::string& label, DWORD id, LONG kind);

[[nodiscard]] std::string ReadFile(const std::filesystem::path& file);
void WriteFile(const std::filesystem::path& file, const std::string& bytes);

} // namespace harness
