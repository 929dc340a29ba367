// Opening the settings and saving what was confirmed.
#include "dialogs/DMBSettingDlg.h"
#include "view/DMBView.h"

void CVelDMBView::OnClickSetting() {
    CDMBSettingDlg dialog(this);
    if (dialog.DoModal() == kDialogOk)
        SaveProfile();
}
