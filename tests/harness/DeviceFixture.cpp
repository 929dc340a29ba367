#include "tests/harness/DeviceFixture.h"
#include "tests/support/Places.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>

#include <stdlib.h>

namespace harness {

namespace {

std::filesystem::path MakeTemporary() {
    std::string pattern = (std::filesystem::temp_directory_path() / "dmbview-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("no temporary folder");
    for (const char* part : {"profile", "card", "root"})
        std::filesystem::create_directory(std::filesystem::path(pattern) / part);
    return pattern;
}

// The device's folders must be mounted before the first file is opened.
ce::Ce& Mounted(ce::Ce& ce, const std::filesystem::path& folder) {
    ce.files().AddMount({WTEXT("\\"), folder / "root"});
    ce.files().AddMount({WTEXT("\\Profile"), folder / "profile", ce::Mount::Writing::OnClose});
    ce.files().AddMount({WTEXT("\\SDMMC Card"), folder / "card", ce::Mount::Writing::InPlace, true});
    return ce;
}

shell::Setup SetupFor(const std::filesystem::path& skin) {
    shell::Setup setup;
    setup.skinFolder = skin;
    setup.profileDirectory = WTEXT("\\Profile\\");
    return setup;
}

} // namespace

TemporaryFolder::TemporaryFolder() : path(MakeTemporary()) {}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

std::filesystem::path ModulePath() {
    return std::filesystem::path(testing_support::BinaryDir()) / "lib/libveldmb.so";
}

std::filesystem::path ProductSkin() {
    return std::filesystem::path(testing_support::BinaryDir()) / "skin";
}

std::filesystem::path TestData(const std::string& relativePath) {
    return std::filesystem::path(testing_support::SourceDir()) / "tests/data" / relativePath;
}

Device::Device(const std::filesystem::path& skin)
    : ce(clock), classes(clock), shell(Mounted(ce, folder.path), SetupFor(skin)) {
    scripted::ResetTuner();
    scripted::Tuner().listener = [this](const std::string& line) { shell.Note(line); };
}

Device::~Device() {
    scripted::ResetTuner();
}

void Device::WriteProfile(const std::string& bytes) const {
    WriteFile(Profile() / "DMB.dat", bytes);
}

std::string Device::ReadProfile() const {
    return ReadFile(Profile() / "DMB.dat");
}

void Device::WriteChannels(const std::vector<ChannelRecord>& records) const {
    std::string bytes;
    for (const ChannelRecord& record : records) {
        const ChannelRecordImage image = EncodeChannelRecord(record);
        bytes.append(image.begin(), image.end());
    }
    WriteFile(Profile() / "DMBChannel.lst", bytes);
}

ChannelRecord Channel(DWORD frequency, const std::string& label, DWORD id, LONG kind) {
    ChannelRecord record{frequency, {}, id, kind};
    std::memcpy(record.label, label.data(), std::min(label.size(), sizeof record.label - 1));
    return record;
}

std::string ReadFile(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void WriteFile(const std::filesystem::path& file, const std::string& bytes) {
    std::ofstream(file, std::ios::binary) << bytes;
}

} // namespace harness
