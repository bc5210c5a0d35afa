#include "results/folder_shape.h"

#include <algorithm>

namespace permora {
namespace {

constexpr RemarkSet kUnknown = {Remark::kDamaged, Remark::kUnreadable, Remark::kUnlisted};

bool HasOtherRemark(RemarkSet remarks) {
    for (const Remark remark : remarks)
        if (!kDepartures.Has(remark)) return true;
    return false;
}

}  // namespace

void FolderShape::Add(const SurveyRow& row, std::size_t place, Listing listing) {
    CloseAllBut(row.path);
    const bool isDeparting = row.remarks.HasAnyOf(kDepartures);
    if (listing != Listing::kLeftOut) {
        if (isDeparting) ++now.departing;
        if (HasOtherRemark(row.remarks)) ++now.remarked;
    }
    const bool isOfShape =
        row.kind == TreeObjectKind::kFolder && (isDeparting || row.remarks.HasAnyOf(kUnknown));
    if (row.path.empty() || (listing == Listing::kListed && isOfShape)) Show(row, place);
}

// An empty path is the top of the next tree.
void FolderShape::CloseAllBut(std::string_view path) {
    const auto differs = std::ranges::mismatch(path, last);
    const auto common = static_cast<std::size_t>(differs.in1 - path.begin());
    const auto isAbove = [&](const Level& level) {
        if (level.pathLength == 0) return !path.empty();
        return level.pathLength <= common && level.pathLength < path.size() && path[level.pathLength] == '\\';
    };
    while (!levels.empty() && !isAbove(levels.back())) {
        KeptFolder& folder = folders[levels.back().folder];
        folder.end = now;
        folder.isOver = true;
        levels.pop_back();
    }
    last = path;
}

void FolderShape::Show(const SurveyRow& row, std::size_t place) {
    const std::size_t above = levels.empty() ? 0 : levels.back().pathLength;
    folders.push_back({{place, levels.size(), above == 0 ? 0 : above + 1}, now, {}, false});
    levels.push_back({folders.size() - 1, row.path.size()});
}

FiguresBelow FolderShape::Below(std::size_t index) const {
    const KeptFolder& folder = folders[index];
    const FiguresBelow end = folder.isOver ? folder.end : now;
    return {end.departing - folder.begin.departing, end.remarked - folder.begin.remarked};
}

}  // namespace permora
