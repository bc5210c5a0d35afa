#include "platform/api/directory_search.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/api/text.h"
#include "platform/linux/base/failure.h"
#include "platform/linux/base/handle_table.h"
#include "platform/linux/base/wide_text.h"
#include "platform/linux/files/attributes.h"
#include "platform/linux/files/descriptor_path.h"
#include "platform/linux/files/drives.h"
#include "platform/linux/files/file_facts.h"
#include "platform/linux/files/folder_listing.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/files/path_text.h"
#include "platform/linux/files/paths.h"

namespace permora::host {
namespace {

// The parts of a pattern: "C:\a\" and "*".
struct SearchPattern {
    std::string folder;
    std::string_view name;
};

SearchPattern SplitPattern(std::string_view pattern) {
    const std::size_t folderEnd = pattern.find_last_of("\\/:") + 1;
    return {std::string(pattern.substr(0, folderEnd)), pattern.substr(folderEnd)};
}

// False when the name is too long for the caller's structure. No name from the kernel is.
bool FillName(std::string_view shownName, WIN32_FIND_DATAA& data) {
    if (shownName.size() >= sizeof data.cFileName) return false;
    std::memcpy(data.cFileName, shownName.data(), shownName.size());
    data.cFileName[shownName.size()] = '\0';
    return true;
}

// The facts that are known of an object that cannot be opened.
DWORD AttributesOfType(unsigned char type) {
    switch (type) {
        case DT_DIR:
            return FILE_ATTRIBUTE_DIRECTORY;
        case DT_LNK:
            return FILE_ATTRIBUTE_REPARSE_POINT;
        default:
            return FILE_ATTRIBUTE_NORMAL;
    }
}

bool IsDriveRoot(const ObjectHandle& folder) {
    std::string hostPath;
    if (HostPathOf(folder.Descriptor(), hostPath) != ERROR_SUCCESS) return false;
    return DriveHolding(hostPath).hostRoot == hostPath;
}

// The entries of one folder, one after the other. One thread at a time.
class DirectorySearch {
  public:
    DirectorySearch(ObjectHandle searched, UniqueFd opened)
        : folder(std::move(searched)),
          listing(std::move(opened)),
          store(AttributeStoreOf(folder)),
          dots(IsDriveRoot(folder) ? Dots::kDone : Dots::kSelf) {}

    DWORD Next(WIN32_FIND_DATAA& data) {
        while (dots != Dots::kDone) {
            const char* name = dots == Dots::kSelf ? "." : "..";
            dots = dots == Dots::kSelf ? Dots::kParent : Dots::kDone;
            if (Describe({name, DT_DIR}, name, data)) return ERROR_SUCCESS;
        }
        if (!names) ReadNames();
        while (next < names->size()) {
            const Name& name = (*names)[next++];
            if (Describe({name.onHost.c_str(), name.type}, EncodeName(name.onHost), data))
                return ERROR_SUCCESS;
        }
        return error != ERROR_SUCCESS ? error : ERROR_NO_MORE_FILES;
    }

  private:
    enum class Dots { kSelf, kParent, kDone };
    struct Name {
        std::u16string inCapitals;
        std::string onHost;
        unsigned char type;
    };

    // NTFS gives names in the order of their capitals. Programs expect that of every volume.
    void ReadNames() {
        names.emplace();
        for (FolderListing::Entry entry{}; listing.Next(entry, error);) {
            std::u16string capitals = ToWide(entry.name);
            CharUpperBuffW(capitals.data(), static_cast<DWORD>(capitals.size()));
            names->push_back({std::move(capitals), entry.name, entry.type});
        }
        std::ranges::sort(*names, [](const Name& one, const Name& other) {
            return std::tie(one.inCapitals, one.onHost) < std::tie(other.inCapitals, other.onHost);
        });
    }

    // False when the object no longer exists.
    bool Describe(const FolderListing::Entry& entry, std::string_view shownName, WIN32_FIND_DATAA& data) {
        WIN32_FIND_DATAA found{};
        if (!FillName(shownName, found)) return false;
        struct stat status {};
        const int flags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT;
        if (fstatat(listing.Descriptor(), entry.name, &status, flags) == 0) {
            FillFacts(status, AttributesOf(entry.name, status), found);
        } else if (errno == ENOENT) {
            return false;
        } else {
            // An object that cannot be examined is listed as well: it exists, and its folder knows its kind.
            found.dwFileAttributes = AttributesOfType(entry.type);
        }
        data = found;
        return true;
    }

