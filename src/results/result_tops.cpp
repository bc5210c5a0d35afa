#include "results/result_tops.h"

#include <utility>

#include "browser/folder_paths.h"
#include "platform/ascii.h"

namespace permora {
namespace {

// The folder that holds what stands at `path` below `start`.
DWORD HoldFolderOf(const std::shared_ptr<const FolderHandle>& start, std::string_view path,
                   std::shared_ptr<const FolderHandle>& folder) {
    std::shared_ptr<const FolderHandle> held = start;
    const std::size_t end = path.rfind('\\');
    std::string_view rest = end == path.npos ? std::string_view() : path.substr(0, end);
    while (!rest.empty()) {
        auto next = std::make_shared<FolderHandle>();
        const DWORD error = held->OpenFolder(std::string(TakeUntil('\\', rest)), *next);
        if (error != ERROR_SUCCESS) return error;
        held = std::move(next);
    }
    folder = std::move(held);
    return ERROR_SUCCESS;
}

std::string_view LastName(std::string_view path) {
    return path.substr(path.rfind('\\') + 1);
}

ResultObject DriveTop(const std::string& root) {
    ResultObject drive{root, TreeObjectKind::kFolder, nullptr, {}};
    auto folder = std::make_shared<FolderHandle>();
    if (FolderHandle::Open(root, *folder) == ERROR_SUCCESS) drive.start = std::move(folder);
    return drive;
}

}  // namespace

std::vector<ResultTop> TopsOf(const Place& place, const std::string& folder) {
    std::vector<ResultTop> tops;
    if (place.kind == PlaceKind::kDrives) {
        for (const std::string& root : place.names)
            tops.push_back({DriveTop(root), RememberedObject(nullptr, root)});
        return tops;
    }
    const ResultObject whole{folder, TreeObjectKind::kFolder, place.folder, {}};
    for (const std::string& name : place.names)
        tops.push_back({ObjectBelow(whole, name, TreeObjectKind::kFolder), {place.folder, name}});
    if (place.names.empty()) tops.push_back({whole, RememberedObject(place.folder, "")});
    return tops;
}

std::string NameOfTops(const std::vector<ResultTop>& tops) {
    if (tops.size() == 1) return tops.front().object.path;
    const std::string count = std::to_string(tops.size());
    const std::string folder = tops.empty() ? std::string() : FolderAbove(tops.front().object.path);
    return folder.empty() ? count + " drives" : count + " items in " + folder;
}

ResultObject ObjectBelow(const ResultObject& top, std::string_view below, TreeObjectKind kind) {
    ResultObject object{TypedChildPath(top.path, std::string(below)), kind, top.start, top.pathFromStart};
    if (!below.empty() && !object.pathFromStart.empty()) object.pathFromStart += '\\';
    object.pathFromStart += below;
    return object;
}

HeldResults HoldResults(const std::vector<ResultObject>& objects) {
    HeldResults held;
    std::shared_ptr<const FolderHandle> folder;  // of the object before: neighbours share it
    std::string folderPath;
    for (const ResultObject& object : objects) {
        RememberedObject found;
        DWORD error = ERROR_SUCCESS;
        if (object.start == nullptr || object.pathFromStart.empty()) {
            found = RememberedObject(object.start, object.start ? std::string() : object.path);
        } else {
            std::string path = FolderAbove(object.path);
            if (folder == nullptr || path != folderPath)
                error = HoldFolderOf(object.start, object.pathFromStart, folder);
            folderPath = error == ERROR_SUCCESS ? std::move(path) : std::string();
            if (error != ERROR_SUCCESS) folder.reset();
            if (error == ERROR_SUCCESS)
                found = RememberedObject(folder, std::string(LastName(object.pathFromStart)));
        }
        if (error == ERROR_SUCCESS) error = found.Error();
        if (error != ERROR_SUCCESS) {
            held.failures.push_back({error, Step::kNone, object.path});
            continue;
        }
        if (held.place.items.empty()) {
            const std::string name = NameInFolder(object.path);
            held.firstName = name.empty() ? object.path : name;
            if (name.empty()) held.place.kind = PlaceKind::kDrives;
        }
        held.place.items.push_back(std::move(found));
    }
    return held;
}

}  // namespace permora
