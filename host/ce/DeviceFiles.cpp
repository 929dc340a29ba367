#include "host/ce/DeviceFiles.h"

#include "host/ce/Error.h"
#include "host/ce/HostFile.h"
#include "host/ce/Text.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace ce {

struct DeviceFiles::OpenFile {
    WString path;
    std::string key;
    DWORD access = 0;
    DWORD share = 0;
    bool removable = false;

    std::mutex mutex; // guards what follows
    Descriptor file;
    std::optional<PendingFile> pending; // the file is to replace another one
    bool spoiled = false;               // a write failed: never commit
};

namespace {

std::nullopt_t FailNothing(DWORD error) {
    Fail(error);
    return std::nullopt;
}

// A name that is missing on the way down is a missing path.
DWORD ErrorOfFolder(int number) {
    return number == ENOENT || number == ENOTDIR || number == ELOOP ? ERROR_PATH_NOT_FOUND : ErrorOfErrno(number);
}

// May an opening with `access` exist beside one that shares `share`? Writers are never shared here.
bool Admits(DWORD share, DWORD access) {
    return (access & GENERIC_WRITE) == 0 && (share & FILE_SHARE_READ) != 0;
}

} // namespace

DeviceFiles::DeviceFiles() = default;

DeviceFiles::~DeviceFiles() {
    for (const auto& [handle, file] : open_)
        if (file->pending)
            file->pending->Discard();
}

void DeviceFiles::AddMount(Mount mount) {
    const std::lock_guard lock(mutex_);
    mounts_.push_back(std::move(mount));
}

void DeviceFiles::SetFaults(FileFaults faults) {
    const std::lock_guard lock(mutex_);
    faults_ = std::move(faults);
}

bool DeviceFiles::Concerns(const WString& path) const {
    return path.find(faults_.only) != WString::npos;
}

std::optional<Location> DeviceFiles::Resolve(const WCHAR* path) const {
    if (path == nullptr || !SplitDevicePath(path))
        return FailNothing(ERROR_INVALID_NAME);
    auto location = Locate(mounts_, path);
    if (!location || (location->mount->removable && faults_.cardAbsent))
        return FailNothing(ERROR_PATH_NOT_FOUND);
    return location;
}

// ---- Opening and closing ----

bool DeviceFiles::IsShared(const std::string& key, DWORD access, DWORD share) const {
    return std::all_of(open_.begin(), open_.end(), [&](const auto& entry) {
        const OpenFile& other = *entry.second;
        return other.key != key || (Admits(other.share, access) && Admits(share, other.access));
    });
}

bool DeviceFiles::OpenOnHost(OpenFile& file, const Location& location, DWORD disposition) const {
    Descriptor folder = OpenFolder(location, location.names.size() - 1);
    if (!folder)
        return Fail(ErrorOfFolder(errno));
    const std::string& name = location.names.back();
    const bool writes = (file.access & GENERIC_WRITE) != 0;
    const bool reads = (file.access & GENERIC_READ) != 0;
    if (disposition == CREATE_ALWAYS && location.mount->writing == Mount::Writing::OnClose) {
        file.pending.emplace(std::move(folder), name);
        file.file = file.pending->Create();
        if (!file.file)
            file.pending.reset();
    } else {
        const int create = disposition == CREATE_ALWAYS ? O_CREAT | O_TRUNC : 0;
        file.file = OpenRegular(folder, name, create | (writes ? (reads ? O_RDWR : O_WRONLY) : O_RDONLY));
    }
    return file.file || Fail(ErrorOfErrno(errno));
}

HANDLE DeviceFiles::Open(const WCHAR* path, DWORD access, DWORD share, DWORD disposition) {
    const std::lock_guard lock(mutex_);
    const auto failed = [](DWORD error) {
        Fail(error);
        return INVALID_HANDLE_VALUE;
    };
    const bool creates = disposition == CREATE_ALWAYS;
    const bool writes = (access & GENERIC_WRITE) != 0;
    if ((access & ~(GENERIC_READ | GENERIC_WRITE)) != 0 || (share & ~FILE_SHARE_READ) != 0 ||
        (!creates && disposition != OPEN_EXISTING) || (creates && !writes))
        return failed(ERROR_INVALID_PARAMETER);
    const auto location = Resolve(path);
    if (!location)
        return INVALID_HANDLE_VALUE;
    // A folder is no file; and a profile file is replaced as a whole or not at all.
    if (location->names.empty() || (writes && !creates && location->mount->writing == Mount::Writing::OnClose))
        return failed(ERROR_ACCESS_DENIED);
    const auto file = std::make_shared<OpenFile>();
    file->path = path;
    file->key = location->Key();
    file->access = access;
    file->share = share;
    file->removable = location->mount->removable;
    if (!IsShared(file->key, access, share))
        return failed(ERROR_SHARING_VIOLATION);
    if (Concerns(file->path) && (creates ? faults_.refuseCreate : faults_.refuseOpen))
        return failed(ERROR_ACCESS_DENIED);
    if (!OpenOnHost(*file, *location, disposition))
        return INVALID_HANDLE_VALUE;
    // A handle is a number in a pointer's clothes, as on the device.
    const auto handle = reinterpret_cast<HANDLE>(nextHandle_); // NOLINT(performance-no-int-to-ptr)
    nextHandle_ += 4;
    open_.emplace(handle, file);
    return handle;
}

