// Device paths of any content: none names a way out of its mount.
#include "host/ce/DevicePath.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::vector<ce::Mount> mounts{
        {WTEXT("\\"), "/root"}, {WTEXT("\\SDMMC Card"), "/card"}, {WTEXT("\\Profile"), "/profile"}};
    WString path(size / 2, WCHAR{0});
    for (std::size_t i = 0; i < path.size(); ++i)
        path[i] = static_cast<WCHAR>(data[2 * i] | data[2 * i + 1] << 8);

    const auto location = ce::Locate(mounts, path);
    if (location.has_value() != ce::SplitDevicePath(path).has_value())
        std::abort(); // the root takes every possible path
    if (!location)
        return 0;
    for (const std::string& name : location->names)
        if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos ||
            name.find('\0') != std::string::npos)
            std::abort();
    return 0;
}
