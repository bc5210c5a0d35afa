#include "saved/tree_source.h"

#include <utility>

namespace permora {
namespace {

SavedKind SavedKindOf(TreeObjectKind kind) {
    switch (kind) {
        case TreeObjectKind::kFile:
            return SavedKind::kFile;
        case TreeObjectKind::kFolder:
            return SavedKind::kFolder;
        case TreeObjectKind::kLink:
            return SavedKind::kLink;
        case TreeObjectKind::kOther:
            break;
    }
    return SavedKind::kOther;
}

class TreeReading {
  public:
    explicit TreeReading(TreeVisitor& caller) : visitor(caller) {}

    DWORD Run(TreeFolder folder, std::string begin) {
        path = std::move(begin);
        if (!Enter(std::move(folder))) return ERROR_OPERATION_ABORTED;
        while (!levels.empty()) {
            Level& level = levels.back();
            path.resize(level.pathLength);
            if (level.next == level.names.Count())
                levels.pop_back();
            else if (!Visit(level.next++))
                return ERROR_OPERATION_ABORTED;
        }
        return ERROR_SUCCESS;
    }

  private:
    struct Level {
        TreeFolder folder;
        FolderNames names;
        std::size_t next = 0;
        std::size_t pathLength = 0;  // of the folder's own path
    };

    bool Enter(TreeFolder folder) {
        Level level{std::move(folder), {}, 0, path.size()};
        const DWORD error = level.folder.List(level.names);
        levels.push_back(std::move(level));
        return error == ERROR_SUCCESS || visitor.Visit({path, SavedKind::kUnlisted, {}, error});
    }

    bool Visit(std::size_t index) {
        const Level& level = levels.back();
        name = level.names.Name(index);
        if (!path.empty()) path += '\\';
        path += name;
        TreeFolder below;
        const DWORD error = level.folder.Read(name, level.names.Kind(index), object, below);
        if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return true;
        const ReadObject result = ReadResult(path, object, error);
        if (!visitor.Visit(result)) return false;
        if (below) return Enter(std::move(below));
        // It could not be opened, for its names either.
        const bool isClosed = error == ERROR_SUCCESS && object.kind == TreeObjectKind::kFolder;
        return !isClosed || visitor.Visit({path, SavedKind::kUnlisted, {}, ERROR_ACCESS_DENIED});
    }

    TreeVisitor& visitor;
    std::vector<Level> levels;
    std::string path;
    std::string name;
    TreeObject object;
};

}  // namespace

ReadObject ReadResult(std::string_view path, const TreeObject& object, DWORD error) {
    if (error == ERROR_NOT_SAME_DEVICE) return {path, SavedKind::kMounted, {}, ERROR_SUCCESS};
    if (error != ERROR_SUCCESS) return {path, SavedKind::kUnread, {}, error, object.kind};
    return {path, SavedKindOf(object.kind), object.descriptor, ERROR_SUCCESS, object.kind, object.isStored};
}

DWORD ReadBelow(TreeFolder folder, const std::string& path, TreeVisitor& visitor) {
    return TreeReading(visitor).Run(std::move(folder), path);
}

DWORD ReadTree(const HeldObject& top, SECURITY_INFORMATION parts, TreeVisitor& visitor) {
    TreeObject object;
    TreeFolder folder;
    const DWORD error = TreeFolder::ReadTop(top, parts, object, folder);
    if (!visitor.Visit(ReadResult("", object, error))) return ERROR_OPERATION_ABORTED;
    return folder ? ReadBelow(std::move(folder), "", visitor) : DWORD{ERROR_SUCCESS};
}

}  // namespace permora