bool DeviceFiles::Close(HANDLE handle) {
    // Under the table's lock, so that the path is free for others exactly when the file is in its place.
    const std::lock_guard lock(mutex_);
    const auto found = open_.find(handle);
    if (found == open_.end())
        return Fail(ERROR_INVALID_HANDLE);
    const auto file = found->second;
    open_.erase(found);
    const std::lock_guard fileLock(file->mutex);
    if (!file->pending)
        return file->file.Close() || Fail(ERROR_WRITE_FAULT);
    if (file->spoiled) {
        file->file.Close();
        file->pending->Discard();
        return Fail(ERROR_WRITE_FAULT);
    }
    return file->pending->Commit(file->file) || Fail(ErrorOfErrno(errno));
}

bool DeviceFiles::Replace(const WCHAR* path, std::span<const BYTE> content) {
    const std::lock_guard lock(mutex_);
    const auto location = Resolve(path);
    if (!location)
        return false;
    if (location->names.empty() || (Concerns(path) && faults_.refuseCreate))
        return Fail(ERROR_ACCESS_DENIED);
    Descriptor folder = OpenFolder(*location, location->names.size() - 1);
    if (!folder)
        return Fail(ErrorOfFolder(errno));
    PendingFile pending(std::move(folder), location->names.back());
    Descriptor file = pending.Create();
    if (!file)
        return Fail(ErrorOfErrno(errno));
    const bool isFull = Concerns(path) && faults_.diskFullAfter && *faults_.diskFullAfter < content.size();
    if (isFull || WriteAll(file, content.data(), content.size()) != content.size()) {
        const DWORD error = isFull ? ERROR_DISK_FULL : ErrorOfErrno(errno);
        file.Close();
        pending.Discard();
        return Fail(error);
    }
    return pending.Commit(file) || Fail(ErrorOfErrno(errno));
}

