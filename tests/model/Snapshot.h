// What can be seen of the view after a step, once as it is and once as the model says it should be.
#pragma once

#include <array>
#include <string>
#include <vector>

namespace model {

struct Number {
    enum Name {
        Open,
        Clock,
        Mode,
        Current,
        Last,
        Pending,
        LastTelevision,
        LastRadio,
        Count,
        File,
        Retries,
        OnAir,
        NoSignal,
        SignalWait,
        ChangeBusy,
        MsgBoxUp,
        Scanning,
        ToggleGuard,
        Dirty,
        RecordTime,
        Ratio,
        SnrDebug,
        SlideReady,
        FoundBlocks,
        CurrentType,
        LastType,
        HasGraph,
        HasController,
        HasControl,
        HasEvent,
        HasVideo,
        HasTuner,
        Timers, // bit n: timer 200 + n
        Filters,
        Minimized,
        ToolsShown,
        ToggleEnabled,
        PictureShown,
        KeepsAspect,
        InfoShown,
        InfoTop,
        InfoRight,
        LabelLeft,
        LabelBottom,
        SmallToggleLeft,
        AntennaState,
        AntennaLevel,
        DebugTextShown,
        BackgroundShown,
        GroupShown,
        ScanBoxShown,
        ScanTextShown,
        SmallToggleShown,
        ToolShown, // bit n: element 20 + n
        StateScan, // of elements 20 to 25 and 27
        StateList,
        StateSetting,
        StateRecord,
        StateDown,
        StateUp,
        StateToggle,
        FaceRecord,
        FaceDown,
        FaceSmallToggle,
        FaceFullToggle,
        ModalDepth,
        kCount
    };
    static const char* const kNames[kCount];
};

struct Snapshot {
    std::array<long long, Number::kCount> numbers{};
    std::string info, title, antenna, debug, scan; // texts of elements
    std::vector<std::string> labels;
    std::string mask;

    long long& operator[](Number::Name name) { return numbers[name]; }
    friend bool operator==(const Snapshot&, const Snapshot&) = default;
};

// One line for every difference: "Mode: wanted 2, got 4".
[[nodiscard]] std::vector<std::string> Differences(const Snapshot& wanted, const Snapshot& got);

} // namespace model
