#include "host/shell/core/Boxes.h"

#include "host/ce/Text.h"
#include "host/shell/core/Access.h"
#include "host/shell/core/DialogImpl.h"
#include "host/shell/core/ShellCore.h"

#include <algorithm>

namespace shell {

namespace {

constexpr UINT_PTR kNoticeTimer = 1;
constexpr UINT kNoticeTime = 3000; // ms
// Elements of the box's skin: OK and Cancel of a question, the text, the lone OK.
constexpr UINT kOkElement = 3, kCancelElement = 4, kTextElement = 11, kLoneOkElement = 12;

} // namespace

const GMessageMap MessageBoxDialog::messageMap = [] {
    static const GMessageEntry rows[] = {
        {WM_COMMAND, kLoneOkElement, kLoneOkElement,
         [](GView* self, WPARAM, LPARAM) -> LRESULT {
             static_cast<MessageBoxDialog*>(self)->OnOK();
             return 0;
         }},
        {WM_TIMER, 0, 0,
         [](GView* self, WPARAM, LPARAM) -> LRESULT {
             static_cast<MessageBoxDialog*>(self)->OnOK();
             return 0;
         }},
    };
    return GMessageMap{&CVelDialog::messageMap, rows, 2};
}();

MessageBoxDialog::MessageBoxDialog(GView* parentView, WString boxText, int boxStyle, std::size_t recordIndex)
    : CVelDialog(parentView), parent(parentView), text(std::move(boxText)), style(boxStyle), record(recordIndex) {}

MessageBoxDialog::~MessageBoxDialog() = default;

const GMessageMap* MessageBoxDialog::GetMessageMap() const {
    return &messageMap;
}

const WCHAR* MessageBoxDialog::GetResourceName() const {
    const WCHAR* notice = u"VelNotice";
    return style == kBoxNotice && ShellCore::Current()->skins.Find(notice) ? notice : u"VelMsgBox";
}

int MessageBoxDialog::OnInitDialog() {
    if (!CVelDialog::OnInitDialog()) {
        return 0;
    }
    if (GButton* area = Find(kTextElement)) {
        area->SetText(text.c_str(), 0);
    }
    ShowButton(kOkElement, style == kBoxOkCancel, 0);
    ShowButton(kCancelElement, style == kBoxOkCancel, 0);
    ShowButton(kLoneOkElement, style == kBoxError, 0);
    if (style == kBoxNotice) {
        SetTimer(m_hWnd, kNoticeTimer, kNoticeTime, nullptr);
    }
    return 1;
}

Boxes::Boxes() = default;
Boxes::~Boxes() = default;

std::size_t Boxes::Record(const WCHAR* resource, WORD textId, int style, bool isPosted) {
    records.push_back({resource, textId, style, isPosted, 0});
    ShellCore::Current()->log.Note("box " + ce::ToUtf8(resource) + " " + std::to_string(textId) + " style " +
                                   std::to_string(style));
    return records.size() - 1;
}

int Boxes::Ask(GView* parent, const WCHAR* resource, WORD textId, const WCHAR* text, int style) {
    const std::size_t index = Record(resource, textId, style, false);
    MessageBoxDialog box(parent, text, style, index);
    ShellCore& core = *ShellCore::Current();
    if (!MakeDialog(box, true)) {
        return kDialogFailed;
    }
    asked.push_back(&box);
    core.windows.Find(box.GetSafeHwnd())->dims = true;
    const bool answered = core.RunModal(box.GetSafeHwnd(), [&box] { return VelShellAccess::Dialog(box).ended; });
    // A notice needs no answer.
    const int result = answered ? VelShellAccess::Dialog(box).result : style == kBoxNotice ? kDialogOk : kDialogCancel;
    asked.pop_back();
    UnmakeDialog(box);
    records[index].answer = result;
    core.log.Note("answer " + std::to_string(textId) + " " + std::to_string(result));
    return result;
}

void Boxes::Post(GView* parent, const WCHAR* resource, WORD textId, const WCHAR* text, int style) {
    Sweep(true);
    const std::size_t index = Record(resource, textId, style, true);
    posted = std::make_unique<MessageBoxDialog>(parent, text, style, index);
    if (!MakeDialog(*posted, true)) {
        posted.reset();
        return;
    }
    AnswerByScript(*posted);
}

bool Boxes::Force(int result) {
    MessageBoxDialog* front = Front();
    if (!front) {
        return false;
    }
    front->EndDialog(result);
    return true;
}

MessageBoxDialog* Boxes::Front() const {
    if (!asked.empty() && !VelShellAccess::Dialog(*asked.back()).ended) {
        return asked.back();
    }
    return posted && !VelShellAccess::Dialog(*posted).ended ? posted.get() : nullptr;
}

void Boxes::Sweep(bool all) {
    if (posted && (all || VelShellAccess::Dialog(*posted).ended)) {
        records[posted->record].answer = VelShellAccess::Dialog(*posted).result;
        posted.reset();
    }
}

bool Boxes::AnswerByScript(MessageBoxDialog& box) {
    const WORD textId = records[box.record].textId;
    const auto fits = std::find_if(answers.begin(), answers.end(),
                                   [textId](const Answer& a) { return !a.textId || *a.textId == textId; });
    if (fits == answers.end()) {
        return false;
    }
    const int result = fits->result;
    answers.erase(fits);
    box.EndDialog(result);
    return true;
}

} // namespace shell
