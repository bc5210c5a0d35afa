// Places to work on.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/place.h"

namespace permora::test {

// These names in the current directory; without a folder when that cannot be held.
inline Place InCurrentFolder(std::vector<std::string> names) {
    auto folder = std::make_shared<FolderHandle>();
    if (FolderHandle::Open(".", *folder) != ERROR_SUCCESS) folder.reset();
    return {PlaceKind::kFolder, std::move(folder), std::move(names)};
}

}  // namespace permora::test
