#include "host/dshow/ClassTable.h"

#include "host/dshow/ComObject.h"
#include "host/dshow/FilterGraph.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace dshow {

namespace {
ClassTable* currentTable = nullptr;
}

ClassTable::ClassTable(ce::Clock& clock) : before_(currentTable) {
    Add(CLSID_FilterGraph,
        [&clock](REFIID iid, void** object) { return CreateObject<FilterGraph>(iid, object, clock); });
    currentTable = this;
}

ClassTable::~ClassTable() {
    currentTable = before_;
}

ClassTable* ClassTable::Current() {
    return currentTable;
}

void ClassTable::Add(REFCLSID classId, Factory factory) {
    Remove(classId);
    classes_.emplace_back(classId, std::move(factory));
}

void ClassTable::Remove(REFCLSID classId) {
    std::erase_if(classes_, [&](const auto& entry) { return entry.first == classId; });
}

HRESULT ClassTable::Create(REFCLSID classId, IUnknown* outer, REFIID iid, void** object) const {
    if (object == nullptr)
        return E_POINTER;
    *object = nullptr;
    const auto found = std::ranges::find_if(classes_, [&](const auto& entry) { return entry.first == classId; });
    if (found == classes_.end())
        return REGDB_E_CLASSNOTREG;
    if (outer != nullptr)
        return CLASS_E_NOAGGREGATION;
    try {
        return found->second(iid, object);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

} // namespace dshow

extern "C" {

HRESULT CoCreateInstance(REFCLSID classId, IUnknown* outer, DWORD, REFIID iid, void** object) {
    if (object == nullptr)
        return E_POINTER;
    *object = nullptr;
    const dshow::ClassTable* table = dshow::ClassTable::Current();
    return table != nullptr ? table->Create(classId, outer, iid, object) : CO_E_NOTINITIALIZED;
}

void* CoTaskMemAlloc(std::size_t bytes) {
    return std::malloc(std::max<std::size_t>(bytes, 1));
}

void CoTaskMemFree(void* memory) {
    std::free(memory);
}

BSTR SysAllocString(const WCHAR* text) {
    if (text == nullptr)
        return nullptr;
    const std::size_t bytes = WStringView(text).size() * sizeof(WCHAR);
    if (bytes > std::numeric_limits<DWORD>::max())
        return nullptr;
    auto* block = static_cast<BYTE*>(std::malloc(sizeof(DWORD) + bytes + sizeof(WCHAR)));
    if (block == nullptr)
        return nullptr;
    const auto length = static_cast<DWORD>(bytes);
    std::memcpy(block, &length, sizeof(length));
    std::memcpy(block + sizeof(DWORD), text, bytes + sizeof(WCHAR));
    return reinterpret_cast<BSTR>(block + sizeof(DWORD));
}

void SysFreeString(BSTR text) {
    if (text != nullptr)
        std::free(reinterpret_cast<BYTE*>(text) - sizeof(DWORD));
}

} // extern "C"
