// Three operations on a filter graph from which every build and every teardown is made.
//
// Results are the graph's codes: 0 success, negative failure, E_FAIL when an argument is missing.
#pragma once

#include "platform/dshow_api.h"

// Joins the upstream filter's pin to the downstream filter's pin through the graph. E_FAIL only when a pin id
// is unknown: a link that the graph refuses still gives 0, and an input that is connected already is left as
// it is. On purpose the upstream pin stays counted when the downstream pin id is unknown.
[[nodiscard]] HRESULT ConnectFilterPins(IGraphBuilder* graph, IBaseFilter* upstream, const WCHAR* upstreamPin,
                                        IBaseFilter* downstream, const WCHAR* downstreamPin);

// Disconnects every output of the upstream filter and every input of the downstream one. Returns the result
// of the last question for a pin's direction, E_FAIL when there was no pin at all.
[[nodiscard]] HRESULT DisconnectFilterPins(IGraphBuilder* graph, IBaseFilter* upstream, IBaseFilter* downstream);

// Takes the filter out of the graph and drops the caller's reference. 0 when that ended the filter; the
// graph's code when the removal failed (the reference is then kept); else the number of references that
// others still hold.
HRESULT DeleteFilter(IGraphBuilder* pGraphBuilder, IBaseFilter* pFilter);
