#include "graph/FilterOps.h"

#include "platform/wince.h"

HRESULT ConnectFilterPins(IGraphBuilder* graph, IBaseFilter* upstream, const WCHAR* upstreamPin,
                          IBaseFilter* downstream, const WCHAR* downstreamPin) {
    if (graph == nullptr || upstream == nullptr || downstream == nullptr)
        return E_FAIL;

    // A filter may leave the out pointer alone when it does not know the id.
    IPin* out = nullptr;
    IPin* in = nullptr;
    if (FAILED(upstream->FindPin(upstreamPin, &out)))
        return E_FAIL;
    if (FAILED(downstream->FindPin(downstreamPin, &in)))
        return E_FAIL; // on purpose: `out` is not released here

    if (out != nullptr && in != nullptr) {
        IPin* peer = nullptr;
        if (SUCCEEDED(in->ConnectedTo(&peer)) && peer != nullptr)
            peer->Release();
        else
            graph->Connect(out, in); // the result is not passed on, on purpose
    }
    if (out != nullptr)
        out->Release();
    if (in != nullptr)
        in->Release();
    return S_OK;
}

// Disconnects the pins of one direction; each direction query leaves its result in `result`.
static void DisconnectPins(IGraphBuilder* graph, IBaseFilter* filter, PIN_DIRECTION wanted, HRESULT& result) {
    IEnumPins* pins = nullptr;
    if (FAILED(filter->EnumPins(&pins)) || pins == nullptr)
        return;
    IPin* pin = nullptr;
    while (pins->Next(1, &pin, nullptr) == S_OK) {
        PIN_DIRECTION direction = PINDIR_INPUT;
        result = pin->QueryDirection(&direction);
        if (SUCCEEDED(result) && direction == wanted)
            graph->Disconnect(pin);
        pin->Release();
    }
    pins->Release();
}

HRESULT DisconnectFilterPins(IGraphBuilder* graph, IBaseFilter* upstream, IBaseFilter* downstream) {
    if (graph == nullptr || upstream == nullptr || downstream == nullptr)
        return E_FAIL;
    HRESULT result = E_FAIL;
    DisconnectPins(graph, upstream, PINDIR_OUTPUT, result);
    DisconnectPins(graph, downstream, PINDIR_INPUT, result);
    return result;
}

HRESULT DeleteFilter(IGraphBuilder* pGraphBuilder, IBaseFilter* pFilter) {
    if (pGraphBuilder == nullptr || pFilter == nullptr) {
        OutputDebugStringW(WTEXT("[DMB|FILTER] Error : DeleteFilter !pGraphBuilder || !pFilter\r\n"));
        return E_FAIL;
    }
    const HRESULT removed = pGraphBuilder->RemoveFilter(pFilter);
    if (FAILED(removed)) {
        OutputDebugStringW(WTEXT("[DMB|FILTER] Error : DeleteFilter RemoveFilter\r\n"));
        return removed;
    }
    const ULONG references = pFilter->Release();
    if (references != 0) {
        OutputDebugStringW(WTEXT("[DMB|FILTER] Error : DeleteFilter Release\r\n"));
        return static_cast<HRESULT>(references);
    }
    return S_OK;
}
