// What the system core of the device offers to the module and to the host's own libraries: messages and
// timers, waiting, locks, files on device paths, narrow text, formatting, debugger output, local time.
//
// On Windows most of this is the SDK and only the helpers at the end are ours. Elsewhere libce.so implements
// it on the one current `ce::Ce` object (host/ce/Ce.h); without such an object every call fails in its
// documented way.
//
// Failing calls set the calling thread's error number as on the device; see ce::LastError.
#pragma once

#include "platform/types.h"

#include <atomic>
#include <cstddef>
#include <type_traits>

#ifdef _WIN32
#define DMB_CE_API
#else
#define DMB_CE_API DMB_HOST_API
#endif

#ifndef _WIN32

// ---- Messages and timers ----

inline constexpr UINT WM_CREATE = 0x0001;
inline constexpr UINT WM_DESTROY = 0x0002;
inline constexpr UINT WM_KEYUP = 0x0101;
inline constexpr UINT WM_COMMAND = 0x0111;
inline constexpr UINT WM_TIMER = 0x0113;
inline constexpr UINT WM_LBUTTONDOWN = 0x0201;
inline constexpr UINT WM_LBUTTONUP = 0x0202;
// First number that an application may give to messages of its own.
inline constexpr UINT WM_USER = 0x0400;

// Appends a message to the window's queue and returns at once; the handler runs later, on the window's
// thread. Messages are handled strictly in the order of posting. The parameters are passed as they are: what
// a pointer names must live until the message is handled. Any thread may post. Non-zero on success, 0 when
// the window does not exist.
DMB_CE_API BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

using TIMERPROC = void (*)(HWND, UINT, UINT_PTR, DWORD);

// Starts the window's timer `id`: WM_TIMER with that id every `milliseconds` (at least 1), but only while no
// posted message waits, and never more than one at a time however late it is. A timer with the same id is
// replaced and its period starts again from now. `procedure` is always null. Returns `id`, or 0 when the
// window does not exist.
DMB_CE_API UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure);

// Stops a timer for good: not even a tick that is already due arrives afterwards. An unknown id is harmless.
// Non-zero when there was such a timer.
DMB_CE_API BOOL KillTimer(HWND window, UINT_PTR id);

// Blocks the calling thread for at least `milliseconds`. Handles no message meanwhile. Returns at once when
// the system is closing down.
DMB_CE_API void Sleep(DWORD milliseconds);

// ---- Files ----
// Paths are absolute device paths: "\SDMMC Card\DMB\x.dmb". There is no current directory and no drive
// letter.

struct SECURITY_ATTRIBUTES;
struct OVERLAPPED;

inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;
inline constexpr DWORD FILE_SHARE_READ = 0x00000001;
inline constexpr DWORD CREATE_ALWAYS = 2;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x00000080;
inline constexpr DWORD FILE_BEGIN = 0;
inline constexpr DWORD FILE_CURRENT = 1;
inline constexpr DWORD FILE_END = 2;
inline constexpr DWORD INVALID_FILE_SIZE = 0xFFFFFFFF;
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;
// NOLINTNEXTLINE(performance-no-int-to-ptr): the device's own value
inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1));

inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_WRITE_FAULT = 29;
inline constexpr DWORD ERROR_READ_FAULT = 30;
inline constexpr DWORD ERROR_SHARING_VIOLATION = 32;
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
inline constexpr DWORD ERROR_DISK_FULL = 112;
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr DWORD ERROR_INVALID_NAME = 123;
inline constexpr DWORD ERROR_NEGATIVE_SEEK = 131;
inline constexpr DWORD ERROR_ALREADY_EXISTS = 183;

union ULARGE_INTEGER {
    struct {
        DWORD LowPart;
        DWORD HighPart;
    };
    ULONGLONG QuadPart;
};

