// The frame of the controller's tests: a world, a graph, a controller on it, and the reckoning at the end.
#pragma once

#include "graph/DMBFilterControl.h"
#include "graph/FilterOps.h"
#include "tests/graph/GraphWorld.h"

#include <algorithm>
#include <utility>

#include <gtest/gtest.h>

using scripted::Kind;

// The tests' way into the controller.
struct DMBFilterControlPeer {
    CDMBFilterControl& control;

    IGraphBuilder*& Graph() const { return control.m_pGraphBuilder; }
    // The field that holds the filter of a kind.
    IBaseFilter*& Field(Kind kind) const {
        switch (kind) {
        case Kind::Parser:
            return control.m_pParser;
        case Kind::BSACDecoder:
            return control.m_pBSACDecoder;
        case Kind::AudioRenderer:
            return control.m_pAudioRenderer;
        case Kind::VideoDecoder:
            return control.m_pVideoDecoder;
        case Kind::VideoRenderer:
            return control.m_pVideoRenderer;
        case Kind::DABSource:
            return control.m_pDABSource;
        case Kind::MP3Decoder:
            break;
        }
        return control.m_pMP3Decoder;
    }
    HRESULT Load(const WCHAR* fileName, int mode) const { return control.LoadDMBFilters(fileName, mode); }
    HRESULT Connect() const { return control.ConnectDMBFilters(); }
    HRESULT Disconnect() const { return control.DisconnectDMBFilters(); }
    HRESULT GetAudioInfo(DMBAudioInfo** info) const { return control.GetAudioInfo(info); }
    HRESULT SetAudioInfo(int a, int b) const { return control.SetAudioInfo(a, b); }
};

inline constexpr Kind kDMBKinds[] = {Kind::Parser, Kind::BSACDecoder, Kind::AudioRenderer, Kind::VideoDecoder,
                                     Kind::VideoRenderer};
inline constexpr Kind kDABKinds[] = {Kind::DABSource, Kind::MP3Decoder, Kind::AudioRenderer};

// What every line of the controller begins with.
inline const std::string kFilterLog = "[DMB|FILTER] ";

class ControllerTest : public ::testing::Test {
protected:
    using Lines = std::vector<std::string>;

    // The lines of the log, without the calls that a graph makes for its own sorting.
    [[nodiscard]] Lines Calls(const std::string& part = "") const {
        Lines lines;
        for (const auto& line : world.stage.log.Matching(part))
            if (line.text.find("ConnectedTo") == std::string::npos && line.text.find("EnumPins") == std::string::npos)
                lines.push_back(line.text);
        return lines;
    }
    [[nodiscard]] scripted::ScriptedFilter* Last(Kind kind) const { return world.stage.Last(kind); }
    // The graph's filter of that name, counted.
    [[nodiscard]] dshow::ComPtr<IBaseFilter> InGraph(Kind kind) {
        dshow::ComPtr<IBaseFilter> filter;
        (void)graph->FindFilterByName(scripted::InfoOf(kind).friendlyName, filter.Out());
        return filter;
    }
    [[nodiscard]] bool IsLinked(Kind kind, const WCHAR* pinId) const {
        for (const auto& pin : Last(kind)->Pins())
            if (pin->Id() == pinId)
                return pin->Peer() != nullptr;
        return false;
    }
    [[nodiscard]] int DMBLinks() const {
        return IsLinked(Kind::VideoDecoder, kInPin) + IsLinked(Kind::VideoRenderer, kInPin) +
               IsLinked(Kind::BSACDecoder, kInPin) + IsLinked(Kind::AudioRenderer, kAudioRendererPin);
    }
    // Gives a field's reference back, for the paths on which the controller keeps it.
    void Drop(Kind kind) {
        if (IBaseFilter* filter = std::exchange(peer.Field(kind), nullptr))
            filter->Release();
    }
    template <class Interface> [[nodiscard]] dshow::ComPtr<Interface> From(REFIID iid) {
        return dshow::QueryFor<Interface>(graph.Get(), iid);
    }

    // Nothing may be left when a test has dropped what it says is leaked.
    void TearDown() override {
        graph = {};
        EXPECT_EQ(world.stage.Alive(), 0) << "filters left behind";
    }

    GraphWorld world;
    dshow::ComPtr<IGraphBuilder> graph = world.NewGraph();
    CDMBFilterControl control{graph.Get()};
    DMBFilterControlPeer peer{control};
};
