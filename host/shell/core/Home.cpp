// Who is in front: the home screen or the view. And the reason that lies over a view without a picture.
#include "host/shell/core/Access.h"
#include "host/shell/core/BaseImpl.h"
#include "host/shell/core/ShellCore.h"

#include <algorithm>

namespace shell {

namespace {

// Is the radio's picture on the screen? Without it nothing is, and the reason has the whole room.
bool ShowsStation(CVelBaseView& view) {
    const auto& elements = VelShellAccess::Widgets(view).elements;
    return std::any_of(elements.begin(), elements.end(), [](const auto& element) {
        const GButton::Impl& state = element->State();
        return state.visible && state.description->role == Role::StationName &&
               state.description->kind == ElementKind::Picture;
    });
}

} // namespace

// The view is held as it is when another one comes to the front: it keeps its session, its picture stands still.
bool ShellCore::ShowHome() {
    if (!view || homeInFront || document.IsMinimized() || !modalWindows.empty() || quitting) {
        return false;
    }
    log.Note("hold");
    view->HoldForBackView(1);
    VelShellAccess::Base(*view).active = false;
    view->Deactive();
    if (Window* window = windows.Find(view->GetSafeHwnd())) {
        window->visible = false;
    }
    homeInFront = true;
    main->Refresh();
    ScreenChanged();
    return true;
}

bool ShellCore::ShowView() {
    if (!modalWindows.empty() || quitting) {
        return false;
    }
    if (!view) {
        return lastClass && OpenView(*lastClass);
    }
    if (document.IsMinimized()) {
        Restore();
        return true;
    }
    if (!homeInFront) {
        return false;
    }
    log.Note("back");
    homeInFront = false;
    if (Window* window = windows.Find(view->GetSafeHwnd())) {
        window->visible = true;
    }
    // In front first: a view that goes on while it is not would keep its picture hidden.
    VelShellAccess::Base(*view).active = true;
    view->Active();
    view->HoldForBackView(0);
    view->RefreshWindow();
    ScreenChanged();
    return true;
}

void ShellCore::RefreshReason() {
    ReasonShown now = view && reasonSource ? reasonSource() : ReasonShown{};
    now.radio = now.radio && view && ShowsStation(*view);
    if (!view || (now == reason && reasonIsSmall == (document.IsMinimized() != 0))) {
        return;
    }
    if (now.reason != reason.reason) {
        log.Note("reason " + std::to_string(static_cast<int>(now.reason)));
    }
    reason = now;
    ApplyReason();
}

void ShellCore::ApplyReason() {
    if (!view) {
        return;
    }
    reasonIsSmall = document.IsMinimized() != 0;
    const auto number = static_cast<WORD>(reason.reason);
    WString text = skins.Text(u"VelReason", number, language);
    if (reasonIsSmall) {
        text = text.substr(0, text.find(u'\n')); // the advice stays away
    }
    for (const auto& element : VelShellAccess::Widgets(*view).elements) {
        const Role role = element->State().description->role;
        if (!LiesOverTheView(role)) {
            continue;
        }
        const bool ofRadio = role == Role::RadioReason || role == Role::RadioReasonIcon;
        const bool isIcon = role == Role::ReasonIcon || role == Role::RadioReasonIcon;
        if (isIcon) {
            const GImageSet* icons = element->GetImageSet();
            element->SetBackground(icons ? icons->GetImage(number - 1) : nullptr, 0);
        } else {
            element->SetText(text.c_str(), 0);
        }
        element->Show(reason.reason != Reason::None && ofRadio == reason.radio && !(isIcon && reasonIsSmall), 0);
    }
}

} // namespace shell
