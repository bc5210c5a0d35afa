// What must hold of every list of files that is taken from the clipboard.
#pragma once

#include <string>

#include "browser/file_list.h"
#include "fuzz/require.h"

namespace permora {

template <class Unit>
void RequirePaths(std::basic_string_view<Unit> list) {
    Require(list.size() > 2 && list.back() == Unit{0}, "a list has files and ends in a NUL");
    list.remove_suffix(1);
    while (!list.empty()) {
        const auto path = list.substr(0, list.find(Unit{0}));
        Require(path.size() < list.size() && IsPathOfFile(path), "every path is one of a file");
        list.remove_prefix(path.size() + 1);
    }
}

// `transfer` as a reader leaves it when it was empty before.
inline void RequireSound(const char* fault, const FileTransfer& transfer) {
    if (fault != nullptr)
        Require(transfer.list.empty() && transfer.wideList.empty(), "what is refused leaves nothing");
    else if (transfer.isWide)
        RequirePaths<WCHAR>(transfer.wideList);
    else
        RequirePaths<char>(transfer.list);
}

}  // namespace permora
