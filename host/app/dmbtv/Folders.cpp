#include "host/app/dmbtv/Folders.h"

#include <cstdlib>
#include <fstream>

namespace dmbtv {

namespace {

std::filesystem::path Home() {
    const char* home = std::getenv("HOME");
    return home != nullptr && *home != '\0' ? home : "/";
}

// The folder that a variable names; relative ones do not count.
std::filesystem::path UserFolder(const char* variable, const char* below) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value == '/' ? std::filesystem::path(value) : Home() / below;
}

} // namespace

std::filesystem::path UserDirectoryOf(const std::string& line, const std::string& key, const std::string& home) {
    const std::string begin = key + "=\"";
    const std::size_t end = line.rfind('"');
    if (line.compare(0, begin.size(), begin) != 0 || end < begin.size())
        return {};
    std::string value = line.substr(begin.size(), end - begin.size());
    constexpr std::string_view kHome = "$HOME";
    if (value.compare(0, kHome.size(), kHome) == 0)
        value = home + value.substr(kHome.size());
    return !value.empty() && value.front() == '/' ? std::filesystem::path(value) : std::filesystem::path();
}

std::filesystem::path ConfigFolder() {
    return UserFolder("XDG_CONFIG_HOME", ".config") / "dmbview";
}

std::filesystem::path CacheFolder() {
    return UserFolder("XDG_CACHE_HOME", ".cache") / "dmbview";
}

std::filesystem::path VideoFolder() {
    std::ifstream file(UserFolder("XDG_CONFIG_HOME", ".config") / "user-dirs.dirs");
    for (std::string line; std::getline(file, line);) {
        if (std::filesystem::path folder = UserDirectoryOf(line, "XDG_VIDEOS_DIR", Home().string()); !folder.empty())
            return folder;
    }
    return Home() / "Videos";
}

} // namespace dmbtv
