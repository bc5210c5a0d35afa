// The texts about files that are not overwritten.
#pragma once

#include "platform/folder_files.h"

namespace permora {

// Why a file is not overwritten, as a part of a sentence about it.
const char* ObstacleText(OverwriteObstacle obstacle);
// Whether the obstacle is something that cannot be found out, and not something that is known.
bool IsUncertainty(OverwriteObstacle obstacle);

}  // namespace permora
