// The main window's commands on whole trees: Find, Report, and the windows with what was found.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "browser/browser_view.h"
#include "framework/window.h"
#include "results/result_tops.h"
#include "results/results_windows.h"
#include "results/searched_place.h"

namespace permora {

class SurveyCommands {
  public:
    // All outlive this object's use; the windows are closed before the main window is.
    SurveyCommands(CWnd& ownerWindow, BrowserView& browser, ResultsHost& program)
        : owner(ownerWindow), view(browser), windows(program) {}

    // Asks for what, and shows where it is found.
    void Find();
    // Asks for what a report is made of, and shows it.
    void Report();
    // Whether there is a tree to look at: a folder is shown, or drives of which some are selected.
    bool IsOffered() const;
    void CloseWindows() { windows.CloseAll(); }

  private:
    // Runs a dialog that asks where to look. Empty: the user wants nothing, or what was chosen cannot be
    // worked on, which has been reported.
    template <class Dialog>
    std::vector<ResultTop> Ask(Dialog& dialog) const;
    std::vector<ResultTop> Tops(SearchedPlace searched) const;
    bool AddTops(const std::string& volume, const std::vector<std::string>& names,
                 std::vector<ResultTop>& tops) const;
    std::string FolderText() const;
    std::string SelectionText() const;
    std::string ServerOf(SearchedPlace searched) const;

    CWnd& owner;
    BrowserView& view;
    ResultsWindows windows;
};

}  // namespace permora
