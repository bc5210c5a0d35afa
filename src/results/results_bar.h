// ResultsBar: which page a window of results shows, and what is done with it.
#pragma once

#include "framework/bars.h"

namespace permora {

// Where the window is narrow, the choice of pages leaves room for the buttons.
class ResultsBar : public CDialogBar {
  protected:
    void OnSize(Size client) override;
};

}  // namespace permora