// Opens a file for `access` (GENERIC_READ, GENERIC_WRITE or both). `share` 0 refuses every other opening of
// the same path while this handle is open, FILE_SHARE_READ admits readers; a refused opening fails with
// ERROR_SHARING_VIOLATION. CREATE_ALWAYS creates the file or empties it, OPEN_EXISTING needs one. `security`
// and `templateFile` are null. Returns INVALID_HANDLE_VALUE on failure, never null.
DMB_CE_API HANDLE CreateFileW(const WCHAR* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                              DWORD disposition, DWORD attributes, HANDLE templateFile);

// Reads up to `size` bytes at the file's position into `buffer`; `*done` says how many came. At the end of
// the file it succeeds with 0 bytes. `overlapped` is null.
DMB_CE_API BOOL ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* done, OVERLAPPED* overlapped);

// Writes `size` bytes at the file's position. FALSE when not all could be written; `*done` says how many
// were.
DMB_CE_API BOOL WriteFile(HANDLE file, const void* buffer, DWORD size, DWORD* done, OVERLAPPED* overlapped);

// Moves the file's position by a signed 64-bit distance in bytes, of which `distance` is the low word and
// `*high` the high word (null: `distance` alone, sign extended), counted from `method`. Returns the low word
// of the new position and stores the high one in `*high`; INVALID_SET_FILE_POINTER when the new position
// would be negative or the handle is bad.
DMB_CE_API DWORD SetFilePointer(HANDLE file, LONG distance, LONG* high, DWORD method);

// The file's length in bytes: low word returned, high word in `*high` unless null. INVALID_FILE_SIZE for a
// bad handle.
DMB_CE_API DWORD GetFileSize(HANDLE file, DWORD* high);

// Closes a file. A file in the profile directory that was created with CREATE_ALWAYS takes the place of the
// old one now and not earlier, and only if all its writes succeeded. Non-zero on success.
DMB_CE_API BOOL CloseHandle(HANDLE file);

// Bytes on the volume of `folder`: free for the caller, total, free at all. Null results are skipped.
// Zero when the folder does not exist (no card).
DMB_CE_API BOOL GetDiskFreeSpaceExW(const WCHAR* folder, ULARGE_INTEGER* freeForCaller, ULARGE_INTEGER* total,
                                    ULARGE_INTEGER* free);

// ---- Text ----

// Widens `size` bytes (-1: up to and including the terminating NUL) of narrow text into `wide`, which has
// room for `capacity` units. Only kNarrowCodePage is known. A byte that begins no character becomes U+FFFD.
// Returns the number of units written; with `capacity` 0 the number needed. When the room does not suffice: 0
// with ERROR_INSUFFICIENT_BUFFER, the room being filled all the same.
DMB_CE_API int MultiByteToWideChar(UINT codePage, DWORD flags, const char* narrow, int size, WCHAR* wide, int capacity);

// Sends a text to the debugger. On Linux the lines are kept where a test can read them (ce::DebugOutput).
DMB_CE_API void OutputDebugStringW(const WCHAR* text);

#endif // not Windows

// ---- Our own helpers, on every target ----

// The device's narrow texts (channel labels, broadcast labels) are Korean: Unified Hangul Code. Passed
// explicitly, because the system's own code page differs from machine to machine.
inline constexpr UINT kNarrowCodePage = 949;

// A recursive lock that belongs to a thread: the owner may enter again and TryEnter succeeds for it, any
// other thread waits or is refused. Destroying it while it is owned is harmless.
class DMB_CE_API CriticalSection {
public:
    CriticalSection();
    ~CriticalSection();
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    // Waits until the lock is free or already ours, then takes it once more.
    void Enter();
    // Takes the lock if that needs no waiting; false when another thread has it.
    [[nodiscard]] bool TryEnter();
    // Gives one Enter back. Only the owner may call it.
    void Leave();

private:
    struct Impl;
    Impl* impl_;
};

