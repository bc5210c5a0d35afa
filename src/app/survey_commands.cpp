#include "app/survey_commands.h"

#include <memory>
#include <utility>

#include "platform/api/messages.h"
#include "results/find_dialog.h"
#include "results/find_source.h"
#include "results/report_dialog.h"
#include "results/report_source.h"
#include "security/message_boxes.h"

namespace permora {

bool SurveyCommands::IsOffered() const {
    if (view.IsShowing(PlaceKind::kShares)) return false;
    return view.IsShowing(PlaceKind::kFolder) || view.List().GetSelectedCount() > 0;
}

std::string SurveyCommands::FolderText() const {
    return view.Rows().Folder();
}

std::string SurveyCommands::SelectionText() const {
    const std::vector<std::string> names = view.SelectedNames();
    if (names.size() == 1) return names.front();
    return names.empty() ? std::string() : std::to_string(names.size()) + " items";
}

std::vector<ResultTop> SurveyCommands::Tops(SearchedPlace searched) const {
    Place place;
    const std::vector<std::string> names =
        searched == SearchedPlace::kSelection ? view.SelectedNames() : std::vector<std::string>();
    const Outcome outcome = view.Rows().Hold(names, place);
    ShowOutcome(owner.GetSafeHwnd(), outcome);
    return outcome.IsDone() ? TopsOf(place, FolderText()) : std::vector<ResultTop>();
}

template <class Dialog>
std::vector<ResultTop> SurveyCommands::Ask(Dialog& dialog) const {
    dialog.folder = FolderText();
    dialog.selection = SelectionText();
    return dialog.DoModal() == IDOK ? Tops(dialog.place) : std::vector<ResultTop>();
}

void SurveyCommands::Find() {
    CFindDlg dialog(&owner);
    std::vector<ResultTop> tops = Ask(dialog);
    if (tops.empty()) return;
    windows.Open(std::make_unique<FindSource>(std::move(tops), dialog.request.criteria, dialog.request.name),
                 owner);
}

void SurveyCommands::Report() {
    CReportDlg dialog(&owner);
    std::vector<ResultTop> tops = Ask(dialog);
    if (tops.empty()) return;
    windows.Open(std::make_unique<ReportSource>(dialog.request, std::move(tops)), owner);
}

}  // namespace permora
