#include "results/searched_place.h"

#include "framework/controls.h"

namespace permora {
namespace {

void ShowPlace(CWnd& dialog, unsigned int id, const std::string& label, const std::string& place) {
    CWnd& button = *dialog.GetDlgItem(id);
    std::string shown;
    for (const char letter : place)
        shown += letter == '&' ? "&&" : std::string(1, letter);
    button.SetWindowText(place.empty() ? label : label + ": " + shown);
    button.EnableWindow(!place.empty());
}

}  // namespace

void ShowPlaces(CWnd& dialog, PlaceButtons buttons, const std::string& selection, const std::string& folder) {
    ShowPlace(dialog, buttons.selection, "The &selection", selection);
    ShowPlace(dialog, buttons.folder, "The &folder shown", folder);
    dialog.GetDlgItem<CButton>(selection.empty() ? buttons.folder : buttons.selection)
        ->SetCheck(CheckState::kChecked);
}

SearchedPlace ChosenPlace(const CWnd& dialog, PlaceButtons buttons) {
    return dialog.GetDlgItem<CButton>(buttons.selection)->IsChecked() ? SearchedPlace::kSelection
                                                                      : SearchedPlace::kFolder;
}

}  // namespace permora
