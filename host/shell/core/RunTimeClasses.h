// The extension libraries that announced themselves, and their classes by name.
#pragma once

#include "platform/velshell/GWorkspace.h"

#include <string_view>
#include <vector>

namespace shell {

class RunTimeClasses {
public:
    // Announcing twice and withdrawing an unknown library have no effect.
    void Announce(const GExtensionLibrary* library);
    void Withdraw(const GExtensionLibrary* library);

    // The class of an announced library, or null.
    [[nodiscard]] const GRuntimeClass* Find(std::string_view className) const;
    [[nodiscard]] std::size_t LibraryCount() const { return libraries.size(); }

private:
    std::vector<const GExtensionLibrary*> libraries;
};

} // namespace shell
