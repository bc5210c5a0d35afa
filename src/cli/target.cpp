#include "cli/target.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/host_path.h"
#include "platform/network_path.h"
#include "security/object_server.h"

namespace permora {
namespace {

// "C:\": the length of a drive's root.
constexpr std::size_t kDriveRootLength = 3;

constexpr const char* kFolderAbove = "..\\";

}  // namespace

DWORD MakeTarget(const std::string& argument, const std::shared_ptr<const FolderHandle>& start,
                 Target& target) {
    std::string path;
    const DWORD error = FullPathOf(PathFromArgument(argument.c_str()), path);
    if (error != ERROR_SUCCESS) return error;

    const bool endsWithSeparator = path.ends_with('\\');
    while (path.size() > kDriveRootLength && path.back() == '\\')
        path.pop_back();
    if (path.size() < kDriveRootLength || path[1] != ':' || path[2] != '\\') return ERROR_INVALID_NAME;
    Target made;
    made.argument = argument;
    if (path.size() == kDriveRootLength) {
        made.name = path;
        made.place = PlaceKind::kDrives;
        target = std::move(made);
        return ERROR_SUCCESS;
    }
    // The separator stays at the folder's end: the last component of a path is not followed when it is a
    // link, but a link in the middle of what the user typed means the folder behind it.
    const std::size_t nameStart = path.rfind('\\') + 1;
    made.folder = path.substr(0, nameStart);
    made.name = path.substr(nameStart);
    made.endsWithSeparator = endsWithSeparator;
    const std::optional<std::string> below = PathBelowCurrent(argument.c_str());
    if (below && start) {
        made.start = start;
        made.folderFromStart = below->empty() ? kFolderAbove : below->substr(0, below->rfind('\\') + 1);
    }
    target = std::move(made);
    return ERROR_SUCCESS;
}

std::string ServerOfArguments(const std::vector<std::string>& arguments) {
    std::vector<std::string> paths;
    for (const std::string& argument : arguments) {
        Target target;
        if (MakeTarget(argument, nullptr, target) != ERROR_SUCCESS) return {};
        paths.push_back(target.folder + target.name);
    }
    return ServerOfPaths(paths);
}

void RememberTarget(Target& target) {
    // The user may have named the folder itself ("."), which has a name only in the folder above.
    const bool isStart = target.start && target.folderFromStart == kFolderAbove;
    if (isStart)
        target.object = RememberedObject(target.start, "");
    else if (target.start)
        target.object = RememberedObject(target.start, target.folderFromStart + target.name);
    else
        target.object = RememberedObject(nullptr, target.folder + target.name);
}

bool MakeCertainTarget(const std::string& argument, const std::shared_ptr<const FolderHandle>& start,
                       Target& target, ConsoleMessages& messages) {
    messages.SetSubject(argument);
    if (IsAmbiguousArgument(argument.c_str())) {
        messages.Say("a file here is called so: write ./ before its name, or the path as /folder/file");
        return false;
    }
    const DWORD error = MakeTarget(argument, start, target);
    const std::string command = error == ERROR_BAD_NETPATH ? MountCommandFor(argument) : std::string();
    if (command.empty()) return messages.Check({error});
    messages.Say("no mount of this share is known here; to mount it: " + command);
    return false;
}

bool MakeNamedTarget(const std::string& argument, Target& target, ConsoleMessages& messages) {
    auto start = std::make_shared<FolderHandle>();
    if (FolderHandle::Open(".", *start) != ERROR_SUCCESS) start.reset();
    Target made;
    if (!MakeCertainTarget(argument, start, made, messages)) return false;
    RememberTarget(made);
    target = std::move(made);
    return true;
}

bool FindTarget(const Target& target, HeldObject& object, ConsoleMessages& messages) {
    HeldObject found;
    Outcome outcome = FindItem(target.object, found);
    if (outcome.IsDone() && target.endsWithSeparator && !found.IsFolder()) outcome.code = ERROR_DIRECTORY;
    if (!messages.Check(outcome)) return false;
    object = std::move(found);
    return true;
}

DWORD OpenFolderOf(const Target& target, FolderHandle& folder) {
    return target.start ? target.start->OpenPath(target.folderFromStart, folder)
                        : FolderHandle::Open(target.folder, folder);
}

std::string TypedPath(const Target& target, const std::string& below) {
    return TypedChildPath(target.argument, below);
}

}  // namespace permora
