// What a change that was carried to the objects below a folder could not do there.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>

#include "platform/api/base.h"

namespace permora {

struct FailuresBelow {
    static constexpr std::size_t kMostNamed = 10'000;

    std::size_t count = 0;
    // The errors of the first ones in the order of their paths, kMostNamed at most. A path is the names below
    // the folder, with backslashes between them; empty: the folder itself, which cannot be listed.
    std::map<std::string, DWORD> named;

    // The first failure, or the one that says more: where the volume was lost, that of the object that was
    // tried last. Not for none.
    std::pair<const std::string, DWORD> ToTell() const;

    // In any order. Two failures of one object are told by the first.
    void Add(const std::string& path, DWORD error);
};

}  // namespace permora
