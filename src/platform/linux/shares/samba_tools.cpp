#include "platform/linux/shares/samba_tools.h"

#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/linux/accounts/machine.h"
#include "platform/linux/samba/samba_places.h"
#include "platform/linux/samba/samba_questions.h"
#include "platform/nt/sddl.h"

namespace permora::host {

namespace {

// Room and time for some ten thousand shares.
constexpr ToolLimits kSambaToolLimits = {std::chrono::seconds(60), std::size_t{64} << 20};

constexpr std::uint32_t kWholeDescriptor = 15;

DWORD ErrorOfTool(DWORD error) {
    if (error == ERROR_FILE_NOT_FOUND) return ERROR_SERVICE_DEPENDENCY_DELETED;
    if (error != ERROR_OPERATION_ABORTED) return error;
    return geteuid() == 0 ? NERR_InternalError : ERROR_ACCESS_DENIED;
}

}  // namespace

DWORD AskSambaTool(const std::string& tool, const std::vector<std::string>& arguments, std::string& answer,
                   FailedOutput failedOutput) {
    return ErrorOfTool(AskSamba(tool, arguments, kSambaToolLimits, answer, failedOutput));
}

DWORD AskSambaTool(const SambaMirror& mirror, const std::string& tool,
                   const std::vector<std::string>& arguments, std::string& answer,
                   FailedOutput failedOutput) {
    return ErrorOfTool(AskSamba(mirror, tool, arguments, kSambaToolLimits, answer, failedOutput));
}

DWORD TellSambaTool(const std::string& tool, const std::vector<std::string>& arguments) {
    std::string answer;
    return ErrorOfTool(RunTool(tool, arguments, kSambaToolLimits, answer));
}

bool IsFailureOfTool(DWORD error) {
    return error == NERR_InternalError || error == ERROR_ACCESS_DENIED;
}

// Without the tool's own checks ("-l"), which reject configurations that the server accepts.
DWORD ReadSambaConfiguration(std::vector<SambaSection>& sections) {
    std::string answer;
    const DWORD error = AskSambaTool("testparm", {"-s", "-l"}, answer);
    if (error == ERROR_SUCCESS) sections = ParseSambaSections(answer);
    return error;
}

DWORD ReadGlobalSettings(std::string& listing) {
    return AskSambaTool("testparm", {"-s", "-l", "-v", "--section-name=global"}, listing);
}

DWORD ReadSambaDescriptor(const std::string& share, std::vector<std::uint8_t>& descriptor) {
    std::string answer;
    const DWORD error = AskSambaTool("sharesec", {"--viewsddl", "--", share}, answer);
    if (error != ERROR_SUCCESS) return error;
    if (answer.ends_with('\n')) answer.pop_back();
    const std::optional<nt::Sid>& machine = ThisMachine().sid;
    const auto value = nt::FromSddl(answer, machine ? nt::SddlAccounts(*machine) : nt::SddlAccounts());
    std::vector<std::uint8_t> bytes;
    if (!value || !value->AppendTo(bytes)) return ERROR_INVALID_SECURITY_DESCR;
    descriptor = std::move(bytes);
    return ERROR_SUCCESS;
}

DWORD WriteSambaDescriptor(const std::string& share, const std::vector<std::uint8_t>& descriptor) {
    auto value = nt::SecurityDescriptor::FromBytes(descriptor);
    if (!value) return ERROR_INVALID_SECURITY_DESCR;
    if (value->daclState == nt::DaclState::kNull) value->daclState = nt::DaclState::kAbsent;
    // Without the grammar's abbreviations: some versions read "FA" as fewer rights.
    const auto text = nt::ToSddl(*value, kWholeDescriptor, nt::SddlWords::kNumbers);
    if (!text) return ERROR_NOT_SUPPORTED;
    std::string answer;
    return ErrorOfTool(
        TellSambaOfLists("sharesec", {"--setsddl=" + *text, "--", share}, kSambaToolLimits, answer));
}

bool IsSambaSetUp() {
    std::error_code error;
    return FindTool("smbd").has_value() && std::filesystem::exists(kSambaConfiguration, error);
}

bool IsFixedInFile(std::string_view share) {
    std::ifstream file(kSambaConfiguration, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    return !file || HasSection(text, share);
}

}  // namespace permora::host
