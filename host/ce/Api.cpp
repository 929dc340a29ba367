// The calls of platform/wince.h, each handed to the part of the current system that does it.
#include "platform/wince.h"

#include "host/ce/Ce.h"
#include "host/ce/Text.h"

#include <algorithm>
#include <cstring>

using ce::Ce;
using ce::Fail;

// ---- Messages and timers ----

BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    Ce* const system = Ce::Current();
    return system != nullptr && system->loop().Post(window, message, wParam, lParam);
}

UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC) {
    Ce* const system = Ce::Current();
    return system != nullptr && system->loop().StartTimer(window, id, milliseconds) ? id : 0;
}

BOOL KillTimer(HWND window, UINT_PTR id) {
    Ce* const system = Ce::Current();
    return system != nullptr && system->loop().StopTimer(window, id);
}

void Sleep(DWORD milliseconds) {
    if (Ce* const system = Ce::Current())
        system->clock().Sleep(milliseconds);
}

// ---- Files ----

namespace {

// The current system's files; without one nothing can be found.
ce::DeviceFiles* Files() {
    Ce* const system = Ce::Current();
    if (system == nullptr)
        Fail(ERROR_PATH_NOT_FOUND);
    return system != nullptr ? &system->files() : nullptr;
}

void Store(DWORD* to, DWORD value) {
    if (to != nullptr)
        *to = value;
}

} // namespace

HANDLE CreateFileW(const WCHAR* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES*, DWORD disposition, DWORD,
                   HANDLE) {
    ce::DeviceFiles* const files = Files();
    return files != nullptr ? files->Open(path, access, share, disposition) : INVALID_HANDLE_VALUE;
}

BOOL ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* done, OVERLAPPED*) {
    DWORD count = 0;
    ce::DeviceFiles* const files = Files();
    const bool ok = files != nullptr && files->Read(file, buffer, size, count);
    Store(done, count);
    return ok;
}

BOOL WriteFile(HANDLE file, const void* buffer, DWORD size, DWORD* done, OVERLAPPED*) {
    DWORD count = 0;
    ce::DeviceFiles* const files = Files();
    const bool ok = files != nullptr && files->Write(file, buffer, size, count);
    Store(done, count);
    return ok;
}

DWORD SetFilePointer(HANDLE file, LONG distance, LONG* high, DWORD method) {
    ce::DeviceFiles* const files = Files();
    const LONGLONG whole =
        high == nullptr ? distance
                        : static_cast<LONGLONG>(static_cast<ULONGLONG>(*high) << 32 | static_cast<ULONG>(distance));
    const auto position = files != nullptr ? files->Seek(file, whole, method) : std::nullopt;
    if (!position)
        return INVALID_SET_FILE_POINTER;
    if (high != nullptr)
        *high = static_cast<LONG>(*position >> 32);
    return static_cast<DWORD>(*position);
}

DWORD GetFileSize(HANDLE file, DWORD* high) {
    ce::DeviceFiles* const files = Files();
    const auto size = files != nullptr ? files->Size(file) : std::nullopt;
    if (!size)
        return INVALID_FILE_SIZE;
    Store(high, static_cast<DWORD>(*size >> 32));
    return static_cast<DWORD>(*size);
}

BOOL CloseHandle(HANDLE file) {
    ce::DeviceFiles* const files = Files();
    return files != nullptr && files->Close(file);
}

BOOL GetDiskFreeSpaceExW(const WCHAR* folder, ULARGE_INTEGER* freeForCaller, ULARGE_INTEGER* total,
                         ULARGE_INTEGER* free) {
    ce::DeviceFiles* const files = Files();
    const auto space = files != nullptr ? files->Space(folder) : std::nullopt;
    if (!space)
        return FALSE;
    const auto store = [](ULARGE_INTEGER* to, ULONGLONG bytes) {
        if (to != nullptr)
            to->QuadPart = bytes;
    };
    store(freeForCaller, space->freeForCaller);
    store(total, space->total);
    store(free, space->free);
    return TRUE;
}

// ---- Text, debugger output, time ----

int MultiByteToWideChar(UINT codePage, DWORD, const char* narrow, int size, WCHAR* wide, int capacity) {
    if (codePage != kNarrowCodePage || narrow == nullptr || size == 0 || size < -1 || capacity < 0) {
        Fail(ERROR_INVALID_PARAMETER);
        return 0;
    }
    const std::size_t length = size < 0 ? std::strlen(narrow) + 1 : static_cast<std::size_t>(size);
    const WString text = ce::NarrowToWide({narrow, length});
    const int needed = static_cast<int>(text.size());
    if (capacity == 0)
        return needed;
    std::copy_n(text.begin(), std::min(needed, capacity), wide);
    if (needed > capacity) {
        Fail(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    return needed;
}

void OutputDebugStringW(const WCHAR* text) {
    Ce* const system = Ce::Current();
    if (system != nullptr && text != nullptr)
        system->debug().Write(text);
}

TimeSeconds CurrentTime() {
    Ce* const system = Ce::Current();
    return system != nullptr ? system->clock().WallSeconds() : 0;
}

LocalTime LocalTimeOf(TimeSeconds moment) {
    Ce* const system = Ce::Current();
    return system != nullptr ? system->clock().LocalTimeOf(moment) : LocalTime{1970, 1, 1, 0, 0, 0};
}
