// The device's files: device paths on host folders, with the device's rules of sharing, and faults on demand.
//
// - A path belongs to the mount with the longest matching prefix. It can never lead out of the mount's
// folder.
// - Sharing is modelled by a table of what is open: an opening that conflicts with an earlier one fails. A
// handle that was
//   never closed keeps its file closed to others until the end.
// - In a mount that writes on close, a created file replaces the old one when its handle is closed and every
// write had
//   succeeded. A handle that is still open at the end commits nothing.
//
// Owner: Ce. Thread: any; one handle may be used from several threads, each call is done whole.
#pragma once

#include "host/ce/DevicePath.h"
#include "platform/wince.h"

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

namespace ce {

// What shall go wrong. Counted from the moment it is set.
struct FileFaults {
    // Concerns only paths that contain this text; empty: all.
    WString only = {};
    // Opening an existing file, creating a file or folder, asking for the free space fails.
    bool refuseOpen = false;
    bool refuseCreate = false;
    bool refuseFreeSpace = false;
    // Nothing exists on a removable mount, and what is open there fails.
    bool cardAbsent = false;
    // What the free-space query tells, in bytes.
    std::optional<ULONGLONG> freeBytes = std::nullopt;
    // So many bytes can still be read, or written; then reads and writes succeed with fewer, or writes fail.
    std::optional<ULONGLONG> readBytes = std::nullopt;
    std::optional<ULONGLONG> shortWriteAfter = std::nullopt;
    std::optional<ULONGLONG> diskFullAfter = std::nullopt;
};

struct FolderEntry {
    WString name;
    bool isFolder;
    ULONGLONG size;       // bytes; 0 for a folder
    TimeSeconds modified; // when it was last written
};

struct VolumeSpace {
    ULONGLONG freeForCaller, total, free; // bytes
};

class DMB_HOST_API DeviceFiles {
public:
    DeviceFiles();
    ~DeviceFiles();
    DeviceFiles(const DeviceFiles&) = delete;
    DeviceFiles& operator=(const DeviceFiles&) = delete;

    // Adds a mount. Before the first file is opened.
    void AddMount(Mount mount);
    void SetFaults(FileFaults faults);

    // As CreateFileW and its kin in platform/wince.h; on failure they set LastError.
    [[nodiscard]] HANDLE Open(const WCHAR* path, DWORD access, DWORD share, DWORD disposition);
    bool Read(HANDLE handle, void* buffer, DWORD size, DWORD& done);
    bool Write(HANDLE handle, const void* buffer, DWORD size, DWORD& done);
    [[nodiscard]] std::optional<ULONGLONG> Seek(HANDLE handle, LONGLONG distance, DWORD method);
    [[nodiscard]] std::optional<ULONGLONG> Size(HANDLE handle);
    bool Close(HANDLE handle);

    // Gives a file this content in one step, wherever it lies: a reader finds all of the old content or all of the new.
    bool Replace(const WCHAR* path, std::span<const BYTE> content);

    bool MakeFolder(const WCHAR* path);
    [[nodiscard]] bool FolderExists(const WCHAR* path);
    // What a folder holds, sorted by name, without what the host hides (names that begin with a dot).
    // Nothing when there is no such folder.
    [[nodiscard]] std::optional<std::vector<FolderEntry>> List(const WCHAR* path);
    [[nodiscard]] std::optional<VolumeSpace> Space(const WCHAR* folder);

    // Handles that nobody has closed yet, for leak checks.
    [[nodiscard]] std::size_t OpenCount() const;

private:
    struct OpenFile;

    // A location that exists as far as faults are concerned; otherwise nothing, with LastError set.
    [[nodiscard]] std::optional<Location> Resolve(const WCHAR* path) const;
    [[nodiscard]] bool Concerns(const WString& path) const;
    [[nodiscard]] bool IsShared(const std::string& key, DWORD access, DWORD share) const;
    [[nodiscard]] bool OpenOnHost(OpenFile& file, const Location& location, DWORD disposition) const;
    [[nodiscard]] std::shared_ptr<OpenFile> Find(HANDLE handle) const;
    // Has its card been taken out while it was open?
    [[nodiscard]] bool IsGone(const OpenFile& file) const;
    // How many of `size` bytes an allowance lets pass; they are taken from it.
    DWORD Spend(const OpenFile& file, std::optional<ULONGLONG> FileFaults::*allowance, DWORD size);

    mutable std::mutex mutex_; // guards what follows
    std::vector<Mount> mounts_;
    FileFaults faults_;
    std::map<HANDLE, std::shared_ptr<OpenFile>> open_;
    std::uintptr_t nextHandle_ = 0x100;
};

} // namespace ce
