#include "host/shell/core/ShellCore.h"

namespace shell {

namespace {

// The one piece of process state of the shell.
ShellCore* current = nullptr;

} // namespace

ShellCore* ShellCore::Current() {
    return current;
}

GdiState* CurrentGdi() {
    return current ? &current->gdi : nullptr;
}

SkinHost* CurrentSkinHost() {
    return current;
}

ShellCore::ShellCore(ce::Ce& system, const Setup& setup)
    : ce(system), skins(setup.skinFolder, gdi), language(setup.language),
      document(setup.profileDirectory, setup.debugMode) {
    current = this;
    ce.loop().SetPainter([this] { return PaintOne(); });
    ce.loop().SetIdleHandler([this] { return ModalIdle(); });
    ce.loop().SetPostObserver(
        [this](const ce::Message& m) { log.NotePosted(m.window, m.message, m.wParam, m.lParam); });
    main = std::make_unique<MainWindow>();
    if (Window* window = CreateWindowFor(*main, *main, WindowKind::Main, kScreen, "main")) {
        main->Theme();
        window->visible = true;
        main->Begin();
    }
}

ShellCore::~ShellCore() {
    quitting = true;
    CloseView();
    boxes.Sweep(true);
    modules.UnloadAll();
    DestroyWindowOf(*main);
    main.reset();
    ce.loop().SetPainter({});
    ce.loop().SetIdleHandler({});
    ce.loop().SetPostObserver({});
    current = nullptr;
}

} // namespace shell
