#include "platform/linux/accounts/logon_record.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "platform/accounts.h"
#include "platform/ascii.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/base/run_tool.h"
#include "platform/linux/base/unique_fd.h"

namespace permora::host {

namespace {

// Room for some hundred thousand accounts.
constexpr ToolLimits kRecordLimits = {std::chrono::seconds(10), std::size_t{64} << 20};
constexpr ToolLimits kTicketLimits = {kGroupsTime, std::size_t{1} << 20};
constexpr std::size_t kLargestTicket = std::size_t{1} << 20;

// A folder that only this user can look into; goes with the one file in it.
class PrivateFolder {
  public:
    PrivateFolder() {
        if (mkdtemp(path.data()) == nullptr) path.clear();
    }
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;
    ~PrivateFolder() {
        if (path.empty()) return;
        unlink(File().c_str());
        rmdir(path.c_str());
    }

    bool IsMade() const { return !path.empty(); }
    std::string File() const { return path + "/ticket"; }

  private:
    std::string path = "/run/permora-XXXXXX";
};

DWORD ReadFile(const std::string& path, std::vector<std::uint8_t>& bytes) {
    const UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    struct stat status {};
    if (!file || fstat(file.Get(), &status) != 0) return ErrorFromErrno(errno);
    const auto size = static_cast<std::size_t>(status.st_size);
    if (size == 0 || size > kLargestTicket) return ERROR_INVALID_DATA;
    std::vector<std::uint8_t> read(size);
    if (::read(file.Get(), read.data(), size) != status.st_size) return ERROR_INVALID_DATA;
    bytes = std::move(read);
    return ERROR_SUCCESS;
}

}  // namespace

bool IsInLogonListing(std::string_view listing, const nt::Sid& account) {
    const std::string wanted = account.ToText() + ' ';
    while (!listing.empty())
        if (TakeLine(listing).starts_with(wanted)) return true;
    return false;
}

DWORD FindRecordOfLogon(const nt::Sid& account, bool& hasLoggedOn) {
    std::string listing;
    const DWORD error = RunTool("net", {"cache", "samlogon", "list"}, kRecordLimits, listing);
    if (error == ERROR_SUCCESS) hasLoggedOn = IsInLogonListing(listing, account);
    return error;
}

DWORD TakeLogonTicket(const std::string& principal, std::vector<std::uint8_t>& data) {
    if (geteuid() != 0) return ERROR_ACCESS_DENIED;
    const PrivateFolder folder;
    if (!folder.IsMade()) return ErrorFromErrno(errno);
    std::string output;
    const DWORD error = RunTool(
        "net",
        {"ads", "kerberos", "pac", "save", "-P", "impersonate=" + principal, "filename=" + folder.File()},
        kTicketLimits, output);
    if (error == ERROR_TIMEOUT) return kDomainOffline;
    if (error != ERROR_SUCCESS) return ERROR_NOT_SUPPORTED;
    return ReadFile(folder.File(), data);
}

}  // namespace permora::host
