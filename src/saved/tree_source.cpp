#include "saved/tree_source.h"

#include <utility>

#include "platform/volume_loss.h"

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

    DWORD Run(AheadFolder folder, std::string begin) {
        path = std::move(begin);
        if (!Enter(std::move(folder)) || (lost != ERROR_SUCCESS && !GiveUp())) return ERROR_OPERATION_ABORTED;
        while (!levels.empty()) {
            Level& level = levels.back();
            path.resize(level.pathLength);
            if (level.folder.IsLost() && !VisitUnlisted(ERROR_FILE_INVALID)) return ERROR_OPERATION_ABORTED;
            if (level.folder.IsLost() || level.next == level.folder.Names().Count())
                levels.pop_back();
            else if (!Visit(level.next++) || (lost != ERROR_SUCCESS && !GiveUp()))
                return ERROR_OPERATION_ABORTED;
        }
        return ERROR_SUCCESS;
    }

  private:
    struct Level {
        AheadFolder folder;
        std::size_t next = 0;
        std::size_t pathLength = 0;  // of the folder's own path
    };

    bool VisitUnlisted(DWORD error) { return visitor.Visit({path, SavedKind::kUnlisted, {}, error}); }

    bool Enter(AheadFolder folder) {
        const DWORD error = folder.List();
        levels.push_back({std::move(folder), 0, path.size()});
        if (IsVolumeLost(error)) lost = error;
        return error == ERROR_SUCCESS || IsVolumeLost(error) || VisitUnlisted(error);
    }

    // The volume is lost, and with it the rest of all folders that were entered.
    bool GiveUp() {
        for (; !levels.empty(); levels.pop_back()) {
            path.resize(levels.back().pathLength);
            if (!VisitUnlisted(lost)) return false;
        }
        return true;
    }

    bool Visit(std::size_t index) {
        Level& level = levels.back();
        if (!path.empty()) path += '\\';
        path += level.folder.Names().Name(index);
        AheadFolder below;
        const DWORD error = level.folder.Read(index, object, below);
        if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return true;
        const ReadObject result = ReadResult(path, object, error);
        if (IsVolumeLost(error)) lost = error;
        if (!visitor.Visit(result)) return false;
        if (lost != ERROR_SUCCESS) return true;
        if (object.kind == TreeObjectKind::kFolder && !visitor.Enters(path)) return true;
        if (below) return Enter(std::move(below));
        // It could not be opened, for its names either.
        const bool isClosed = error == ERROR_SUCCESS && object.kind == TreeObjectKind::kFolder;
        return !isClosed || VisitUnlisted(ERROR_ACCESS_DENIED);
    }

    TreeVisitor& visitor;
    std::vector<Level> levels;
    std::string path;
    TreeObject object;
    DWORD lost = ERROR_SUCCESS;  // why nothing more can be read
};

}  // namespace

ReadObject ReadResult(std::string_view path, const TreeObject& object, DWORD error) {
    if (error == ERROR_NOT_SAME_DEVICE) return {path, SavedKind::kMounted, {}, ERROR_SUCCESS};
    if (error != ERROR_SUCCESS) return {path, SavedKind::kUnread, {}, error, object.kind};
    return {path, SavedKindOf(object.kind), object.descriptor, ERROR_SUCCESS, object.kind, object.isStored};
}

DWORD ReadBelow(AheadFolder folder, const std::string& path, TreeVisitor& visitor) {
    return TreeReading(visitor).Run(std::move(folder), path);
}

DWORD ReadTree(const HeldObject& top, SECURITY_INFORMATION parts, TreeVisitor& visitor,
               std::optional<std::size_t> threads) {
    TreeObject object;
    AheadFolder folder;
    const DWORD error = AheadFolder::ReadTop(top, parts, object, folder, threads);
    if (!visitor.Visit(ReadResult("", object, error))) return ERROR_OPERATION_ABORTED;
    if (IsVolumeLost(error)) return ERROR_SUCCESS;
    return folder && visitor.Enters("") ? ReadBelow(std::move(folder), "", visitor) : DWORD{ERROR_SUCCESS};
}

}  // namespace permora
