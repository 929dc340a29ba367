#include "host/dshow/FilterList.h"

#include "platform/wince.h"

#include <algorithm>

namespace dshow {

bool IsSameObject(IUnknown* a, IUnknown* b) {
    return QueryFor<IUnknown>(a, IID_IUnknown).Get() == QueryFor<IUnknown>(b, IID_IUnknown).Get();
}

ComPtr<IBaseFilter> FilterOf(IPin* pin) {
    PIN_INFO info{};
    if (pin == nullptr || FAILED(pin->QueryPinInfo(&info)))
        return {};
    return ComPtr<IBaseFilter>::Adopt(info.pFilter);
}

std::vector<ComPtr<IPin>> PinsOf(IBaseFilter* filter) {
    std::vector<ComPtr<IPin>> pins;
    ComPtr<IEnumPins> enumerator;
    if (FAILED(filter->EnumPins(enumerator.Out())) || !enumerator)
        return pins;
    ComPtr<IPin> pin;
    while (enumerator->Next(1, pin.Out(), nullptr) == S_OK)
        pins.push_back(pin);
    return pins;
}

bool IsInput(IPin* pin) {
    PIN_DIRECTION direction = PINDIR_OUTPUT;
    return SUCCEEDED(pin->QueryDirection(&direction)) && direction == PINDIR_INPUT;
}

ComPtr<IPin> PeerOf(IPin* pin) {
    ComPtr<IPin> peer;
    if (FAILED(pin->ConnectedTo(peer.Out())))
        return {};
    return peer;
}

const FilterEntry* FilterList::Find(IBaseFilter* filter) const {
    const auto found =
        std::ranges::find_if(entries_, [&](const FilterEntry& entry) { return entry.filter.Get() == filter; });
    return found != entries_.end() ? &*found : nullptr;
}

const FilterEntry* FilterList::FindByName(WStringView name) const {
    const auto found = std::ranges::find_if(entries_, [&](const FilterEntry& entry) { return entry.name == name; });
    return found != entries_.end() ? &*found : nullptr;
}

WString FilterList::ChooseName(const WCHAR* wanted) {
    if (wanted != nullptr && FindByName(wanted) == nullptr)
        return wanted;
    WString name;
    do {
        const ULONG number = nextNumber_++;
        name = wanted != nullptr ? FormatW(WTEXT("%s %04u"), wanted, number) : FormatW(WTEXT("%04u"), number);
    } while (FindByName(name) != nullptr);
    return name;
}

void FilterList::Add(IBaseFilter* filter, WString name) {
    entries_.insert(entries_.begin(), {ComPtr<IBaseFilter>::Share(filter), std::move(name)});
    ++version_;
}

void FilterList::Remove(IBaseFilter* filter) {
    std::erase_if(entries_, [&](const FilterEntry& entry) { return entry.filter.Get() == filter; });
    ++version_;
}

void FilterList::SortDownstreamFirst() {
    std::vector<IBaseFilter*> visited;
    std::vector<FilterEntry> sorted; // upstream first while it grows
    for (const FilterEntry& entry : entries_)
        Visit(entry, visited, sorted);
    std::ranges::reverse(sorted);
    entries_ = std::move(sorted);
}

// Depth first: everything that feeds a filter is placed before it.
void FilterList::Visit(const FilterEntry& entry, std::vector<IBaseFilter*>& visited,
                       std::vector<FilterEntry>& sorted) const {
    if (std::ranges::find(visited, entry.filter.Get()) != visited.end())
        return;
    visited.push_back(entry.filter.Get());
    for (const auto& pin : PinsOf(entry.filter.Get())) {
        if (!IsInput(pin.Get()))
            continue;
        const auto peer = PeerOf(pin.Get());
        const FilterEntry* upstream = peer ? Find(FilterOf(peer.Get()).Get()) : nullptr;
        if (upstream != nullptr)
            Visit(*upstream, visited, sorted);
    }
    sorted.push_back(entry);
}

} // namespace dshow
