// The part of COM that the module uses: counted interfaces and creation by class id.
//
// On Windows this is the SDK. Elsewhere the same names are declared here, with the same slot order and the
// same codes, so that code written against this header means the same thing on both sides.
#pragma once

#include "platform/types.h"

// Interfaces have no virtual destructor on purpose: a destructor would take slots of the table, and the order
// of the slots is the contract. Objects end through Release. Whoever includes this header works by that rule,
// so the warning stays off.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

#ifdef _WIN32

#include <objbase.h>

#include <oleauto.h>

#else

inline constexpr IID IID_IUnknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IDispatch = {0x00020400, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IPersist = {0x0000010C, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

// Identity and lifetime. QueryInterface gives a counted pointer, or E_NOINTERFACE and null; AddRef and
// Release return the new count, and the Release that returns 0 has ended the object.
struct IUnknown {
    STDMETHOD(QueryInterface)(REFIID iid, void** object) PURE;
    STDMETHOD_(ULONG, AddRef)() PURE;
    STDMETHOD_(ULONG, Release)() PURE;
};

struct ITypeInfo;
struct DISPPARAMS;
struct VARIANT;
struct EXCEPINFO;
using LCID = DWORD;
using DISPID = LONG;
using LPOLESTR = WCHAR*;
using LPCOLESTR = const WCHAR*;
// Text with its length in bytes in the four bytes before it; made by SysAllocString.
using BSTR = WCHAR*;

// Calls by name. Nobody here calls by name; the four slots exist because the control interfaces derive from
// them.
struct IDispatch : IUnknown {
    STDMETHOD(GetTypeInfoCount)(UINT* count) PURE;
    STDMETHOD(GetTypeInfo)(UINT index, LCID locale, ITypeInfo** info) PURE;
    STDMETHOD(GetIDsOfNames)(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) PURE;
    STDMETHOD(Invoke)
    (DISPID member, REFIID iid, LCID locale, WORD flags, DISPPARAMS* params, VARIANT* result, EXCEPINFO* exception,
     UINT* argument) PURE;
};

struct IPersist : IUnknown {
    STDMETHOD(GetClassID)(CLSID* classId) PURE;
};

inline constexpr DWORD CLSCTX_INPROC_SERVER = 0x1;

inline constexpr HRESULT CLASS_E_NOAGGREGATION = static_cast<HRESULT>(0x80040110u);
inline constexpr HRESULT REGDB_E_CLASSNOTREG = static_cast<HRESULT>(0x80040154u);
inline constexpr HRESULT CO_E_NOTINITIALIZED = static_cast<HRESULT>(0x800401F0u);

extern "C" {

// Creates an object of the process's class table and stores the wanted interface, counted once. On failure
// *object is null. REGDB_E_CLASSNOTREG: no such class. CLASS_E_NOAGGREGATION: `outer` was given, which no
// class here supports.
DMB_HOST_API HRESULT CoCreateInstance(REFCLSID classId, IUnknown* outer, DWORD context, REFIID iid, void** object);

// Memory that one side of an interface allocates and the other frees. CoTaskMemAlloc gives null when memory
// is out; CoTaskMemFree(null) does nothing.
DMB_HOST_API void* CoTaskMemAlloc(std::size_t bytes);
DMB_HOST_API void CoTaskMemFree(void* memory);

// Texts for the events that carry them. Null in, null out.
DMB_HOST_API BSTR SysAllocString(const WCHAR* text);
DMB_HOST_API void SysFreeString(BSTR text);

} // extern "C"

#endif
