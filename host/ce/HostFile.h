// Host files reached from a mounted folder, name by name. No name is followed through a symbolic link, so
// nothing outside the folder can be reached whatever lies in it. Failures leave their number in errno.
#pragma once

#include "host/ce/DevicePath.h"

#include <utility>

namespace ce {

// Owns a file descriptor.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor() { Close(); }

    [[nodiscard]] int Number() const { return number_; }
    explicit operator bool() const { return number_ >= 0; }
    // False when the system reports that data was lost.
    bool Close();

private:
    int number_;
};

// The folder of the mount, then down the first `depth` names.
[[nodiscard]] Descriptor OpenFolder(const Location& location, std::size_t depth);

// A regular file in an open folder, `flags` as for open(2); anything else that has the name is refused with
// EACCES.
[[nodiscard]] Descriptor OpenRegular(const Descriptor& folder, const std::string& name, int flags);

// Reads up to `size` bytes, through interruptions; -1 on an error, fewer than `size` only at the end of the
// file.
[[nodiscard]] long ReadAll(const Descriptor& file, void* buffer, std::size_t size);

// Writes; the number of bytes that went out, fewer than `size` only on an error.
[[nodiscard]] std::size_t WriteAll(const Descriptor& file, const void* buffer, std::size_t size);

// A file that is written beside its final name and takes that name when it is complete.
class PendingFile {
public:
    PendingFile() = default;
    // Nothing exists yet; see Create.
    PendingFile(Descriptor folder, std::string name);
    PendingFile(PendingFile&&) = default;
    PendingFile& operator=(PendingFile&&) = default;

    // Opens the file under its temporary name, empty. Left over after a crash, that one is simply written
    // again.
    [[nodiscard]] Descriptor Create();
    // Makes the content durable and gives it the final name in one step.
    [[nodiscard]] bool Commit(Descriptor& file);
    // Removes the temporary file.
    void Discard();

private:
    Descriptor folder_;
    std::string name_;
    std::string temporary_;
};

} // namespace ce
