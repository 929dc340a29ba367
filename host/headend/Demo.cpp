#include "host/headend/Demo.h"

#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace headend {

// Both made by MakeRecipe.cmake.
extern const char* const kDemoJson;
extern const char* const kSourceHash;

namespace {

constexpr const char* kStampName = "recipe.txt";

// What stands in the stamp file: the recipe, and name and size of each file, so that a file cut short is noticed.
std::string MakeStamp(const std::string& recipe, const std::filesystem::path& directory,
                      const std::set<std::string>& names) {
    std::ostringstream stamp;
    stamp << recipe << '\n';
    for (const std::string& name : names) {
        std::error_code error;
        const auto size = std::filesystem::file_size(directory / name, error);
        stamp << name << ' ' << (error ? 0 : size) << '\n';
    }
    return stamp.str();
}

std::string ReadStamp(const std::filesystem::path& directory) {
    std::ifstream file(directory / kStampName, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The files that a stamp lists, of those that can have been written by us.
std::set<std::string> NamesIn(const std::string& stamp) {
    std::set<std::string> names;
    std::istringstream lines(stamp);
    std::string line;
    std::getline(lines, line); // the recipe
    while (std::getline(lines, line)) {
        const std::string name = line.substr(0, line.find(' '));
        if (name.ends_with(".eti") && name.find('/') == std::string::npos)
            names.insert(name);
    }
    return names;
}

} // namespace

std::string_view DemoDescription() {
    return kDemoJson;
}

std::string DemoRecipe() {
    return std::string(kSourceHash) + " libavcodec " + std::to_string(avcodec_version());
}

std::filesystem::path EnsureDemo(const std::filesystem::path& cacheDirectory, const Progress& progress,
                                 const std::stop_token& stop) {
    const std::filesystem::path directory = cacheDirectory / "demo";
    EnsureBroadcast(DemoDescription(), DemoRecipe(), directory, progress, stop);
    return directory;
}

void EnsureBroadcast(std::string_view json, const std::string& recipe, const std::filesystem::path& directory,
                     const Progress& progress, const std::stop_token& stop) {
    const Description description = ParseDescription(json, "built-in demo", {});
    std::set<std::string> names;
    for (const EnsembleDescription& ensemble : description.ensembles)
        names.insert(ensemble.block + ".eti");
    if (ReadStamp(directory) == MakeStamp(recipe, directory, names))
        return;

    const std::set<std::string> before = NamesIn(ReadStamp(directory));
    const Broadcast broadcast = MakeBroadcast(description, progress, stop);
    std::error_code error;
    // The stamp goes first and comes last: whatever happens between, the files do not count as whole.
    std::filesystem::remove(directory / kStampName, error);
    WriteBroadcast(broadcast, directory);
    // A block that the recipe no longer has would still be found by whoever looks into the directory.
    for (const std::string& name : before) {
        if (names.count(name) == 0)
            std::filesystem::remove(directory / name, error);
    }
    std::ofstream file(directory / kStampName, std::ios::binary | std::ios::trunc);
    file << MakeStamp(recipe, directory, names);
    file.close();
    if (!file)
        throw std::runtime_error((directory / kStampName).string() + ": cannot be written");
}

} // namespace headend
