// A block of memory whose allocation may fail: a picture must never end the process.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

namespace jpeg {

template <typename T> class Buffer {
public:
    // False when there is no memory; the old block is gone either way. The new one holds `fill` in every byte.
    [[nodiscard]] bool Allocate(std::uint64_t count, unsigned char fill = 0) {
        block.reset();
        if (count > std::numeric_limits<std::ptrdiff_t>::max() / sizeof(T)) {
            return false;
        }
        block.reset(new (std::nothrow) T[static_cast<std::size_t>(count)]);
        if (!block) {
            return false;
        }
        std::memset(static_cast<void*>(block.get()), fill, static_cast<std::size_t>(count) * sizeof(T));
        return true;
    }

    [[nodiscard]] T* Data() { return block.get(); }
    [[nodiscard]] const T* Data() const { return block.get(); }
    [[nodiscard]] bool Empty() const { return block == nullptr; }

private:
    std::unique_ptr<T[]> block;
};

} // namespace jpeg
