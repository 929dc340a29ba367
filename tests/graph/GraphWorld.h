// Everything around a graph test: COM with the scripted filters behind it, the debugger output, a window for messages, and
// the passing of time. One implementation for the graph of this house, one for the graph of Windows.
#pragma once

#include "host/dshow/ComPtr.h"
#include "tests/graph/ScriptedFilters.h"

#include <memory>
#include <string>
#include <vector>

// A pointer that was counted once and given back says how many hold the object.
template <class Interface> ULONG RefCount(Interface* object) {
    object->AddRef();
    return object->Release();
}

class GraphWorld {
public:
    GraphWorld();
    ~GraphWorld();
    GraphWorld(const GraphWorld&) = delete;
    GraphWorld& operator=(const GraphWorld&) = delete;

    scripted::Stage stage;

    // A graph made by CoCreateInstance.
    [[nodiscard]] dshow::ComPtr<IGraphBuilder> NewGraph();

    // What went to the debugger output since the last call, each text as it was written; a unit beyond ASCII becomes '?'.
    [[nodiscard]] std::vector<std::string> TakeDebugLines();

    // Milliseconds that this thread has slept.
    [[nodiscard]] long SleptMs() const;
    // Gives other threads time.
    void LetTimePass(long milliseconds);

#ifdef _WIN32
    // From now on the class of the audio renderer is the system's, not the scripted one.
    void UseSystemRenderer();
#endif

    // A window of this thread, and the messages it has got since the last call.
    struct Received {
        UINT message;
        WPARAM wParam;
        LPARAM lParam;
    };
    [[nodiscard]] OAHWND Window();
    [[nodiscard]] std::vector<Received> TakeMessages();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};
