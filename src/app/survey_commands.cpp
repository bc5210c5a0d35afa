#include "app/survey_commands.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

#include "platform/api/messages.h"
#include "platform/network_path.h"
#include "results/find_dialog.h"
#include "results/find_source.h"
#include "results/report_dialog.h"
#include "results/report_source.h"
#include "security/object_security.h"
#include "security/object_server.h"

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

std::string SurveyCommands::ServerOf(SearchedPlace searched) const {
    if (searched == SearchedPlace::kFolder) return ServerOfPath(FolderText());
    std::vector<std::string> paths = view.SelectedNames();
    if (view.IsShowing(PlaceKind::kFolder))
        for (std::string& path : paths)
            path = ChildPath(FolderText(), path);
    return ServerOfPaths(paths);
}

std::vector<ResultTop> SurveyCommands::Tops(SearchedPlace searched) const {
    std::vector<ResultTop> tops;
    const std::vector<std::string> names =
        searched == SearchedPlace::kSelection ? view.SelectedNames() : std::vector<std::string>();
    if (names.empty() || !view.IsShowing(PlaceKind::kDrives)) {
        AddTops(view.Rows().Volume(), names, tops);
        return tops;
    }
    for (const std::string& drive : names)
        if (!AddTops(view.Rows().VolumeOf(drive), {drive}, tops)) return {};
    return tops;
}

// False when they are not found, which was reported.
bool SurveyCommands::AddTops(const std::string& volume, const std::vector<std::string>& names,
                             std::vector<ResultTop>& tops) const {
    const auto find = [rows = view.SharedRows(), names](std::vector<ResultTop>& found,
                                                        PatientWork::Running& running) {
        Place place;
        Outcome outcome = rows->Hold(names, place);
        if (!outcome.IsDone()) return outcome;
        if (names.empty()) found = TopsOf(place, rows->Folder());
        for (const std::string& name : names) {
            if (running.isGivenUp) break;
            found.push_back(TopsOf({place.kind, place.folder, {name}}, rows->Folder()).front());
            ++running.done;
        }
        return outcome;
    };
    std::vector<ResultTop> added;
    const Outcome outcome = view.AskFor<std::vector<ResultTop>>(volume, added, find);
    view.Tell(outcome);
    std::ranges::move(added, std::back_inserter(tops));
    return outcome.IsDone();
}

template <class Dialog>
std::vector<ResultTop> SurveyCommands::Ask(Dialog& dialog) const {
    dialog.folder = FolderText();
    dialog.selection = SelectionText();
    dialog.serverOf = [this](SearchedPlace searched) { return ServerOf(searched); };
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
