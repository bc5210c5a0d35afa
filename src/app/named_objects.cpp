#include "app/named_objects.h"

#include <memory>
#include <utility>

#include "platform/api/errors.h"
#include "platform/host_path.h"

namespace permora {
namespace {

// "C:\": the length of a drive's root.
constexpr std::size_t kRootLength = 3;

// Opens the folders of objects; neighbours share theirs.
class FoldersAbove {
  public:
    DWORD Remember(const std::string& path, RememberedObject& object) {
        const std::size_t nameStart = path.rfind('\\') + 1;
        const std::string above = path.substr(0, nameStart);
        if (folder == nullptr || above != folderPath) {
            auto opened = std::make_shared<FolderHandle>();
            const DWORD error = FolderHandle::Open(above, *opened);
            if (error != ERROR_SUCCESS) return error;
            folder = std::move(opened);
            folderPath = above;
        }
        object = RememberedObject(folder, path.substr(nameStart));
        return object.Error();
    }

  private:
    std::shared_ptr<const FolderHandle> folder;
    std::string folderPath;
};

DWORD Remember(const std::string& argument, FoldersAbove& folders, std::string& path,
               RememberedObject& object) {
    const DWORD error = FullPathOf(PathFromArgument(argument.c_str()), path);
    if (error != ERROR_SUCCESS) return error;
    const bool endsWithSeparator = path.ends_with('\\');
    while (path.size() > kRootLength && path.ends_with('\\'))
        path.pop_back();
    if (path.size() < kRootLength || path.compare(1, 2, ":\\") != 0) return ERROR_INVALID_NAME;
    if (path.size() == kRootLength) {
        object = RememberedObject(nullptr, path);
        return object.Error();
    }
    const DWORD missing = folders.Remember(path, object);
    if (missing != ERROR_SUCCESS) return missing;
    return endsWithSeparator && object.Kind() != FolderEntryKind::kFolder ? ERROR_DIRECTORY : ERROR_SUCCESS;
}

}  // namespace

NamedObjects FindNamedObjects(const std::vector<std::string>& arguments) {
    NamedObjects named;
    FoldersAbove folders;
    for (const std::string& argument : arguments) {
        std::string path;
        RememberedObject object;
        if (const DWORD error = Remember(argument, folders, path, object); error != ERROR_SUCCESS) {
            named.failures.push_back({error, Step::kNone, argument});
            continue;
        }
        if (path.size() == kRootLength) named.place.kind = PlaceKind::kDrives;
        named.place.items.push_back(std::move(object));
        named.paths.push_back(std::move(path));
    }
    return named;
}

}  // namespace permora
