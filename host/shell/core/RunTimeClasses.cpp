#include "host/shell/core/RunTimeClasses.h"

#include "host/shell/core/ShellCore.h"

#include <algorithm>

namespace shell {

void RunTimeClasses::Announce(const GExtensionLibrary* library) {
    if (library && std::find(libraries.begin(), libraries.end(), library) == libraries.end()) {
        libraries.push_back(library);
    }
}

void RunTimeClasses::Withdraw(const GExtensionLibrary* library) {
    std::erase(libraries, library);
}

const GRuntimeClass* RunTimeClasses::Find(std::string_view className) const {
    for (const GExtensionLibrary* library : libraries) {
        for (UINT i = 0; i < library->classCount; ++i) {
            if (className == library->classes[i]->className) {
                return library->classes[i];
            }
        }
    }
    return nullptr;
}

} // namespace shell

void GRegisterExtension(const GExtensionLibrary* library) {
    if (shell::ShellCore* core = shell::ShellCore::Current()) {
        core->classes.Announce(library);
    }
}

void GWithdrawExtension(const GExtensionLibrary* library) {
    if (shell::ShellCore* core = shell::ShellCore::Current()) {
        core->classes.Withdraw(library);
    }
}

// ---- GObject ----

const GRuntimeClass GObject::classGObject = {"GObject", nullptr, nullptr};

GObject::~GObject() = default;

const GRuntimeClass* GObject::GetRuntimeClass() const {
    return &classGObject;
}

bool GObject::IsKindOf(const GRuntimeClass* runtimeClass) const {
    for (const GRuntimeClass* own = GetRuntimeClass(); own; own = own->baseClass) {
        if (own == runtimeClass) {
            return true;
        }
    }
    return false;
}
