#include "platform/linux/files/several_names.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <vector>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/attributes.h"
#include "platform/linux/files/extended_attributes.h"

namespace permora::host {
namespace {

// A name that is both long and short is one link, but the volume reports it as a short name as well. ntfs-3g
// reports no short name of a file with several long names (EMLINK). Old versions do, and lowntfs-3g does not
// know by which name the file was found, so the short name may be in another folder.
bool HasShortNameBeside(int folder, const std::string& hostName, const ObjectHandle& file) {
    std::vector<std::uint8_t> value;
    if (AttributeStoreOf(file) != AttributeStore::kNtfs ||
        ReadExtendedAttribute(file, "system.ntfs_dos_name", value) != 0)
        return false;
    const std::string shortName(value.begin(), std::find(value.begin(), value.end(), std::uint8_t{0}));
    struct stat status {};
    const bool isBareName = !shortName.empty() && shortName.find('/') == shortName.npos;
    return isBareName && strcasecmp(shortName.c_str(), hostName.c_str()) != 0 &&
           fstatat(folder, shortName.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           AreOneObject(status, file.Status());
}

}  // namespace

DWORD AskSeveralNames(int folder, const std::string& hostName, const ObjectHandle& file, bool& answer) {
    // One call gives the count, and proves that this name is counted. The file alone would also report one
    // name if this one had been removed and another one existed elsewhere.
    struct stat status {};
    if (fstatat(folder, hostName.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return ErrorFromErrno(errno);
    if (!AreOneObject(status, file.Status())) return ERROR_FILE_INVALID;
    answer = status.st_nlink > 1 && (status.st_nlink > 2 || !HasShortNameBeside(folder, hostName, file));
    return ERROR_SUCCESS;
}

}  // namespace permora::host
