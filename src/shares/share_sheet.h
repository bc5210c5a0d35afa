// The security editor on the shares selected in the browser.
#pragma once

#include "framework/window.h"
#include "history/change_session.h"
#include "platform/place.h"

namespace permora {

// Shows the editor until it is closed. There is at least one share; the first one is shown and gives the
// title, and changes go to all of them. Each Apply is one of `changes`. `size`: where
// the sheet's size is kept (CPropertySheet::KeepSizeIn); null: nowhere.
void EditShareSecurity(CWnd* owner, const Place& shares, ChangeSession& changes, Size* size = nullptr);

}  // namespace permora
