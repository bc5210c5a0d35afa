#include "results/results_windows.h"

#include <utility>

#include "security/message_boxes.h"

namespace permora {

void ResultsWindows::Open(std::unique_ptr<ResultSource> source, CWnd& main) {
    const auto forget = [this](CResultsFrame& closed) {
        std::erase_if(frames, [&](const auto& each) { return each.get() == &closed; });
    };
    frames.push_back(std::make_unique<CResultsFrame>(std::move(source), host, forget));
    if (frames.back()->Open(main.GetWindowRect())) return;
    frames.pop_back();
    ShowErrorBox(main.GetSafeHwnd(), "Error: cannot open the window of results");
}

}  // namespace permora
