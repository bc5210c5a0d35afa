// The windows of results that are open beside the main window.
#pragma once

#include <memory>
#include <vector>

#include "results/results_frame.h"

namespace permora {

class ResultsWindows {
  public:
    explicit ResultsWindows(ResultsHost& program) : host(program) {}

    // Shows what fills the pages of `source`. `main` is the main window.
    void Open(std::unique_ptr<ResultSource> source, CWnd& main);
    // Stops all workers, waits for them, and closes the windows: before the main window goes.
    void CloseAll() { frames.clear(); }

  private:
    ResultsHost& host;
    std::vector<std::unique_ptr<CResultsFrame>> frames;
};

}  // namespace permora
