#include "tests/support/domain_member.h"

#include <cstdlib>

#include "tests/support/project_folders.h"

namespace permora::test {

namespace {

constexpr const char* kShare = "//127.0.0.1/data";

std::string Credentials(const std::string& user) {
    return "EXAMPLE\\" + user + "%Passw0rd!";
}

}  // namespace

std::string DomainSid(unsigned relativeId) {
    return "S-1-5-21-1111111111-2222222222-3333333333-" + std::to_string(relativeId);
}

std::string NotOnDomainMemberReason() {
    return getenv("PERMORA_DOMAIN") == nullptr ? "tests/support/domain.sh did not start this program" : "";
}

CommandResult ControlDomain(const std::vector<std::string>& command) {
    std::vector<std::string> arguments = {InProject("tests/support/domain.sh")};
    arguments.insert(arguments.end(), command.begin(), command.end());
    return RunCommand(arguments);
}

CommandResult SmbclientAs(const std::string& user, const std::string& commands) {
    return RunCommand({"smbclient", kShare, "-U", Credentials(user), "-m", "SMB3", "-c", commands});
}

CommandResult SmbcaclsAs(const std::string& user, const std::string& name,
                         const std::vector<std::string>& options) {
    std::vector<std::string> arguments = {"smbcacls", kShare, name, "-U", Credentials(user), "-m", "SMB3"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return RunCommand(arguments);
}

}  // namespace permora::test
