#include "host/ce/HostFile.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ce {

bool Descriptor::Close() {
    const int number = std::exchange(number_, -1);
    return number < 0 || close(number) == 0;
}

Descriptor OpenFolder(const Location& location, std::size_t depth) {
    constexpr int kFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;
    // The mount itself is the user's choice and may be a link; what lies below may not.
    Descriptor folder(open(location.mount->host.c_str(), kFlags));
    for (std::size_t i = 0; folder && i < depth; ++i)
        folder = Descriptor(openat(folder.Number(), location.names[i].c_str(), kFlags | O_NOFOLLOW));
    return folder;
}

Descriptor OpenRegular(const Descriptor& folder, const std::string& name, int flags) {
    // O_NONBLOCK: opening a pipe that somebody put there must not wait for its other end.
    Descriptor file(openat(folder.Number(), name.c_str(), flags | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0666));
    struct stat info {};
    if (file && (fstat(file.Number(), &info) != 0 || !S_ISREG(info.st_mode))) {
        file.Close();
        errno = EACCES;
    }
    return file;
}

long ReadAll(const Descriptor& file, void* buffer, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t got = read(file.Number(), static_cast<char*>(buffer) + done, size - done);
        if (got == 0)
            break;
        if (got > 0)
            done += static_cast<std::size_t>(got);
        else if (errno != EINTR)
            return -1;
    }
    return static_cast<long>(done);
}

std::size_t WriteAll(const Descriptor& file, const void* buffer, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t put = write(file.Number(), static_cast<const char*>(buffer) + done, size - done);
        if (put >= 0)
            done += static_cast<std::size_t>(put);
        else if (errno != EINTR)
            break;
    }
    return done;
}

PendingFile::PendingFile(Descriptor folder, std::string name)
    : folder_(std::move(folder)), name_(std::move(name)), temporary_("." + name_ + ".new") {}

Descriptor PendingFile::Create() {
    struct stat info {};
    if (fstatat(folder_.Number(), name_.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0 && !S_ISREG(info.st_mode)) {
        errno = EACCES;
        return Descriptor();
    }
    return OpenRegular(folder_, temporary_, O_RDWR | O_CREAT | O_TRUNC);
}

bool PendingFile::Commit(Descriptor& file) {
    const int folder = folder_.Number();
    if (fsync(file.Number()) != 0 || !file.Close() ||
        renameat(folder, temporary_.c_str(), folder, name_.c_str()) != 0) {
        const int reason = errno;
        Discard();
        errno = reason;
        return false;
    }
    // The new name must survive a power cut too; a file system that cannot promise it is no reason to fail
    // now.
    const Descriptor readable(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (readable)
        (void)fsync(readable.Number());
    return true;
}

void PendingFile::Discard() {
    (void)unlinkat(folder_.Number(), temporary_.c_str(), 0);
}

} // namespace ce
