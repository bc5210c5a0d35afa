#include "platform/linux/files/several_names.h"

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

// A name that is both long and short is one link, but the volume tells it as a short name too.
bool HasShortNameBeside(const ObjectHandle& file, const std::string& hostName) {
    std::vector<std::uint8_t> value;
    if (AttributeStoreOf(file) != AttributeStore::kAsk ||
        ReadExtendedAttribute(file, "system.ntfs_dos_name", value) != 0)
        return false;
    const std::string shortName(value.begin(), std::find(value.begin(), value.end(), std::uint8_t{0}));
    return !shortName.empty() && strcasecmp(shortName.c_str(), hostName.c_str()) != 0;
}

}  // namespace

DWORD AskSeveralNames(const ObjectHandle& file, const std::string& hostName, bool& answer) {
    struct stat status {};
    if (fstat(file.Descriptor(), &status) != 0) return ErrorFromErrno(errno);
    answer = status.st_nlink > 1 && (status.st_nlink > 2 || !HasShortNameBeside(file, hostName));
    return ERROR_SUCCESS;
}

}  // namespace permora::host
