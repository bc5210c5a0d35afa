// CPageView: a control that shows pages of help, and leads from one to the other.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "framework/window.h"

namespace permora {

// Pages are HTML. They get no pictures, scripts or style sheets of their own: the control shows their text in
// the colours and the font of the desktop. It reads nothing but what `onRead` returns and fetches nothing.
// The keyboard scrolls, Tab goes from link to link, Enter follows one, Alt+Left and Alt+Right go back and
// forward.
class CPageView : public CWnd {
  public:
    // Set before the first Show. The text of the page of that name ("editor.html"), or nothing.
    std::function<std::optional<std::string>(const std::string& name)> onRead;
    // A link was followed to what is no page: its whole address.
    std::function<void(const std::string& address)> onAddress;
    // Another page is shown, or another place in it.
    std::function<void()> onShown;

    // Shows a page, or a place in it: "editor.html#owner". False: there is no such page, and what was shown
    // stays.
    bool Show(const std::string& place);
    void GoBack();
    void GoForward();
    bool CanGoBack() const;
    bool CanGoForward() const;
};

}  // namespace permora