// Holds a lock for a scope.
class SectionLock {
public:
    explicit SectionLock(CriticalSection& section) : section_(section) { section_.Enter(); }
    ~SectionLock() { section_.Leave(); }
    SectionLock(const SectionLock&) = delete;
    SectionLock& operator=(const SectionLock&) = delete;

private:
    CriticalSection& section_;
};

// Holds a lock for a scope if it could be had without waiting; painting uses it, which never waits.
class TrySectionLock {
public:
    explicit TrySectionLock(CriticalSection& section) : section_(section), held_(section.TryEnter()) {}
    ~TrySectionLock() {
        if (held_)
            section_.Leave();
    }
    TrySectionLock(const TrySectionLock&) = delete;
    TrySectionLock& operator=(const TrySectionLock&) = delete;
    explicit operator bool() const { return held_; }

private:
    CriticalSection& section_;
    bool held_;
};

// Settings are 32-bit fields that any thread may read: an interlocked add of 0 ...
[[nodiscard]] inline LONG ReadSetting(const LONG& field) {
    return std::atomic_ref<LONG>(const_cast<LONG&>(field)).fetch_add(0);
}
// ... and an interlocked exchange, which returns the value before.
inline LONG WriteSetting(LONG& field, LONG value) {
    return std::atomic_ref<LONG>(field).exchange(value);
}

// One argument of FormatW. Whole numbers have at most 32 bits; a wider one is handed over as two words.
class FormatArgument {
public:
    enum class Kind { None, Number, Real, Wide, Narrow };

    FormatArgument() = default;
    template <typename T>
    requires(std::is_integral_v<T> && sizeof(T) <= 4) FormatArgument(T number)
        : kind_(Kind::Number), number_(static_cast<ULONG>(number)) {}
    FormatArgument(double real) : kind_(Kind::Real), real_(real) {}
    FormatArgument(const WCHAR* text) : kind_(Kind::Wide), wide_(text) {}
    FormatArgument(const WString& text) : kind_(Kind::Wide), wide_(text.c_str()) {}
    FormatArgument(const char* text) : kind_(Kind::Narrow), narrow_(text) {}
    FormatArgument(std::nullptr_t) : kind_(Kind::Wide) {}

    [[nodiscard]] Kind kind() const { return kind_; }
    [[nodiscard]] ULONG number() const { return number_; }
    [[nodiscard]] double real() const { return real_; }
    [[nodiscard]] const WCHAR* wide() const { return wide_; }
    [[nodiscard]] const char* narrow() const { return narrow_; }

private:
    Kind kind_ = Kind::None;
    ULONG number_ = 0;
    double real_ = 0;
    const WCHAR* wide_ = nullptr;
    const char* narrow_ = nullptr;
};

// What FormatW calls; use FormatW.
DMB_CE_API WString FormatArguments(const WCHAR* format, const FormatArgument* arguments, std::size_t count);

// The one formatter, with the device's rules: %s is wide and %S narrow text, %c a wide unit, %d %i %u %x %X
// 32-bit numbers, %f a real number ("%2.2f"), %% a percent sign; flags "-+ 0#", width, precision; the sizes h
// and l are accepted. A null text prints "(null)". Unused arguments are ignored; a missing one, or one of the
// wrong kind, prints as 0 or "(null)". Any other letter prints itself.
template <typename... Arguments> WString FormatW(const WCHAR* format, const Arguments&... arguments) {
    const FormatArgument list[] = {FormatArgument(arguments)..., FormatArgument()};
    return FormatArguments(format, list, sizeof...(Arguments));
}

// A moment in local time, in the calendar's own counting: year 2007, month 1 to 12, day 1 to 31, hour 0
// to 23.
struct LocalTime {
    int year, month, day, hour, minute, second;
};

// The current time in whole seconds. Recordings are named and limited by it.
DMB_CE_API TimeSeconds CurrentTime();
// A moment as the device's clock on the wall shows it.
DMB_CE_API LocalTime LocalTimeOf(TimeSeconds moment);
