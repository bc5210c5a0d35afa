// The security wizard on the items selected in the browser.
#pragma once

#include <cstdint>

#include "framework/window.h"
#include "history/change_session.h"
#include "platform/place.h"
#include "security/object_security.h"

namespace permora {

// The user's settings for the wizard.
struct WizardSettings {
    bool askBeforeSecureDeletion = true;
    std::uint8_t* showIntermediateInfo = nullptr;  // borrowed; the setting that the notice may clear
};

// Shows the wizard until it is closed: one task for all items, rights for accounts or deletion for good. The
// items are in one folder, or are drives; there is at least one. They are held until the wizard has closed.
// Rights that it assigns are one of `changes`.
void RunSecurityWizard(CWnd* owner, const Place& place, const WizardSettings& settings,
                       ChangeSession& changes);
// The same for objects of several folders.
void RunSecurityWizard(CWnd* owner, const RememberedPlace& place, const WizardSettings& settings,
                       ChangeSession& changes);

}  // namespace permora
