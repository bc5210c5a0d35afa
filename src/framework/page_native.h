// The seam of the control for pages, beside native.h.
#pragma once

#include <memory>
#include <string>

#include "framework/native.h"
#include "framework/page_view.h"

namespace permora {

// As CPageView, whose functions it calls.
class NativePage : public NativeWindow {
  public:
    using NativeWindow::NativeWindow;
    virtual bool Show(const std::string& place) = 0;
    virtual void GoBack() = 0;
    virtual void GoForward() = 0;
    virtual bool CanGoBack() const = 0;
    virtual bool CanGoForward() const = 0;
};

}  // namespace permora
