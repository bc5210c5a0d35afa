#pragma once

#include "tests/screenshots/looks.h"

namespace permora {

// Writes pictures of the window of a file operation and of each of its questions.
void TakeFileOperationPictures(const Series& series);

}  // namespace permora
