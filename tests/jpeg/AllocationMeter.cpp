#include "tests/jpeg/AllocationMeter.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t kHeader = 32; // keeps the alignment of malloc

std::size_t count = 0;
std::size_t held = 0;
std::size_t base = 0;
std::size_t peak = 0;
std::size_t failAt = 0;

void* Take(std::size_t size) noexcept {
    auto* block = static_cast<unsigned char*>(std::malloc(size + kHeader));
    if (block == nullptr) {
        return nullptr;
    }
    *reinterpret_cast<std::size_t*>(block) = size;
    ++count;
    held += size;
    peak = std::max(peak, held);
    return block + kHeader;
}

void Give(void* pointer) noexcept {
    if (pointer != nullptr) {
        auto* block = static_cast<unsigned char*>(pointer) - kHeader;
        held -= *reinterpret_cast<std::size_t*>(block);
        std::free(block);
    }
}

void* TakeOrThrow(std::size_t size) {
    void* pointer = Take(size);
    if (pointer == nullptr) {
        throw std::bad_alloc();
    }
    return pointer;
}

void* TakeOrFail(std::size_t size) noexcept {
    if (failAt != 0 && --failAt == 0) {
        return nullptr;
    }
    return Take(size);
}

} // namespace

namespace allocation_meter {

void Reset() {
    count = 0;
    base = peak = held;
}
std::size_t Count() {
    return count;
}
std::size_t PeakBytes() {
    return peak - base;
}
void FailAt(std::size_t n) {
    failAt = n;
}

} // namespace allocation_meter

void* operator new(std::size_t size) {
    return TakeOrThrow(size);
}
void* operator new[](std::size_t size) {
    return TakeOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return TakeOrFail(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return TakeOrFail(size);
}
void operator delete(void* pointer) noexcept {
    Give(pointer);
}
void operator delete[](void* pointer) noexcept {
    Give(pointer);
}
void operator delete(void* pointer, std::size_t) noexcept {
    Give(pointer);
}
void operator delete[](void* pointer, std::size_t) noexcept {
    Give(pointer);
}
void operator delete(void* pointer, const std::nothrow_t&) noexcept {
    Give(pointer);
}
void operator delete[](void* pointer, const std::nothrow_t&) noexcept {
    Give(pointer);
}
