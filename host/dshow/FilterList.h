// The filters of a graph: who is in, under which name, and in which order things are done to them.
#pragma once

#include "host/dshow/ComPtr.h"
#include "platform/dshow_api.h"

#include <string>
#include <vector>

namespace dshow {

struct FilterEntry {
    ComPtr<IBaseFilter> filter;
    WString name;
};

// Do the two pointers name the same object? Identity is the IUnknown pointer.
[[nodiscard]] bool IsSameObject(IUnknown* a, IUnknown* b);

// The filter a pin belongs to, or empty.
[[nodiscard]] ComPtr<IBaseFilter> FilterOf(IPin* pin);

// The pins of a filter in its own order, each counted.
[[nodiscard]] std::vector<ComPtr<IPin>> PinsOf(IBaseFilter* filter);

[[nodiscard]] bool IsInput(IPin* pin);
[[nodiscard]] ComPtr<IPin> PeerOf(IPin* pin);

class FilterList {
public:
    // The filter added last comes first.
    [[nodiscard]] const std::vector<FilterEntry>& Entries() const { return entries_; }
    // Grows with every change of the list.
    [[nodiscard]] ULONG Version() const { return version_; }

    [[nodiscard]] const FilterEntry* Find(IBaseFilter* filter) const;
    [[nodiscard]] const FilterEntry* FindByName(WStringView name) const;

    // The name a new filter gets: the wanted one, or when that is taken "<name> NNNN" (no name wanted:
    // "NNNN") with the graph's next free number.
    [[nodiscard]] WString ChooseName(const WCHAR* wanted);

    void Add(IBaseFilter* filter, WString name);
    void Remove(IBaseFilter* filter);

    // Puts each filter before those that feed it: renderers first, sources last. Counts as no change.
    void SortDownstreamFirst();

private:
    void Visit(const FilterEntry& entry, std::vector<IBaseFilter*>& visited, std::vector<FilterEntry>& sorted) const;

    std::vector<FilterEntry> entries_;
    ULONG version_ = 0;
    ULONG nextNumber_ = 1;
};

} // namespace dshow
