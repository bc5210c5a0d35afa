#include "saved/tree_comparison.h"

#include <algorithm>
#include <utility>

#include "platform/api/errors.h"
#include "platform/security_change.h"
#include "saved/name_case.h"
#include "saved/saved_path.h"

namespace permora {
namespace {

std::string PathIn(const std::string& folder, std::string_view name) {
    return folder.empty() ? std::string(name) : folder + '\\' + std::string(name);
}

// Everything below a folder that was not there.
class Added : public TreeVisitor {
  public:
    explicit Added(ComparisonObserver& listener) : observer(listener) {}

    bool Visit(const ReadObject& object) override {
        if (!observer.Begin(object.path)) return false;
        observer.Differ(object.kind == SavedKind::kUnlisted ? TreeDifference{DifferenceKind::kUnlisted,
                                                                             object.path,
                                                                             SavedKind::kUnknown,
                                                                             SavedKind::kFolder,
                                                                             {},
                                                                             {},
                                                                             object.error}
                                                            : TreeDifference{DifferenceKind::kAdded,
                                                                             object.path,
                                                                             SavedKind::kUnknown,
                                                                             object.kind,
                                                                             {},
                                                                             object.descriptor,
                                                                             object.error});
        return true;
    }

  private:
    ComparisonObserver& observer;
};

}  // namespace

const FolderNames& TreeComparison::Level::Names() const {
    static const FolderNames kNoNames;
    return folder ? folder.Names() : kNoNames;
}

DWORD TreeComparison::BeginBelowTop() {
    TreeObject object;
    AheadFolder folder;
    const DWORD error = AheadFolder::ReadTop(top, readParts, object, folder);
    if (object.kind != TreeObjectKind::kFolder) return ERROR_DIRECTORY;
    if (!folder) return error != ERROR_SUCCESS ? error : DWORD{ERROR_ACCESS_DENIED};
    Enter({"", SavedKind::kFolder, {}}, "", std::move(folder));
    levels.back().isUnknown = true;
    return ERROR_SUCCESS;
}

bool TreeComparison::TakeTop(const ReadObject& was) {
    TreeObject object;
    AheadFolder folder;
    const DWORD error = AheadFolder::ReadTop(top, readParts, object, folder);
    return TakeFound(was, "", object, error, std::move(folder));
}

bool TreeComparison::Take(const ReadObject& was) {
    if (!observer.Begin(was.path)) return false;
    if (was.kind == SavedKind::kUnlisted) {
        if (!levels.empty() && levels.back().path == was.path) levels.back().isUnknown = true;
        observer.Differ(
            {DifferenceKind::kUnknown, was.path, was.kind, SavedKind::kUnknown, {}, {}, was.error});
        return true;
    }
    if (was.path.empty()) return TakeTop(was);
    const std::size_t end = was.path.rfind('\\');
    const std::string_view folder = was.path.substr(0, end == was.path.npos ? 0 : end);
    while (!levels.empty() && levels.back().path != folder && !IsBelow(folder, levels.back().path))
        if (!Leave()) return false;
    EnterUnsaved(folder);
    lastTaken = was.path;
    const bool isHere = !levels.empty() && levels.back().path == folder;
    if (isHere) NoteLoss(levels.back());
    const std::string name(was.path.substr(end == was.path.npos ? 0 : end + 1));
    const bool isWithin = isHere && levels.back().folder && !levels.back().folder.IsLost();
    const std::size_t index = isWithin ? Find(levels.back(), name) : kNowhere;
    TreeObject object;
    AheadFolder below;
    if (index != kNowhere) {
        Level& level = levels.back();
        const std::string pathNow = PathIn(level.pathNow, level.Names().Name(index));
        const DWORD error = level.folder.Read(index, object, below);
        if (error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND)
            return TakeFound(was, pathNow, object, error, std::move(below));
    }
    // Nobody knows whether it is in a folder that could not be listed, which was told.
    const bool mayBeThere = !levels.empty() && levels.back().isUnlisted;
    if (!mayBeThere)
        observer.Differ({DifferenceKind::kMissing, was.path, was.kind, SavedKind::kUnknown, was.descriptor});
    return true;
}

// Goes down to a folder past those on the way that did not come themselves, as in the form of icacls. One
// that came is entered already, if it is a folder still.
void TreeComparison::EnterUnsaved(std::string_view folder) {
    while (!levels.empty() && levels.back().path != folder && levels.back().folder) {
        Level& level = levels.back();
        const std::size_t begin = level.path.empty() ? 0 : level.path.size() + 1;
        const std::string_view path = folder.substr(0, folder.find('\\', begin));
        if (lastTaken == path || IsBelow(lastTaken, path)) return;
        const std::size_t index = Find(level, path.substr(begin));
        TreeObject object;
        AheadFolder below;
        if (index == kNowhere || level.folder.Read(index, object, below) != ERROR_SUCCESS || !below) return;
        const std::string pathNow = PathIn(level.pathNow, level.Names().Name(index));
        Enter({path, SavedKind::kFolder, {}}, pathNow, std::move(below));
        levels.back().isUnknown = true;
    }
}

bool TreeComparison::TakeFound(const ReadObject& was, const std::string& pathNow, const TreeObject& now,
                               DWORD error, AheadFolder below) {
    Compare(was, ReadResult(pathNow, now, error));
    if (below) {
        Enter(was, pathNow, std::move(below));
    } else if (error == ERROR_SUCCESS && now.kind == TreeObjectKind::kFolder) {
        observer.Differ(
            {DifferenceKind::kUnlisted, pathNow, was.kind, SavedKind::kFolder, {}, {}, ERROR_ACCESS_DENIED});
        levels.push_back({.path = std::string(was.path),
                          .pathNow = pathNow,
                          .folder = {},
                          .areMatched = {},
                          .next = 0,
                          .capitals = {},
                          .isUnknown = true,
                          .isUnlisted = true});
    }
    return true;
}

void TreeComparison::Compare(const ReadObject& was, const ReadObject& is) {
    TreeDifference difference{
        DifferenceKind::kSecurity, is.path, was.kind, is.kind, was.descriptor, is.descriptor, is.error};
    if (is.kind == SavedKind::kUnread) {
        difference.kind = DifferenceKind::kUnread;
    } else if (was.kind == SavedKind::kUnread) {
        difference.kind = DifferenceKind::kUnknown;
        difference.error = was.error;
    } else if (was.kind != is.kind && was.kind != SavedKind::kUnknown) {
        difference.kind = DifferenceKind::kOtherKind;
    } else if (savedParts != readParts && !was.descriptor.empty()) {
        return CompareReadParts(difference);
    }
    Tell(difference);
}

// Some of the parts that were saved cannot be read.
void TreeComparison::CompareReadParts(TreeDifference difference) {
    auto before = nt::SecurityDescriptor::FromBytes(difference.before);
    std::vector<std::uint8_t> bytes;
    if (before && before->saclBytes.empty()) {
        ReduceToParts(*before, readParts);
        if (before->AppendTo(bytes)) difference.before = bytes;
    } else {
        difference.kind = DifferenceKind::kUnread;
        difference.error = ERROR_PRIVILEGE_NOT_HELD;
    }
    Tell(difference);
}

void TreeComparison::Tell(const TreeDifference& difference) {
    const bool isAlike = difference.kind == DifferenceKind::kSecurity &&
                         std::ranges::equal(difference.before, difference.after);
    if (!isAlike) observer.Differ(difference);
}

void TreeComparison::Enter(const ReadObject& was, const std::string& pathNow, AheadFolder below) {
    Level level;
    level.path = was.path;
    level.pathNow = pathNow;
    level.folder = std::move(below);
    const DWORD error = level.folder.List();
    level.isUnlisted = error != ERROR_SUCCESS;
    level.isUnknown = was.kind == SavedKind::kUnread;
    level.areMatched.resize(level.Names().Count());
    if (error != ERROR_SUCCESS)
        observer.Differ({DifferenceKind::kUnlisted, pathNow, was.kind, SavedKind::kFolder, {}, {}, error});
    levels.push_back(std::move(level));
}

std::size_t TreeComparison::Find(Level& level, std::string_view name) {
    // Mostly it is the next one: both come in the same order.
    std::size_t index = level.next;
    if (index >= level.Names().Count() || level.Names().Name(index) != name) {
        std::size_t end = level.Names().Count();
        index = 0;
        while (index < end) {
            const std::size_t middle = index + (end - index) / 2;
            if (level.Names().Name(middle) < name)
                index = middle + 1;
            else
                end = middle;
        }
    }
    const bool isFound =
        index < level.Names().Count() && level.Names().Name(index) == name && !level.areMatched[index];
    const std::size_t found = isFound ? index : FindInOtherCase(level, name);
    if (found != kNowhere) {
        level.areMatched[found] = true;
        level.next = found + 1;
    }
    return found;
}

std::size_t TreeComparison::FindInOtherCase(Level& level, std::string_view name) {
    if (!level.folder || !level.folder.IgnoresCase()) return kNowhere;
    if (level.capitals.empty()) {
        for (std::size_t i = 0; i < level.Names().Count(); ++i)
            level.capitals.emplace_back(InCapitals(std::string(level.Names().Name(i))), i);
        std::sort(level.capitals.begin(), level.capitals.end());
    }
    const std::pair<std::string, std::size_t> wanted(InCapitals(std::string(name)), 0);
    auto found = std::lower_bound(level.capitals.begin(), level.capitals.end(), wanted);
    for (; found != level.capitals.end() && found->first == wanted.first; ++found)
        if (!level.areMatched[found->second]) return found->second;
    return kNowhere;
}

void TreeComparison::NoteLoss(Level& level) {
    if (level.isUnlisted || !level.folder || !level.folder.IsLost()) return;
    level.isUnlisted = true;
    level.isUnknown = true;
    observer.Differ({DifferenceKind::kUnlisted,
                     level.pathNow,
                     SavedKind::kFolder,
                     SavedKind::kFolder,
                     {},
                     {},
                     ERROR_FILE_INVALID});
}

// Tells what was added to the lowest folder, and goes out of it.
bool TreeComparison::Leave() {
    NoteLoss(levels.back());
    Level level = std::move(levels.back());
    levels.pop_back();
    for (std::size_t index = 0; !level.isUnknown && index < level.Names().Count(); ++index)
        if (!level.areMatched[index] && !TellAdded(level, index)) return false;
    return true;
}

bool TreeComparison::TellAdded(Level& level, std::size_t index) {
    const std::string path = PathIn(level.pathNow, level.Names().Name(index));
    TreeObject object;
    AheadFolder below;
    const DWORD error = level.folder.Read(index, object, below);
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return true;
    Added visitor(observer);
    if (!visitor.Visit(ReadResult(path, object, error))) return false;
    return !below || ReadBelow(std::move(below), path, visitor) == ERROR_SUCCESS;
}

bool TreeComparison::End() {
    while (!levels.empty())
        if (!Leave()) return false;
    return true;
}

}  // namespace permora
