// Where a dialog's search is to look: the selection of the browser, or the folder that it shows.
#pragma once

#include <cstdint>
#include <string>

#include "framework/window.h"

namespace permora {

enum class SearchedPlace : std::uint8_t { kFolder, kSelection };

// The radio buttons of a dialog that offer the two.
struct PlaceButtons {
    unsigned int selection;
    unsigned int folder;
};

// Names both, for people; an empty one is not offered. The selection is chosen when there is one.
void ShowPlaces(CWnd& dialog, PlaceButtons buttons, const std::string& selection, const std::string& folder);
SearchedPlace ChosenPlace(const CWnd& dialog, PlaceButtons buttons);

}  // namespace permora