    DWORD AttributesOf(const char* name, const struct stat& status) const {
        // Another volume may be mounted there.
        const bool isOfThisVolume = status.st_dev == folder.Status().st_dev;
        DWORD attributes = S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
        // If the attributes cannot be read, the kind stands alone.
        (void)ReadAttributesAt(listing.Descriptor(), name, status,
                               isOfThisVolume ? store : AttributeStore::kUnknown, attributes);
        return attributes;
    }

    ObjectHandle folder;
    FolderListing listing;
    AttributeStore store;
    Dots dots;
    std::optional<std::vector<Name>> names;  // nothing: not read yet
    std::size_t next = 0;
    DWORD error = ERROR_SUCCESS;  // that ended the reading
};

// A search in progress, and the rest of a search for a single name.
struct OpenSearch : HandleObject {
    std::unique_ptr<DirectorySearch> entries;  // null: there is nothing more
};

// Opens the folder of a pattern: `path` is empty or ends with a separator or a colon.
DWORD OpenSearched(const std::string& path, ObjectHandle& folder) {
    if (path.empty()) return ObjectHandle::OpenAt(AT_FDCWD, ".", folder);
    DWORD error = ERROR_SUCCESS;
    const std::string bare = path.substr(0, path.find_last_not_of("\\/") + 1);
    const bool isNamed = !bare.empty() && bare.back() != ':';
    if (isNamed) {
        // First without the separator, which would need the right to enter the folder.
        error = OpenObject(bare.c_str(), folder);
        if (error == ERROR_SUCCESS && folder.IsLink()) error = OpenObject(path.c_str(), folder);
    } else {
        error = OpenObject(path.c_str(), folder);
    }
    return error == ERROR_FILE_NOT_FOUND ? ERROR_PATH_NOT_FOUND : error;
}

DWORD StartListing(const std::string& path, OpenSearch& search, WIN32_FIND_DATAA& first) {
    ObjectHandle folder;
    UniqueFd listing;
    DWORD error = OpenSearched(path, folder);
    if (error == ERROR_SUCCESS) error = folder.OpenForListing(listing);
    if (error != ERROR_SUCCESS) return error;
    search.entries = std::make_unique<DirectorySearch>(std::move(folder), std::move(listing));
    return search.entries->Next(first);
}

DWORD DescribeOne(const char* path, std::string_view name, WIN32_FIND_DATAA& data) {
    if (name.empty() || name == "." || name == "..") return ERROR_FILE_NOT_FOUND;
    ResolvedObject found;
    DWORD attributes = 0;
    DWORD error = ResolvePath(path, found);
    if (error == ERROR_SUCCESS) error = ReadAttributes(found.object, found.parent, attributes);
    if (error != ERROR_SUCCESS) return error;
    WIN32_FIND_DATAA described{};
    if (!FillName(name, described)) return ERROR_FILENAME_EXCED_RANGE;
    FillFacts(found.object.Status(), attributes, described);
    data = described;
    return ERROR_SUCCESS;
}

DWORD StartSearch(const char* text, OpenSearch& search, WIN32_FIND_DATAA& first) {
    const SearchPattern pattern = SplitPattern(text);
    if (pattern.name == "*") return StartListing(pattern.folder, search, first);
    if (pattern.name.find_first_of("*?") != std::string_view::npos) return ERROR_INVALID_NAME;
    return DescribeOne(text, pattern.name, first);
}

}  // namespace
}  // namespace permora::host

HANDLE WINAPI FindFirstFileA(LPCSTR pattern, WIN32_FIND_DATAA* data) {
    using namespace permora::host;
    auto search = std::make_shared<OpenSearch>();
    const DWORD error = StartSearch(pattern == nullptr ? "" : pattern, *search, *data);
    if (error == ERROR_SUCCESS) return OpenHandles().Add(std::move(search));
    SetLastError(error);
    return INVALID_HANDLE_VALUE;
}

BOOL WINAPI FindNextFileA(HANDLE search, WIN32_FIND_DATAA* data) {
    using namespace permora::host;
    const std::shared_ptr<OpenSearch> open = OpenHandles().Find<OpenSearch>(search);
    if (!open) return Fail(ERROR_INVALID_HANDLE);
    const DWORD error = open->entries ? open->entries->Next(*data) : ERROR_NO_MORE_FILES;
    return error == ERROR_SUCCESS ? TRUE : Fail(error);
}

BOOL WINAPI FindClose(HANDLE search) {
    using namespace permora::host;
    return OpenHandles().Remove<OpenSearch>(search) ? TRUE : Fail(ERROR_INVALID_HANDLE);
}
