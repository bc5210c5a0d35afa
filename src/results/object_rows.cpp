#include "results/object_rows.h"

#include "browser/folder_paths.h"

namespace permora {

const char* KindText(TreeObjectKind kind) {
    switch (kind) {
        case TreeObjectKind::kFile:
            return "File";
        case TreeObjectKind::kFolder:
            return "Folder";
        case TreeObjectKind::kLink:
            return "Link";
        case TreeObjectKind::kOther:
            break;
    }
    return "Other";
}

std::string ObjectRows::Name(std::size_t row) const {
    if (rows[row].place != TreePaths::kTop) return std::string(paths.Name(rows[row].place));
    const std::string& path = tops[rows[row].top].object.path;
    const std::string name = NameInFolder(path);
    return name.empty() ? path : name;
}

std::string ObjectRows::Folder(std::size_t row) const {
    const std::string& top = tops[rows[row].top].object.path;
    if (rows[row].place == TreePaths::kTop) return FolderAbove(top);
    std::string below;
    paths.Path(paths.FolderOf(rows[row].place), below);
    return TypedChildPath(top, below);
}

ResultObject ObjectRows::Object(std::size_t row) const {
    std::string below;
    paths.Path(rows[row].place, below);
    return ObjectBelow(tops[rows[row].top].object, below, rows[row].kind);
}

}  // namespace permora
