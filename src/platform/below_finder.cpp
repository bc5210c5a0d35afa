#include "platform/below_finder.h"

#include <algorithm>
#include <utility>

namespace permora {
namespace {

// So many levels are gone through for each object rather than held.
constexpr std::size_t kNear = 64;
constexpr std::size_t kMostKept = 64;
// The last ones, which are likely to be needed again soon, stay when others are let go of.
constexpr std::size_t kAlwaysKept = 16;

// Where the separator with this number (from 0) stands; there is one.
std::size_t PlaceOfSeparator(std::string_view path, std::size_t number) {
    std::size_t place = path.find('\\');
    for (; number > 0; --number)
        place = path.find('\\', place + 1);
    return place;
}

}  // namespace

void BelowFinder::LeaveTo(std::string_view path) {
    const auto differs = std::ranges::mismatch(path, deepest);
    const auto common = static_cast<std::size_t>(differs.in1 - path.begin());
    while (!kept.empty() && (kept.back().length > common || kept.back().length >= path.size() ||
                             path[kept.back().length] != '\\'))
        kept.pop_back();
    deepest.resize(kept.empty() ? 0 : kept.back().length);
}

void BelowFinder::Keep(std::string_view path, HeldObject folder) {
    if (kept.size() == kMostKept) {
        std::size_t number = 0;
        std::erase_if(kept,
                      [&](const Kept&) { return ++number % 2 == 1 && number + kAlwaysKept <= kMostKept; });
    }
    kept.push_back({path.size(), std::move(folder)});
    deepest = path;
}

// A long way is halved, so that the folders to which the order of a tree comes back lie close together near
// its end, and few are held at its beginning.
DWORD BelowFinder::Hold(const std::string& path, HeldObject& object) {
    LeaveTo(path);
    for (;;) {
        const HeldObject& folder = kept.empty() ? top : kept.back().folder;
        const std::size_t begin = kept.empty() ? 0 : kept.back().length + 1;
        const std::string_view rest = std::string_view(path).substr(std::min(begin, path.size()));
        const auto levels = static_cast<std::size_t>(std::ranges::count(rest, '\\'));
        if (levels < kNear) return folder.HoldBelow(std::string(rest), object);
        const std::size_t end = PlaceOfSeparator(rest, levels / 2);
        HeldObject middle;
        const DWORD error = folder.HoldBelow(std::string(rest.substr(0, end)), middle);
        if (error != ERROR_SUCCESS) return error;
        Keep(std::string_view(path).substr(0, begin + end), std::move(middle));
    }
}

}  // namespace permora
