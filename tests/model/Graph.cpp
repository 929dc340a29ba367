// The filter graph and its controller: which filters live, what state the graph is in, which events wait.
//
// Of the sweeps through the filters only the audio renderer's calls are predicted; it is in both graphs.
#include <algorithm>

#include "tests/model/Model.h"

namespace model {

namespace {

const char* const kNames[kKinds] = {"parser", "bsac", "audio", "video", "picture", "dab", "mp3"};
constexpr const char* kFailure = " = 80004005";
constexpr Kind kTelevisionFilters[] = {kParser, kBsac, kAudio, kVideo, kPicture};
constexpr Kind kRadioFilters[] = {kRadio, kMp3, kAudio};
constexpr int kRetriesMs = 10 * 100;

} // namespace

void Model::MakeGraph() {
    hasGraph = in.graphExists;
    if (hasGraph)
        graph.emplace();
}

void Model::DropGraph() {
    if (hasGraph)
        GraphStop();
    hasGraph = false;
    graph.reset();
    for (Filter& filter : filters)
        filter.inGraph = false;
}

int Model::CountInGraph(Kind kind) const {
    return static_cast<int>(std::count_if(filters.begin(), filters.end(), [kind](const Filter& filter) {
        return filter.kind == kind && filter.inGraph;
    }));
}

bool Model::Alive(Kind kind) const {
    return std::any_of(filters.begin(), filters.end(), [kind](const Filter& filter) { return filter.kind == kind; });
}

Model::Filter* Model::Find(int number) {
    for (Filter& filter : filters)
        if (filter.number == number)
            return &filter;
    return nullptr;
}

// ---- Events ------------------------------------------------------------------------------------------------------------

void Model::Enqueue(int code) {
    graph->events.push_back(code);
    if (hasEvent)
        PostTo(kView, kGraphNotice);
}

// The filter of the kind that was made last reports. The end of the stream counts once every renderer has come to it.
void Model::Report(Kind kind, int code) {
    const auto filter =
        std::find_if(filters.rbegin(), filters.rend(), [kind](const Filter& f) { return f.kind == kind; });
    if (filter == filters.rend() || !filter->inGraph)
        return;
    if (code != kComplete)
        Enqueue(code);
    else if (graph->counting && ++graph->completions == graph->renderers)
        Enqueue(kComplete);
}

// ---- States ------------------------------------------------------------------------------------------------------------

bool Model::PauseAudio() {
    for (int i = CountInGraph(kAudio); i > 0; --i) {
        Note(std::string("audio.Pause") + (in.pauseFails ? kFailure : ""));
        graph->halfPaused = in.pauseFails;
        if (in.pauseFails)
            return false;
    }
    return true;
}

bool Model::StartAudio() {
    for (int i = CountInGraph(kAudio); i > 0; --i)
        Note(std::string("audio.Run") + (in.runFails ? kFailure : ""));
    return !in.runFails;
}

bool Model::GraphRun() {
    if (graph->state == kGraphRunning)
        return true;
    if (!graph->clockChosen) {
        graph->clockChosen = true;
        Enqueue(kClockChanged);
    }
    if (graph->state == kGraphStopped && !PauseAudio())
        return false;
    graph->counting = true;
    graph->completions = 0;
    graph->renderers = CountInGraph(kAudio) + CountInGraph(kPicture);
    std::erase(graph->events, static_cast<int>(kComplete));
    graph->state = kGraphRunning;
    return StartAudio();
}

bool Model::GraphPause() {
    if (graph->state == kGraphPaused)
        return true;
    if (graph->state == kGraphRunning)
        graph->counting = false;
    if (!graph->clockChosen) {
        graph->clockChosen = true;
        Enqueue(kClockChanged);
    }
    if (!PauseAudio())
        return false;
    graph->state = kGraphPaused;
    return true;
}

bool Model::GraphStop() {
    if (graph->state == kGraphStopped && !graph->halfPaused)
        return true;
    bool good = true;
    if (graph->state == kGraphRunning) {
        graph->counting = false;
        good = PauseAudio();
    }
    for (int i = CountInGraph(kAudio); i > 0; --i) {
        Note(std::string("audio.Stop") + (in.stopFails ? kFailure : ""));
        good = good && !in.stopFails;
    }
    graph->state = kGraphStopped;
    graph->halfPaused = false;
    return good;
}

// ---- The controller ----------------------------------------------------------------------------------------------------

bool Model::CreateInto(Kind kind) {
    const auto index = static_cast<std::size_t>(kind);
    Note(std::string(kNames[kind]) + ".Create" + (in.createFails[index] ? kFailure : ""));
    if (in.createFails[index])
        return false;
    filters.push_back({nextFilter, kind, !in.joinFails[index]});
    field[kind] = nextFilter++;
    if (kind == kParser)
        capturing = false;
    return !in.joinFails[index];
}

bool Model::InitTelevision(const std::string* file) {
    for (const Kind kind : kTelevisionFilters)
        field[kind] = -1;
    if (!hasController || !hasGraph)
        return false;
    for (const Kind kind : kTelevisionFilters)
        if (!CreateInto(kind))
            return false;
    if (file != nullptr)
        Note("parser.Load(" + *file + ")");
    return ConnectTelevision();
}

bool Model::ConnectTelevision() const {
    return !in.parserPinUnknown;
}

bool Model::InitRadio() {
    for (const Kind kind : kRadioFilters)
        field[kind] = -1;
    if (!hasController || !hasGraph)
        return false;
    for (const Kind kind : kRadioFilters)
        if (!CreateInto(kind))
            return false;
    return !in.radioPinUnknown;
}

bool Model::DeleteFilter(Kind kind) {
    const Filter* filter = field[kind] >= 0 ? Find(field[kind]) : nullptr;
    if (filter == nullptr || !filter->inGraph)
        return false;
    Note(std::string(kNames[kind]) + ".End");
    std::erase_if(filters, [filter](const Filter& other) { return &other == filter; });
    field[kind] = -1;
    return true;
}

// Ten more tries when a link or a filter is not there, then it gives up.
void Model::CloseTelevision() {
    if (!hasController)
        return;
    const bool whole = std::none_of(std::begin(kTelevisionFilters), std::end(kTelevisionFilters),
                                    [this](Kind kind) { return field[kind] < 0; });
    if (!whole || !std::all_of(std::begin(kTelevisionFilters), std::end(kTelevisionFilters),
                               [this](Kind kind) { return DeleteFilter(kind); }))
        Sleep(kRetriesMs);
    ForgetFilters();
}

// A closed controller names no filter, whatever is left.
void Model::ForgetFilters() {
    for (int& number : field)
        number = -1;
}

void Model::CloseRadio() {
    if (!hasController)
        return;
    for (const Kind kind : kRadioFilters)
        DeleteFilter(kind);
    ForgetFilters();
}

void Model::HandleAudioChange() {
    if (!HasParser())
        return;
    Note("parser.GetParam(19)");
    if (!in.noAudioInfo)
        Note("parser.SetParam(3, {7, 9})");
}

bool Model::StartCapture() {
    if (!HasParser())
        return false;
    if (capturing) {
        Note("parser.StartCapture = 8000FFFF");
        return false;
    }
    Note(std::string("parser.StartCapture") + (in.captureFails ? kFailure : ""));
    capturing = !in.captureFails;
    return capturing;
}

bool Model::StopCapture() {
    if (!HasParser())
        return false;
    Note("parser.StopCapture");
    capturing = false;
    return true;
}

} // namespace model
