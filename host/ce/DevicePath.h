// Device paths and where they lie on the host. Pure: nothing here touches a file.
#pragma once

#include "platform/types.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace ce {

// A folder of the device that is a folder of the host.
struct Mount {
    enum class Writing {
        InPlace, // captures, slides: a reader of the host sees the file grow
        OnClose, // profile: a new file takes the old one's place when it is complete, or never
    };
    WString device;             // "\" or "\SDMMC Card"
    std::filesystem::path host; // an existing folder; if it does not exist, the card is out
    Writing writing = Writing::InPlace;
    bool removable = false; // a card: FileFaults::cardAbsent takes it out
};

// The names of an absolute device path, outermost first, as UTF-8; none for the root "\". Several separators
// count as one and a final one is ignored. Nothing when the path is not absolute or a name is impossible: "."
// and "..", a character that the device's file system refuses (/ : * ? " < > | and control characters), half
// a surrogate pair.
[[nodiscard]] DMB_HOST_API std::optional<std::vector<std::string>> SplitDevicePath(WStringView path);

// A device path below one of the mounts.
struct Location {
    const Mount* mount = nullptr;
    std::vector<std::string> names;        // below the mount's host folder
    [[nodiscard]] std::string Key() const; // equal for equal places
};

// Finds the mount with the longest matching prefix; its name compares without regard to (ASCII) case, as on a
// card.
[[nodiscard]] DMB_HOST_API std::optional<Location> Locate(const std::vector<Mount>& mounts, WStringView path);

} // namespace ce
