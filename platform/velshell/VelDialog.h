// A skinned modal dialog of the shell.
#pragma once

#include "platform/types.h"
#include "platform/velshell/GEngine.h"
#include "platform/velshell/GWorkspace.h"

// Results of a modal run.
enum VelDialogResult : int { kDialogFailed = -1, kDialogOk = 1, kDialogCancel = 2 };

class DMB_HOST_API CVelDialog : public GView, public GFactory, public GMessage {
public:
    explicit CVelDialog(GView* parent);
    const GRuntimeClass* GetRuntimeClass() const override;
    ~CVelDialog() override;
    const GMessageMap* GetMessageMap() const override;
    void OnDraw(HDC dc) override;

    // Before the dialog is shown. Zero from this base: its skin could not be made, and DoModal fails. Zero from a derived dialog
    // ends the initialisation early; the dialog runs all the same.
    virtual int OnInitDialog();
    // Commands 3 (OK) and 4 (cancel).
    virtual void OnOK();
    virtual void OnCancel();

    // Runs the dialog's own message loop; returns the result given to EndDialog, or kDialogFailed when it could not be made.
    int DoModal();
    void EndDialog(int result);
    // Places the dialog's window in screen coordinates, topmost, and shows it.
    void PlaceTopmost(int x, int y, int width, int height);

    // The dialog behind a window, or null when the window is not a dialog's.
    [[nodiscard]] static CVelDialog* FromHandle(HWND window);

    static const GRuntimeClass classCVelDialog;
    static const GMessageMap messageMap;
    struct DialogImpl;

protected:
    // Escape cancels; Enter and the OK key confirm.
    void OnKeyUp(UINT key, UINT repeatCount, UINT flags);

    DialogImpl* m_pDialog = nullptr;
    friend class VelShellAccess;
};
