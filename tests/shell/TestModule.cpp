// The smallest module: one view class, announced while loaded.
#include "tests/shell/TestView.h"

namespace {

const GRuntimeClass* const kClasses[] = {&TestView::classTestView};
const GExtensionLibrary kLibrary = {u"TestModule", kClasses, 1};

__attribute__((constructor)) void Attach() {
    GRegisterExtension(&kLibrary);
}
__attribute__((destructor)) void Detach() {
    GWithdrawExtension(&kLibrary);
}

} // namespace
