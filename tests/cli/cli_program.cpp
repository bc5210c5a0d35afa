#include "tests/cli/cli_program.h"

#include <nlohmann/json.hpp>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/host_path.h"
#include "platform/resources.h"

namespace permora::test {

std::string CliPath() {
    return PERMORA_CLI;
}

CommandResult RunCli(const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {CliPath()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return RunCommand(command);
}

std::string EntriesOf(const std::string& path) {
    const CommandResult shown = RunCli({"show", "--json", path});
    const nlohmann::json object = nlohmann::json::parse(shown.output, nullptr, false);
    if (shown.exitCode != 0 || object.is_discarded()) return shown.output;
    std::string lines;
    for (const nlohmann::json& entry : object["entries"]) {
        lines += entry["type"].get<std::string>() + ' ' + entry["sid"].get<std::string>() + ' ' +
                 entry["mask"].get<std::string>() + ' ' + std::to_string(entry["flags"].get<int>()) + '\n';
    }
    return lines;
}

std::string SddlOf(const std::string& path) {
    return RunCli({"show", "--sddl", path}).output;
}

unsigned SetSddl(const std::string& path, const std::string& sddl) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (ConvertStringSecurityDescriptorToSecurityDescriptorA(sddl.c_str(), SDDL_REVISION_1, &descriptor,
                                                             nullptr) == FALSE) {
        return GetLastError();
    }
    const UniqueLocal<void> owned(descriptor);
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    BOOL flag = FALSE;
    PSID owner = nullptr;
    PSID group = nullptr;
    PACL dacl = nullptr;
    if (GetSecurityDescriptorControl(descriptor, &control, &revision) == FALSE ||
        GetSecurityDescriptorOwner(descriptor, &owner, &flag) == FALSE ||
        GetSecurityDescriptorGroup(descriptor, &group, &flag) == FALSE ||
        GetSecurityDescriptorDacl(descriptor, &flag, &dacl, &flag) == FALSE) {
        return GetLastError();
    }
    const bool isProtected = (control & SE_DACL_PROTECTED) != 0;
    const SECURITY_INFORMATION parts =
        DACL_SECURITY_INFORMATION |
        (isProtected ? PROTECTED_DACL_SECURITY_INFORMATION : UNPROTECTED_DACL_SECURITY_INFORMATION) |
        (owner != nullptr ? OWNER_SECURITY_INFORMATION : 0) |
        (group != nullptr ? GROUP_SECURITY_INFORMATION : 0);
    std::string name = PathFromArgument(path.c_str());
    return SetNamedSecurityInfoA(name.data(), SE_FILE_OBJECT, parts, owner, group, dacl, nullptr);
}

std::string CannotHoldListsReason(const std::string& folder) {
    const CommandResult shown = RunCli({"show", folder});
    return shown.output.find("not supported") == std::string::npos ? "" : shown.output;
}

}  // namespace permora::test
