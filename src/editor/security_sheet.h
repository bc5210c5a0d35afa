// The security editor on the items selected in the browser.
#pragma once

#include <cstdint>
#include <string>

#include "framework/geometry.h"
#include "framework/window.h"
#include "history/change_session.h"
#include "platform/place.h"
#include "security/object_security.h"

namespace permora {

// What the user may change while the editor is shown; borrowed.
struct SheetSettings {
    Size* size = nullptr;  // the sheet's (CPropertySheet::KeepSizeIn); null: kept nowhere
    // Whether to ask before entries are lost that the sheet does not show; null: nobody is asked.
    std::uint8_t* asksBeforeLosses = nullptr;
};

// Shows the editor until it is closed. The items are in one folder, or are drives; there is at least one. The
// first one is shown and gives the title, and changes go to all of them. When the name of an item leads to
// another object later, that object is left alone and the user is informed. Each Apply is one of `changes`.
void EditSecurity(CWnd* owner, const Place& place, ChangeSession& changes,
                  const SheetSettings& settings = {});
// The same for objects of several folders; `name` gives the title.
void EditSecurity(CWnd* owner, const RememberedPlace& place, const std::string& name, ChangeSession& changes,
                  const SheetSettings& settings = {});

}  // namespace permora
