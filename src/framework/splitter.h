// A bar between two windows side by side, with which the user divides the room between them.
#pragma once

#include <functional>

#include "framework/window.h"

namespace permora {

class CSplitter : public CWnd {
  public:
    static constexpr int kWidth = 5;  // logical pixels

    // As a visible child of `owner`. While the user drags the bar, `moved` gets the place where its left edge
    // is wanted, in the owner's client area; `dropped` runs at the end.
    bool Create(CWnd& owner, unsigned int id, std::function<void(int left)> moved,
                std::function<void()> dropped);
};

}  // namespace permora
