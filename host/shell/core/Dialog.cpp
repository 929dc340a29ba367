// Skinned modal dialogs.
#include "host/shell/core/Access.h"
#include "host/shell/core/DialogImpl.h"
#include "host/shell/core/ShellCore.h"

using shell::ShellCore;

const GRuntimeClass CVelDialog::classCVelDialog = {"CVelDialog", nullptr, &GView::classGView};

const GMessageMap CVelDialog::messageMap = [] {
    static const GMessageEntry rows[] = {
        GMap::OnCommand<&CVelDialog::OnOK>(3),
        GMap::OnCommand<&CVelDialog::OnCancel>(4),
        GMap::OnKeyUp<&CVelDialog::OnKeyUp>(),
    };
    return GMessageMap{&GView::messageMap, rows, 3};
}();

CVelDialog::CVelDialog(GView* parent) : m_pDialog(new DialogImpl) {
    m_pDialog->parent = parent;
}

CVelDialog::~CVelDialog() {
    if (m_hWnd) {
        shell::UnmakeDialog(*this);
    }
    delete m_pDialog;
}

const GRuntimeClass* CVelDialog::GetRuntimeClass() const {
    return &classCVelDialog;
}

const GMessageMap* CVelDialog::GetMessageMap() const {
    return &messageMap;
}

void CVelDialog::OnDraw(HDC dc) {
    DoPaint(dc);
}

int CVelDialog::OnInitDialog() {
    const ShellCore* core = ShellCore::Current();
    m_pDialog->failed = !core || !core->skins.Find(GetResourceName());
    return !m_pDialog->failed;
}

void CVelDialog::OnKeyUp(UINT key, UINT /*repeatCount*/, UINT /*flags*/) {
    constexpr UINT kEscape = 27, kReturn = 13, kOkKey = 195;
    if (key == kEscape) {
        OnCancel();
    } else if (key == kReturn || key == kOkKey) {
        OnOK();
    }
}

void CVelDialog::OnOK() {
    EndDialog(kDialogOk);
}

void CVelDialog::OnCancel() {
    EndDialog(kDialogCancel);
}

int CVelDialog::DoModal() {
    ShellCore* core = ShellCore::Current();
    if (!core || !shell::MakeDialog(*this, false)) {
        return kDialogFailed;
    }
    if (!core->RunModal(m_hWnd, [this] { return m_pDialog->ended; })) {
        EndDialog(kDialogCancel);
    }
    shell::UnmakeDialog(*this);
    return m_pDialog->result;
}

void CVelDialog::EndDialog(int result) {
    if (m_pDialog->ended) {
        return;
    }
    m_pDialog->ended = true;
    m_pDialog->result = result;
    ShellCore* core = ShellCore::Current();
    if (shell::Window* window = core ? core->windows.Find(m_hWnd) : nullptr) {
        window->visible = false;
        core->ScreenChanged();
    }
}

void CVelDialog::PlaceTopmost(int x, int y, int width, int height) {
    ShellCore* core = ShellCore::Current();
    if (shell::Window* window = core ? core->windows.Find(m_hWnd) : nullptr) {
        core->windows.Place(*window, {x, y, x + width, y + height});
        window->visible = true;
        core->windows.Raise(m_hWnd);
        core->ScreenChanged();
    }
}

CVelDialog* CVelDialog::FromHandle(HWND handle) {
    ShellCore* core = ShellCore::Current();
    const shell::Window* window = core ? core->windows.Find(handle) : nullptr;
    const bool isDialog = window && window->view->IsKindOf(&classCVelDialog);
    return isDialog ? static_cast<CVelDialog*>(window->view) : nullptr;
}

namespace shell {

bool MakeDialog(CVelDialog& dialog, bool isMessageBox) {
    ShellCore& core = *ShellCore::Current();
    CVelDialog::DialogImpl& impl = VelShellAccess::Dialog(dialog);
    impl.failed = false;
    impl.ended = false;
    impl.result = kDialogCancel;
    VelShellAccess::ChooseTexts(dialog);
    const Skin* skin = core.skins.Find(dialog.GetResourceName());
    const int width = skin ? skin->description.width : 1;
    const int height = skin ? skin->description.height : 1;
    const int x = (kScreenWidth - width) / 2;
    const int y = (kScreenHeight - height) / 2;
    Window* window = core.CreateWindowFor(dialog, dialog, isMessageBox ? WindowKind::MessageBox : WindowKind::Dialog,
                                          {x, y, x + width, y + height}, isMessageBox ? "box" : "dialog");
    if (!window) {
        return false;
    }
    const HWND handle = window->handle;
    window->dims = !isMessageBox;
    dialog.Theme();
    // A derived dialog may end its own initialisation early and still run; only the base's failure is one.
    dialog.OnInitDialog();
    window = core.windows.Find(handle);
    if (!window || impl.failed) {
        UnmakeDialog(dialog);
        return false;
    }
    if (!impl.ended && !window->visible) {
        window->visible = true;
        core.ScreenChanged();
    }
    return true;
}

void UnmakeDialog(CVelDialog& dialog) {
    if (ShellCore* core = ShellCore::Current()) {
        core->DestroyWindowOf(dialog);
    }
}

} // namespace shell
