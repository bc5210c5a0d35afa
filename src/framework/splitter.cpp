#include "framework/splitter.h"

#include <utility>

#include "framework/frame_native.h"
#include "framework/styles.h"
#include "framework/window_access.h"

namespace permora {

bool CSplitter::Create(CWnd& owner, unsigned int id, std::function<void(int left)> moved,
                       std::function<void()> dropped) {
    if (HasWindow() || !owner.HasWindow()) return false;
    WindowAccess::Attach(*this, MakeNativeSplitter(*this, owner, std::move(moved), std::move(dropped)),
                         &owner, id, WS_CHILD | WS_VISIBLE);
    WindowAccess::Native(*this)->SetVisible(true);
    return true;
}

}  // namespace permora
