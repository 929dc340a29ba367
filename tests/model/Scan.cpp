// The scan, the list that it leaves, and the two dialogs that the view opens.
#include <cstdio>

#include "tests/model/Model.h"

namespace model {

namespace {

constexpr int kClearedSlots = 10;
constexpr std::size_t kServicesOfABlock = 18;

} // namespace

void Model::ShowCounts(int television, int radio) {
    char text[64];
    std::snprintf(text, sizeof text, "  %d%*s%d ", television, 23, "", radio);
    At(50).text = text;
}

void Model::Scan() {
    EndFrontDialog();
    CloseDMBDAB();
    KillTimer(kChangeTimer);
    KillTimer(kStartTimer);
    pending = lastTelevision = lastRadio = -1;
    ShowInfo(nullptr);
    SetTitle("");
    for (const int id : {20, 21, 22, 23, 24, 25, 27})
        At(id).state = 2;
    ShowControls(1);
    EnableToggle(0);
    At(49).shown = At(50).shown = true;
    scanning = dirty = true;
    current = -1;
    SetMode(kStopped);
    for (int i = 0; i < kClearedSlots; ++i)
        slots[static_cast<std::size_t>(i)] = {};
    foundBlocks = 0;
    int found = 0;
    int television = 0;
    int radio = 0;
    for (int row = 0; row < kRows; ++row) {
        const auto at = static_cast<std::size_t>(row);
        if (mask[at] == 0)
            continue;
        if (hasTuner)
            Note("tuner.GetChannel " + std::to_string(FrequencyOf(row)));
        if (hasTuner && !in.air[at].empty()) {
            Slot& slot = slots[static_cast<std::size_t>(found++)];
            slot = {FrequencyOf(row), in.air[at]};
            if (slot.services.size() > kServicesOfABlock)
                slot.services.resize(kServicesOfABlock);
            for (const Service& service : slot.services) {
                television += service.type == 8 ? 1 : 0;
                radio += service.type == 0 ? 1 : 0;
            }
            ShowCounts(television, radio);
        }
        Sleep(20);
    }
    foundBlocks = found;
    RebuildList();
    At(50).text.clear();
    At(49).shown = At(50).shown = false;
    for (const int id : {20, 21, 22, 24, 25, 27})
        At(id).state = 0; // the record button stays as it is
    scanning = false;
    if (count == 0)
        PostTo(kView, kBoxRequest, 1001, 2);
    else
        ShowList();
}

// The slots up to the one after the last that was found: it may hold a block of an earlier scan.
void Model::RebuildList() {
    list.clear();
    for (int i = 0; i <= foundBlocks && i < kRows; ++i) {
        const Slot& slot = slots[static_cast<std::size_t>(i)];
        for (const Service& service : slot.services) {
            if (service.type != 8 && service.type != 0)
                continue;
            std::string label = service.label.substr(0, 16);
            while (!label.empty() && label.back() == ' ')
                label.pop_back();
            list.push_back({slot.frequency, label, service.id, service.type == 8 ? kTelevision : kRadioType});
        }
    }
    count = static_cast<int>(list.size());
    if (in.profileLocked)
        return; // the old file stays
    fileList = list;
    fileExists = true;
}

void Model::ShowList() {
    Dialog dialog;
    dialog.kind = Modal::List;
    dialog.tab = CurrentType() < 0 ? 0 : CurrentType() > 2 ? 2 : CurrentType();
    for (std::size_t i = 0; i < list.size(); ++i)
        if (list[i].kind == kTelevision || list[i].kind == kRadioType)
            dialog.lines[list[i].kind].push_back(static_cast<int>(i));
    if (in.cardIn)
        dialog.lines[2] = {0, 1}; // two recordings lie on the card
    RunModal(dialog);
    if (dialog.ended && dialog.result == 1 && dialog.selection >= 0) {
        const auto line = static_cast<std::size_t>(dialog.selection);
        if (dialog.tab == 2) {
            PlayFile("\\SDMMC Card\\DMB\\" + std::string(line == 0 ? "a.dmb" : "b.dmb"));
            return;
        }
        const int position = dialog.lines[dialog.tab][line];
        const Record& record = list[static_cast<std::size_t>(position)];
        labelField = ChannelName(record.frequency) + " " + record.label;
        PostTo(kView, kChangeChannel, position);
        return;
    }
    if (count != 0 && current >= count) {
        ShowInfoText(1005);
    } else if (count < 1) {
        ShowInfoText(1002);
    } else {
        StartTimer(kToggleTimer, 200);
        toggleGuard = true;
    }
}

void Model::ShowSettings() {
    Dialog dialog;
    dialog.kind = Modal::Settings;
    dialog.recordTime = static_cast<int>(recordTime);
    dialog.ratio = ratio;
    RunModal(dialog);
    if (dialog.ended && dialog.result == 1)
        SaveProfile();
}

} // namespace model
