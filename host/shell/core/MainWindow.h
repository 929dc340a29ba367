// The shell's top-level window: the home screen behind every view, and the address of requests to the shell.
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
    [[nodiscard]] const WCHAR* GetResourceName() const override { return u"VelMain"; }

    static const GMessageMap messageMap;
};

} // namespace shell
