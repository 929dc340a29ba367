// The class table: which class id makes which object. It stands behind CoCreateInstance.
//
// Owner: the program or the test that constructs it, before the module is loaded and after Ce; it installs
// itself as the process's one current table for its lifetime. Thread: Add while the program is being wired;
// creation from any thread.
#pragma once

#include "platform/com.h"

#include <functional>
#include <utility>
#include <vector>

namespace ce {
class Clock;
}

namespace dshow {

// Makes one object and stores the wanted interface, counted once; null in *object on failure.
using Factory = std::function<HRESULT(REFIID iid, void** object)>;

class DMB_HOST_API ClassTable {
public:
    // Holds one class from the start: CLSID_FilterGraph, whose graphs wait on `clock`.
    explicit ClassTable(ce::Clock& clock);
    ~ClassTable();
    ClassTable(const ClassTable&) = delete;
    ClassTable& operator=(const ClassTable&) = delete;

    // A class added again replaces the one before.
    void Add(REFCLSID classId, Factory factory);
    // From now on creating this class gives REGDB_E_CLASSNOTREG.
    void Remove(REFCLSID classId);

    [[nodiscard]] HRESULT Create(REFCLSID classId, IUnknown* outer, REFIID iid, void** object) const;
    // The installed table, or null.
    [[nodiscard]] static ClassTable* Current();

private:
    std::vector<std::pair<CLSID, Factory>> classes_;
    ClassTable* before_;
};

// The usual factory: makes a T from the arguments and asks it for the interface.
template <class T, class... Arguments>
[[nodiscard]] HRESULT CreateObject(REFIID iid, void** object, Arguments&&... arguments) {
    T* made = new T(std::forward<Arguments>(arguments)...);
    const HRESULT result = made->QueryInterface(iid, object);
    made->Release();
    return result;
}

} // namespace dshow
