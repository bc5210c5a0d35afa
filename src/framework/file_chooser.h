// The desktop's dialog for choosing the file that something is saved as.
#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "framework/window.h"

namespace permora {

struct FileKind {
    const char* name;       // "Web page"
    const char* extension;  // "html"
};

struct ChosenFile {
    std::string path;
    std::size_t kind = 0;  // in the kinds offered
};

// Lets the user choose a file and one of `kinds`. A name without extension gets that of the kind, and one
// with that of a kind chooses it. The user has agreed if there is a file of that name. On false, `file` is
// unchanged: the user chose none, or one without a path.
[[nodiscard]] bool ChooseFileToSave(CWnd& owner, const std::string& title, std::span<const FileKind> kinds,
                                    ChosenFile& file);

}  // namespace permora