std::shared_ptr<DeviceFiles::OpenFile> DeviceFiles::Find(HANDLE handle) const {
    const std::lock_guard lock(mutex_);
    const auto found = open_.find(handle);
    if (found == open_.end()) {
        Fail(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    return found->second;
}

std::size_t DeviceFiles::OpenCount() const {
    const std::lock_guard lock(mutex_);
    return open_.size();
}

// ---- Reading and writing ----

bool DeviceFiles::IsGone(const OpenFile& file) const {
    const std::lock_guard lock(mutex_);
    return file.removable && faults_.cardAbsent;
}

DWORD DeviceFiles::Spend(const OpenFile& file, std::optional<ULONGLONG> FileFaults::*allowance, DWORD size) {
    const std::lock_guard lock(mutex_);
    std::optional<ULONGLONG>& left = faults_.*allowance;
    if (!left || !Concerns(file.path))
        return size;
    const DWORD granted = static_cast<DWORD>(std::min<ULONGLONG>(*left, size));
    *left -= granted;
    return granted;
}

bool DeviceFiles::Read(HANDLE handle, void* buffer, DWORD size, DWORD& done) {
    done = 0;
    const auto file = Find(handle);
    if (!file)
        return false;
    if ((file->access & GENERIC_READ) == 0)
        return Fail(ERROR_ACCESS_DENIED);
    if (IsGone(*file))
        return Fail(ERROR_READ_FAULT);
    const DWORD granted = Spend(*file, &FileFaults::readBytes, size);
    const std::lock_guard lock(file->mutex);
    const long got = ReadAll(file->file, buffer, granted);
    if (got < 0)
        return Fail(file->file ? ERROR_READ_FAULT : ERROR_INVALID_HANDLE);
    done = static_cast<DWORD>(got);
    return true;
}

bool DeviceFiles::Write(HANDLE handle, const void* buffer, DWORD size, DWORD& done) {
    done = 0;
    const auto file = Find(handle);
    if (!file)
        return false;
    if ((file->access & GENERIC_WRITE) == 0)
        return Fail(ERROR_ACCESS_DENIED);
    if (IsGone(*file))
        return Fail(ERROR_WRITE_FAULT);
    const DWORD beforeFull = Spend(*file, &FileFaults::diskFullAfter, size);
    const DWORD granted = Spend(*file, &FileFaults::shortWriteAfter, beforeFull);
    const std::lock_guard lock(file->mutex);
    done = static_cast<DWORD>(WriteAll(file->file, buffer, granted));
    const bool hostFailed = done != granted;
    const DWORD hostError = hostFailed ? ErrorOfErrno(errno) : ERROR_SUCCESS;
    file->spoiled = file->spoiled || done != size;
    if (hostFailed)
        return Fail(hostError);
    return beforeFull == size || Fail(ERROR_DISK_FULL);
}

std::optional<ULONGLONG> DeviceFiles::Size(HANDLE handle) {
    const auto file = Find(handle);
    if (!file)
        return std::nullopt;
    const std::lock_guard lock(file->mutex);
    struct stat info {};
    if (fstat(file->file.Number(), &info) != 0)
        return FailNothing(ERROR_INVALID_HANDLE);
    return static_cast<ULONGLONG>(info.st_size);
}

std::optional<ULONGLONG> DeviceFiles::Seek(HANDLE handle, LONGLONG distance, DWORD method) {
    static_assert(SEEK_SET == FILE_BEGIN && SEEK_CUR == FILE_CURRENT && SEEK_END == FILE_END);
    const auto file = Find(handle);
    if (!file)
        return std::nullopt;
    if (method > FILE_END)
        return FailNothing(ERROR_INVALID_PARAMETER);
    const std::lock_guard lock(file->mutex);
    const off_t position = lseek(file->file.Number(), distance, static_cast<int>(method));
    if (position < 0)
        return FailNothing(ERROR_NEGATIVE_SEEK);
    return static_cast<ULONGLONG>(position);
}

// ---- Folders ----

bool DeviceFiles::MakeFolder(const WCHAR* path) {
    const std::lock_guard lock(mutex_);
    const auto location = Resolve(path);
    if (!location)
        return false;
    if (location->names.empty())
        return Fail(ERROR_ALREADY_EXISTS);
    if (faults_.refuseCreate && Concerns(path))
        return Fail(ERROR_ACCESS_DENIED);
    const Descriptor parent = OpenFolder(*location, location->names.size() - 1);
    if (!parent)
        return Fail(ErrorOfFolder(errno));
    return mkdirat(parent.Number(), location->names.back().c_str(), 0777) == 0 || Fail(ErrorOfErrno(errno));
}

bool DeviceFiles::FolderExists(const WCHAR* path) {
    const std::lock_guard lock(mutex_);
    const auto location = Resolve(path);
    if (!location)
        return false;
    return OpenFolder(*location, location->names.size()) || Fail(ErrorOfFolder(errno));
}

std::optional<std::vector<FolderEntry>> DeviceFiles::List(const WCHAR* path) {
    const std::lock_guard lock(mutex_);
    const auto location = Resolve(path);
    if (!location)
        return std::nullopt;
    const Descriptor folder = OpenFolder(*location, location->names.size());
    const int readable = folder ? openat(folder.Number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC) : -1;
    if (readable < 0)
        return FailNothing(ErrorOfFolder(errno));
    std::unique_ptr<DIR, int (*)(DIR*)> stream(fdopendir(readable), closedir);
    if (!stream) {
        close(readable);
        return FailNothing(ERROR_PATH_NOT_FOUND);
    }
    std::vector<FolderEntry> entries;
    while (const dirent* entry = readdir(stream.get())) { // NOLINT(concurrency-mt-unsafe): a stream of our own
        struct stat info {};
        if (entry->d_name[0] == '.' || fstatat(readable, entry->d_name, &info, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        const bool isFolder = S_ISDIR(info.st_mode);
        if (isFolder || S_ISREG(info.st_mode))
            entries.push_back({FromUtf8(entry->d_name), isFolder, isFolder ? 0 : static_cast<ULONGLONG>(info.st_size),
                               TimeSeconds{info.st_mtime}});
    }
    std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    return entries;
}

std::optional<VolumeSpace> DeviceFiles::Space(const WCHAR* path) {
    const std::lock_guard lock(mutex_);
    const auto location = Resolve(path);
    if (!location)
        return std::nullopt;
    const bool concerned = Concerns(path);
    if (faults_.refuseFreeSpace && concerned)
        return FailNothing(ERROR_ACCESS_DENIED);
    const Descriptor folder = OpenFolder(*location, location->names.size());
    struct statvfs info {};
    if (!folder || fstatvfs(folder.Number(), &info) != 0)
        return FailNothing(ErrorOfFolder(errno));
    VolumeSpace space{static_cast<ULONGLONG>(info.f_bavail) * info.f_frsize,
                      static_cast<ULONGLONG>(info.f_blocks) * info.f_frsize,
                      static_cast<ULONGLONG>(info.f_bfree) * info.f_frsize};
    if (faults_.freeBytes && concerned)
        space.freeForCaller = space.free = *faults_.freeBytes;
    return space;
}

} // namespace ce
