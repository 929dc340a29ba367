// Messages, timers and modal windows: posted messages first, then the timer that has been due longest; one tick however late.
#include <algorithm>
#include <limits>

#include "tests/model/Model.h"

namespace model {

const char* const Model::texts[] = {nullptr, "", nullptr, "hello", "NEWS", "MUSIC", "SPORT", "news", "TV1"};

namespace {

bool CarriesText(unsigned message, std::int64_t w) {
    return (message == kUpdateInfo && w == 0) || message == kChangeChannel;
}

} // namespace

// ---- Messages ----------------------------------------------------------------------------------------------------------

void Model::PostTo(Window window, unsigned message, std::int64_t w, std::int64_t l) {
    if (window == kView && !open)
        return;
    queue.push_back({window, message, w, l});
    if (message == kKeyReleased)
        return; // input, not an effect
    std::string line = window == kMain ? "post main " : "post view ";
    if (message == kCommand)
        line += "command " + std::to_string(w);
    else if (CarriesText(message, w) && l != kNull)
        line += std::to_string(message) + " " + std::to_string(w) + " *";
    else
        line += std::to_string(message) + " " + std::to_string(w) + " " + std::to_string(l);
    Note(line);
}

void Model::Post(unsigned message, std::int64_t w, std::int64_t l) {
    PostTo(kView, message, w, l);
}

void Model::Send(unsigned message, std::int64_t w, std::int64_t l) {
    Dispatch({kView, message, w, l});
}

void Model::KeyUp(unsigned code, unsigned repeat) {
    PostTo(homeInFront ? kMain : kView, kKeyReleased, code, repeat);
}

std::int64_t Model::Dispatch(const Posted& message) {
    const auto id = static_cast<int>(message.w);
    if (message.window == kMain) {
        if (message.message == kBoxRequest)
            PostedBox("VelMain", id, static_cast<int>(message.l));
        else if (message.message == kCloseView)
            CloseNow();
        else if (message.message == kCommand && id == 17)
            Restore();
        else if (message.message == kKeyReleased && id == 27)
            (void)ForceBox(2);
        return 0;
    }
    if (message.window == kBox) {
        noticeUp = false; // its own timer
        KillTimer(kNoticeTimer, kBox);
        return 0;
    }
    switch (message.message) {
    case kTimerTick:
        OnTimer(static_cast<unsigned>(id));
        break;
    case kKeyReleased:
        OnKeyUp(static_cast<unsigned>(id), static_cast<unsigned>(message.l));
        break;
    case kGraphNotice:
        MediaNotify();
        break;
    case kOnAirNotice:
        OnAirMessage();
        break;
    case kVideoRequest:
        pictureShown = id != 0;
        Note(pictureShown ? "video on" : "video off");
        break;
    case kBoxRequest:
        PostedBox("VelDMB", id, static_cast<int>(message.l));
        break;
    case kChangeChannel: {
        const std::string text = message.l > kLabelField    ? texts[message.l]
                                 : message.l == kLabelField ? labelField
                                                            : "";
        ChangeTo(id, message.l == kNull ? nullptr : &text);
        break;
    }
    case kUpdateInfo:
        if (message.w == 0) {
            const std::string text = message.l > kLabelField    ? texts[message.l]
                                     : message.l == kLabelField ? labelField
                                                                : "";
            ShowInfo(message.l == kNull ? nullptr : &text);
        } else {
            ShowInfoText(id & 0xFFFF);
        }
        break;
    case kStep:
        StepBy(id, static_cast<int>(message.l));
        break;
    case kShowLabel:
        ShowChannelLabel(id, message.l != 0);
        break;
    case kCommand:
        CommandToBase(id);
        break;
    default:
        break;
    }
    return 0;
}

// ---- Timers ------------------------------------------------------------------------------------------------------------

void Model::StartTimer(unsigned id, int period, Window window) {
    KillTimer(id, window);
    timers.push_back({window, id, period, now + period});
}

void Model::KillTimer(unsigned id, Window window) {
    std::erase_if(timers, [&](const Timer& timer) { return timer.window == window && timer.id == id; });
}

bool Model::HasTimer(unsigned id) const {
    return std::any_of(timers.begin(), timers.end(),
                       [&](const Timer& timer) { return timer.window == kView && timer.id == id; });
}

std::int64_t Model::NextDue() const {
    std::int64_t next = std::numeric_limits<std::int64_t>::max();
    for (const Timer& timer : timers)
        next = std::min(next, timer.due);
    return next;
}

bool Model::DispatchOne() {
    if (!queue.empty()) {
        const Posted first = queue.front();
        queue.pop_front();
        Dispatch(first);
        return true;
    }
    const auto first =
        std::min_element(timers.begin(), timers.end(), [](const Timer& a, const Timer& b) { return a.due < b.due; });
    if (first == timers.end() || first->due > now)
        return false;
    first->due += ((now - first->due) / first->period + 1) * first->period;
    Dispatch({first->window, kTimerTick, first->id, 0});
    return true;
}

void Model::Idle() {
    while (DispatchOne()) {
    }
}

void Model::Wait(int milliseconds) {
    const std::int64_t end = now + milliseconds;
    while (now <= end) {
        if (DispatchOne())
            continue;
        if (now == end)
            return;
        now = std::min(end, NextDue());
    }
}

// ---- Modal windows -----------------------------------------------------------------------------------------------------

void Model::RunModal(Dialog& dialog) {
    modals.push_back(&dialog);
    while (!dialog.ended && (DispatchOne() || AnswerModal())) {
    }
    modals.pop_back();
    if (!dialog.ended)
        Note("unanswered");
    if (modals.empty() && closePending) {
        closePending = false;
        PostTo(kMain, kCloseView);
    }
}

// A question that nobody answered counts as cancelled.
int Model::Ask(int textId) {
    const std::string number = std::to_string(textId);
    Note("box VelDMB " + number + " style 1");
    Dialog question;
    questions.push_back(&question);
    RunModal(question);
    questions.pop_back();
    const int result = question.ended ? question.result : 2;
    Note("answer " + number + " " + std::to_string(result));
    return result;
}

void Model::EndDialog(Dialog& dialog, int result) {
    if (dialog.ended)
        return;
    dialog.ended = true;
    dialog.result = result;
}

Model::Dialog* Model::FrontQuestion() {
    return !questions.empty() && !questions.back()->ended ? questions.back() : nullptr;
}

// What is in front: a box, unless it is itself what the innermost loop waits for, then that window.
void Model::EndFrontDialog() {
    if (Dialog* question = FrontQuestion()) {
        EndDialog(*question, 0);
    } else if (noticeUp) {
        noticeUp = false;
        KillTimer(kNoticeTimer, kBox);
    } else if (!modals.empty()) {
        EndDialog(*modals.back(), 0);
    }
}

bool Model::ForceBox(int result) {
    if (Dialog* question = FrontQuestion()) {
        EndDialog(*question, result);
        return true;
    }
    if (!noticeUp)
        return false;
    noticeUp = false;
    KillTimer(kNoticeTimer, kBox);
    return true;
}

void Model::ConfirmModal(Dialog& dialog) {
    if (dialog.kind == Modal::List) {
        const auto tab = static_cast<std::size_t>(dialog.tab);
        const int mark = dialog.marked[tab];
        dialog.selection = mark >= 0 && mark < static_cast<int>(dialog.lines[tab].size()) ? mark : -1;
    } else if (dialog.kind == Modal::Settings) {
        SetRecordTime(static_cast<unsigned>(dialog.recordTime));
        SetRatio(dialog.ratio);
    }
    EndDialog(dialog, 1);
}

// Presses an element of a question in front, else of the innermost window.
bool Model::PressModal(unsigned element) {
    Dialog* target = FrontQuestion();
    const bool answers = element == 3 || element == 4;
    constexpr unsigned kLoneOk = 12; // of an error that nobody waits for; the settings have a button of that number too
    if (element == kLoneOk && noticeUp && noticeStyle == 3 && target == nullptr) {
        noticeUp = false;
        return true;
    }
    if (target == nullptr || !answers)
        target = modals.back();
    if (target->ended)
        return false;
    if (target->kind == Modal::Question && !answers)
        return false;
    if (element == 3)
        ConfirmModal(*target);
    else if (element == 4)
        EndDialog(*target, 2);
    else if (target->kind == Modal::Settings && element <= 15)
        switch (element) {
        case 12:
            target->recordTime = target->recordTime == 0 ? 4 : target->recordTime - 1;
            break;
        case 13:
            target->recordTime = target->recordTime >= 4 ? 0 : target->recordTime + 1;
            break;
        default:
            target->ratio = element == 14 ? 1 : 0;
        }
    else if (target->kind == Modal::List && element >= 60)
        target->tab = static_cast<int>(element) - 60;
    else if (target->kind == Modal::List && element >= 40) {
        const int row = static_cast<int>(element) - 40;
        const auto tab = static_cast<std::size_t>(target->tab);
        if (row < (target->tab == 2 ? 5 : 10) && row < static_cast<int>(target->lines[tab].size()))
            target->marked[tab] = row;
    }
    return true;
}

// Keys go to the view while it asks, else to the innermost window.
void Model::KeyToModal(unsigned key) {
    const Dialog* question = FrontQuestion();
    if (question != nullptr && question == modals.back()) {
        OnKeyUp(key, 1);
        return;
    }
    Dialog& top = *modals.back();
    if (top.ended)
        return;
    if (key == 195)
        ConfirmModal(top);
    else
        EndDialog(top, 2);
}

// The next answer of the user. False when there is none: the loop ends as cancelled.
bool Model::AnswerModal() {
    if (in.answers.empty())
        return false;
    const Answer answer = in.answers.front();
    in.answers.pop_front();
    switch (answer.act) {
    case Answer::Ok:
        PressModal(3);
        break;
    case Answer::Cancel:
        PressModal(4);
        break;
    case Answer::EscapeKey:
        KeyToModal(27);
        break;
    case Answer::OkKey:
        KeyToModal(195);
        break;
    case Answer::Pick:
        if (modals.back()->kind == Modal::List) {
            PressModal(60U + static_cast<unsigned>(answer.tab));
            PressModal(40U + static_cast<unsigned>(answer.row));
            PressModal(3);
        } else if (modals.back()->kind == Modal::Settings) {
            PressModal(12U + static_cast<unsigned>(answer.row % 4));
            PressModal(3);
        } else {
            PressModal(4);
        }
        break;
    }
    return true;
}

} // namespace model
