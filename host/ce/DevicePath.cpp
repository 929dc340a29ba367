#include "host/ce/DevicePath.h"

#include "host/ce/Text.h"

#include <algorithm>

namespace ce {

namespace {

bool IsPossibleName(WStringView name) {
    if (name == WTEXT(".") || name == WTEXT("..") || !IsWellFormed(name))
        return false;
    return std::none_of(name.begin(), name.end(), [](WCHAR unit) {
        return unit < 0x20 || WStringView(WTEXT("/:*?\"<>|")).find(unit) != WStringView::npos;
    });
}

bool EqualsIgnoringCase(const std::string& a, const std::string& b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [&](char x, char y) { return lower(x) == lower(y); });
}

} // namespace

std::optional<std::vector<std::string>> SplitDevicePath(WStringView path) {
    constexpr WCHAR kSeparator = '\\';
    if (path.empty() || path[0] != kSeparator)
        return std::nullopt;
    std::vector<std::string> names;
    while (!path.empty()) {
        const WStringView name = path.substr(0, path.find(kSeparator));
        path.remove_prefix(std::min(name.size() + 1, path.size()));
        if (name.empty())
            continue;
        if (!IsPossibleName(name))
            return std::nullopt;
        names.push_back(ToUtf8(name));
    }
    return names;
}

std::string Location::Key() const {
    std::string key = mount->host.native();
    for (const std::string& name : names)
        key += '/' + name;
    return key;
}

std::optional<Location> Locate(const std::vector<Mount>& mounts, WStringView path) {
    const auto names = SplitDevicePath(path);
    if (!names)
        return std::nullopt;
    std::optional<Location> best;
    std::size_t bestSize = 0;
    for (const Mount& mount : mounts) {
        const auto prefix = SplitDevicePath(mount.device);
        if (!prefix || prefix->size() > names->size() || (best && prefix->size() <= bestSize))
            continue;
        if (!std::equal(prefix->begin(), prefix->end(), names->begin(), EqualsIgnoringCase))
            continue;
        bestSize = prefix->size();
        best = Location{&mount, {names->begin() + static_cast<std::ptrdiff_t>(bestSize), names->end()}};
    }
    return best;
}

} // namespace ce
