// A counted interface pointer that gives its reference back at the end of its scope.
#pragma once

#include "platform/com.h"

#include <utility>

namespace dshow {

template <class T> class ComPtr {
public:
    ComPtr() = default;
    // Takes over a reference that the caller holds.
    [[nodiscard]] static ComPtr Adopt(T* counted) {
        ComPtr result;
        result.pointer_ = counted;
        return result;
    }
    // Adds a reference of its own.
    [[nodiscard]] static ComPtr Share(T* borrowed) {
        if (borrowed != nullptr)
            borrowed->AddRef();
        return Adopt(borrowed);
    }
    ComPtr(const ComPtr& other) : ComPtr(Share(other.pointer_)) {}
    ComPtr(ComPtr&& other) noexcept : pointer_(std::exchange(other.pointer_, nullptr)) {}
    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(pointer_, other.pointer_);
        return *this;
    }
    ~ComPtr() {
        if (pointer_ != nullptr)
            pointer_->Release();
    }

    [[nodiscard]] T* Get() const { return pointer_; }
    T* operator->() const { return pointer_; }
    explicit operator bool() const { return pointer_ != nullptr; }

    // For calls that store a counted pointer; what was held before is let go.
    [[nodiscard]] T** Out() {
        *this = ComPtr();
        return &pointer_;
    }
    [[nodiscard]] void** OutVoid() { return reinterpret_cast<void**>(Out()); }
    // Hands the reference to the caller.
    [[nodiscard]] T* Detach() { return std::exchange(pointer_, nullptr); }

private:
    T* pointer_ = nullptr;
};

// The other interface of the same object, or an empty pointer.
template <class T, class From> [[nodiscard]] ComPtr<T> QueryFor(From* object, REFIID iid) {
    ComPtr<T> result;
    if (object == nullptr || FAILED(object->QueryInterface(iid, result.OutVoid())))
        return {};
    return result;
}

} // namespace dshow
