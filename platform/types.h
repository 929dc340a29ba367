// The basic types of the device's system: fixed widths on every target, one literal, one string, one export
// macro.
//
// On Windows this header is the SDK plus the removal of a few macros that would rename our members. Elsewhere
// it declares the same names with the same widths. Three traps decide how the rest of the house writes its
// code:
//   - LONG, DWORD and HRESULT are 32 bits everywhere but are `long` on Windows and `int` here. A field whose
//   address is
//     handed to a system call is declared with the system's type, never with int or std::int32_t.
//   - WPARAM, LPARAM and friends are as wide as a pointer; nothing stores one in 32 bits.
//   - WCHAR is a UTF-16 unit (char16_t here, wchar_t on Windows). Text is written WTEXT("...") and kept in a
//   WString;
//     wchar_t, L"" and std::wstring do not occur.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#ifdef _WIN32

#ifndef UNICODE
#define UNICODE
#endif
#ifndef _UNICODE
#define _UNICODE
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

#include <objbase.h>

// Function-like macros of the SDK that would silently rename members of the same name.
#undef GetObject
#undef GetCurrentTime
#undef Yield
#undef IsMinimized

#define WTEXT(literal) L##literal

#else // not Windows

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using SHORT = std::int16_t;
using INT = std::int32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using BOOL = std::int32_t;
using HRESULT = std::int32_t;
using WCHAR = char16_t;
using LPWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;

using UINT_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using ULONG_PTR = std::uintptr_t;
using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;

// Handles are distinct pointer types, so that a font is not taken for a bitmap.
using HANDLE = void*;
using HGDIOBJ = void*;
using HWND = struct HWND__*;
using HDC = struct HDC__*;
using HBITMAP = struct HBITMAP__*;
using HFONT = struct HFONT__*;
using HINSTANCE = struct HINSTANCE__*;

// A colour as 0x00BBGGRR.
using COLORREF = DWORD;

// Left and top lie inside the rectangle, right and bottom just outside it.
struct RECT {
    LONG left, top, right, bottom;
};
struct POINT {
    LONG x, y;
};
struct SIZE {
    LONG cx, cy;
};

struct GUID {
    DWORD Data1;
    WORD Data2;
    WORD Data3;
    BYTE Data4[8];
    friend constexpr bool operator==(const GUID&, const GUID&) = default;
};
using IID = GUID;
using CLSID = GUID;
using REFGUID = const GUID&;
using REFIID = const IID&;
using REFCLSID = const CLSID&;

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001u);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002u);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003u);
inline constexpr HRESULT E_ABORT = static_cast<HRESULT>(0x80004004u);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005u);
inline constexpr HRESULT E_UNEXPECTED = static_cast<HRESULT>(0x8000FFFFu);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000Eu);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057u);

// S_FALSE and every other code that is not negative count as success.
constexpr bool SUCCEEDED(HRESULT code) {
    return code >= 0;
}
constexpr bool FAILED(HRESULT code) {
    return code < 0;
}

// Methods of an interface: STDMETHOD declares, STDMETHODIMP implements. The calling convention matters on
// 32-bit Windows only, so a forgotten one compiles here; the Windows compile finds it.
#define STDMETHODCALLTYPE
#define STDMETHOD(method) virtual HRESULT method
#define STDMETHOD_(type, method) virtual type method
#define STDMETHODIMP HRESULT
#define STDMETHODIMP_(type) type
#define PURE = 0
#define CALLBACK

#define WTEXT(literal) u##literal

#endif

// A wide text that owns its characters, and a view of one. UTF-16 on every target.
using WString = std::basic_string<WCHAR>;
using WStringView = std::basic_string_view<WCHAR>;

// Seconds since 1970-01-01 00:00 UTC, 64 bits on every target (the C library's own type has 32 on a 32-bit
// machine).
using TimeSeconds = LONGLONG;

// DMB_API: what the module shows to the shell. DMB_HOST_API: what the host's libraries show to the module and
// each other.
#ifdef _WIN32
#ifdef DMB_BUILDING_MODULE
#define DMB_API __declspec(dllexport)
#else
#define DMB_API __declspec(dllimport)
#endif
#ifdef DMB_BUILDING_HOST
#define DMB_HOST_API __declspec(dllexport)
#else
#define DMB_HOST_API __declspec(dllimport)
#endif
#else
#define DMB_API __attribute__((visibility("default")))
#define DMB_HOST_API __attribute__((visibility("default")))
#endif

static_assert(sizeof(BYTE) == 1 && sizeof(WORD) == 2 && sizeof(DWORD) == 4 && sizeof(ULONG) == 4);
static_assert(sizeof(LONG) == 4 && sizeof(INT) == 4 && sizeof(UINT) == 4 && sizeof(BOOL) == 4);
static_assert(sizeof(HRESULT) == 4 && sizeof(LONGLONG) == 8 && sizeof(ULONGLONG) == 8 && sizeof(WCHAR) == 2);
static_assert(sizeof(WPARAM) == sizeof(void*) && sizeof(LPARAM) == sizeof(void*) && sizeof(LRESULT) == sizeof(void*));
static_assert(sizeof(RECT) == 16 && sizeof(POINT) == 8 && sizeof(SIZE) == 8 && sizeof(COLORREF) == 4);
static_assert(sizeof(GUID) == 16 && offsetof(GUID, Data4) == 8);
static_assert(sizeof(TimeSeconds) == 8);
