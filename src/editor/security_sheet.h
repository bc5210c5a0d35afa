// The security editor on the items selected in the browser.
#pragma once

#include <string>

#include "framework/window.h"
#include "history/change_session.h"
#include "platform/place.h"
#include "security/object_security.h"

namespace permora {

// Shows the editor until it is closed. The items are in one folder, or are drives; there is at least one. The
// first one is shown and gives the title, and changes go to all of them. When the name of an item leads to
// another object later, that object is left alone and the user is informed. Each Apply is one of `changes`.
void EditSecurity(CWnd* owner, const Place& place, ChangeSession& changes);
// The same for objects of several folders; `name` gives the title.
void EditSecurity(CWnd* owner, const RememberedPlace& place, const std::string& name, ChangeSession& changes);

}  // namespace permora
