#include "platform/linux/shell/share_wizard.h"

#include <utility>

#include "platform/api/errors.h"
#include "platform/share_wizard.h"

namespace permora {
namespace {

ShareWizard& CurrentWizard() {
    static ShareWizard wizard;
    return wizard;
}

}  // namespace

void SetShareWizard(ShareWizard wizard) {
    CurrentWizard() = std::move(wizard);
}

DWORD host::RunShareWizard() {
    if (!CurrentWizard()) return ERROR_FILE_NOT_FOUND;
    CurrentWizard()();
    return ERROR_SUCCESS;
}

}  // namespace permora
