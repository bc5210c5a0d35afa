#pragma once

#include "tests/screenshots/looks.h"

namespace permora {

// Writes a picture of the dialog of the history, with changes that a server might have.
void TakeHistoryPicture(const Series& series);

}  // namespace permora
