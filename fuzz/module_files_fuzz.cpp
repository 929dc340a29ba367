// The module's two files: settings and channel list, of any length and content.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <span>

#include <unistd.h>

#include "host/ce/Ce.h"
#include "tuner/ChannelList.h"
#include "view/ProfileRecord.h"

namespace {

// One list file on a device path, written anew for every input.
struct Device {
    Device()
        : folder(std::filesystem::temp_directory_path() / ("module_files_fuzz." + std::to_string(::getpid()))),
          ce(clock) {
        std::filesystem::create_directories(folder);
        ce.files().AddMount({WTEXT("\\Profile"), folder, ce::Mount::Writing::OnClose});
    }
    ~Device() { std::filesystem::remove_all(folder); }

    std::filesystem::path folder;
    ce::ManualClock clock;
    ce::Ce ce;
};

void Check(bool holds) {
    if (!holds)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Device device;
    const std::span<const BYTE> bytes(data, size);

    if (const auto profile = DecodeProfile(bytes)) {
        Check(size >= kProfileBytes);
        Check(profile->currentChannel >= -1 && profile->currentChannel < 65535);
        // What is written reads back as the same record.
        const auto again = DecodeProfile(EncodeProfile(*profile, kProfileBytes));
        Check(again && again->currentChannel == profile->currentChannel && again->recordTime == profile->recordTime);
    }

    std::ofstream(device.folder / "DMBChannel.lst", std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    ChannelList list;
    const int count = list.LoadChannelList(WTEXT("\\Profile\\DMBChannel.lst"));
    Check(count == static_cast<int>((size + kChannelRecordBytes - 1) / kChannelRecordBytes));
    ChannelRecord record;
    for (int i = 0; i < count; ++i) {
        Check(list.GetRecordAt(i, record));
        Check(WidenChannelLabel(record).size() < kChannelLabelBytes);
        (void)LibraryServiceType(record);
    }
    Check(!list.GetRecordAt(count, record));
    return 0;
}
