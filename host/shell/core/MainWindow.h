// The shell's top-level window: the home screen behind every view, and the address of requests to the shell.
//
// The home screen shows the time, a tile that brings the view to the front, and what plays or played last. It is seen when no view
// is open, around a small view, and in front of a view that is held.
#pragma once

#include "platform/velshell/GEngine.h"
#include "platform/velshell/GWorkspace.h"

namespace shell {

class MainWindow final : public GView, public GFactory, public GMessage {
public:
    MainWindow();
    ~MainWindow() override;
    const GMessageMap* GetMessageMap() const override;
    void OnDraw(HDC dc) override;
    void Locale() override;
    [[nodiscard]] const WCHAR* GetResourceName() const override { return u"VelMain"; }

    // Starts its clock; the window is there.
    void Begin();
    // Shows the time and what plays, as they are now.
    void Refresh();

    static const GMessageMap messageMap;

private:
    void OnTimer(UINT_PTR id);
    void OnKeyUp(UINT key, UINT repeatCount, UINT flags);
    void OnTile();
    void OnLeave();
    void OnRestore();
    void Say(UINT element, const WString& text);
};

} // namespace shell
