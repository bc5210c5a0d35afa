// Files on the clipboard, in the program's own format and in those of the desktop. Failures are reported.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <vector>

#include "browser/file_list.h"
#include "framework/window.h"

namespace permora {

bool HasFilesToPaste();

void PutFilesOnClipboard(CWnd& owner, TransferKind kind, const std::string& folder,
                         std::span<const std::string> names);

// Copies or moves the files on the clipboard into the folder `target` if `mayPaste`, which reports why not,
// then calls `refresh` with the names that they have there unless another one was chosen. Cut files are then
// removed from the clipboard.
void PasteFiles(CWnd& owner, const std::string& target, const std::function<bool()>& mayPaste,
                const std::function<void(const std::vector<std::string>& names)>& refresh);

}  // namespace permora
