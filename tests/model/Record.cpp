// Recording and playing recordings.
#include <algorithm>
#include <chrono>
#include <cstdio>

#include "tests/model/Model.h"

namespace model {

namespace {

// Bytes that must be free: those of the limit's minutes and of eight more.
std::uint64_t NeededSpace(unsigned setting) {
    return (static_cast<std::uint64_t>(kRecordSeconds[std::min(setting, 4U)] / 60) + 8) * 3932160;
}

// "NEWS_700101090000.dmb" in Korean time.
std::string NameOf(const std::string& label, std::int64_t seconds) {
    using namespace std::chrono;
    const sys_seconds local{std::chrono::seconds(seconds) + 9h};
    const auto day = floor<days>(local);
    const year_month_day date(day);
    const hh_mm_ss time(local - day);
    char text[80];
    std::snprintf(text, sizeof text, "_%02d%02u%02u%02d%02d%02d.dmb", static_cast<int>(date.year()) % 100,
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return label + text;
}

} // namespace

void Model::ClickRecord() {
    if (CurrentType() != kTelevision)
        return;
    if (mode == kPlaying) {
        BeginRecording();
    } else if (mode == kRecording) {
        StopRecording();
        PostTo(kView, kBoxRequest, 1009, 2);
    }
}

void Model::BeginRecording() {
    if (!in.cardIn) {
        PostTo(kMain, kBoxRequest, 5, 3);
        return;
    }
    if (in.freeBytes < (std::uint64_t{1} << 32) && in.freeBytes < NeededSpace(recordTime)) {
        PostTo(kView, kBoxRequest, 1010, 3);
        return;
    }
    recordStart = now / 1000;
    const auto position = static_cast<std::size_t>(std::max(current, 0));
    const std::string name = NameOf(position < list.size() ? list[position].label : "", recordStart);
    bool good = HasParser();
    if (good) {
        Note("parser.SetCaptureFileName(\\SDMMC Card\\DMB\\" + name + ")" + (in.nameFails ? " = 80004005" : ""));
        good = !in.nameFails && StartCapture();
    }
    if (!good) {
        PostTo(kMain, kBoxRequest, 5, 3);
        return;
    }
    SetMode(kRecording);
    CheckRecordButton();
    PostTo(kView, kBoxRequest, 1013, 2);
    StartTimer(kRecordTimer, 1000);
}

void Model::StopRecording() {
    StopCapture();
    SetMode(kPlaying);
    KillTimer(kRecordTimer);
    CheckRecordButton();
}

void Model::CheckRecordButton() {
    Element& button = At(23);
    if (CurrentType() != kTelevision || (mode != kRecording && mode != kPlaying))
        button.state = 2;
    else if (mode == kRecording)
        button.face = 1;
    else if (button.state == 2)
        button.state = 0;
    else
        button.face = 0;
}

void Model::PlayFile(const std::string& path) {
    if (mode == kPlaying) {
        Stop();
        if (toolsShown)
            PostTo(kView, kShowLabel);
    }
    if (!hasController) {
        hasController = true;
        ForgetFilters();
    }
    ReleaseInterface();
    if (!InitTelevision(&path))
        return;
    ConnectInterface();
    KillTimer(kSignalTimer);
    Reading(-1);
    fileIndex = 0;
    RunDMB();
}

} // namespace model
