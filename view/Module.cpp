// The module announces its class when it is loaded and withdraws it when it is unloaded. Nothing else happens here.
#include "view/DMBView.h"

namespace {

const GRuntimeClass* const kClasses[] = {&CVelDMBView::classCVelDMBView};
const GExtensionLibrary kLibrary = {WTEXT("VelDMB"), kClasses, 1};

void ModuleAttach() {
    GRegisterExtension(&kLibrary);
}

void ModuleDetach() {
    GWithdrawExtension(&kLibrary);
}

} // namespace

#ifdef _WIN32

extern "C" DMB_API BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
    if (reason == DLL_PROCESS_ATTACH)
        ModuleAttach();
    else if (reason == DLL_PROCESS_DETACH)
        ModuleDetach();
    return TRUE;
}

#else

namespace {
[[gnu::constructor]] void OnLoad() {
    ModuleAttach();
}
[[gnu::destructor]] void OnUnload() {
    ModuleDetach();
}
} // namespace

#endif
