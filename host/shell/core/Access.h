// The key to the private parts of the framework classes, for host/shell/core and for tests.
#pragma once

#include "host/shell/skin/Element.h"
#include "platform/velshell/VelFileDialog.h"
#include "platform/velshell/VelPlayerView.h"

class VelShellAccess {
public:
    static void SetHandle(GView& view, HWND handle) { view.m_hWnd = handle; }
    [[nodiscard]] static GFactory::Impl& Widgets(GFactory& facet) { return *facet.m_pFactory; }
    [[nodiscard]] static CVelBaseView::BaseImpl& Base(CVelBaseView& view) { return *view.m_pBase; }
    [[nodiscard]] static CVelDialog::DialogImpl& Dialog(CVelDialog& dialog) { return *dialog.m_pDialog; }
    static void Scroll(CVelFileDialog& list, int rows) { list.Scroll(rows); }
    static void ChooseTexts(CVelBaseView& view) { view.SetMessageResource(view.GetResourceName()); }
    static void ChooseTexts(CVelDialog& dialog) { dialog.SetMessageResource(dialog.GetResourceName()); }
};
