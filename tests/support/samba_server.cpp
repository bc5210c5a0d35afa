#include "tests/support/samba_server.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <sstream>

#include "platform/linux/base/unique_fd.h"
#include "tests/support/own_mounts.h"
#include "tests/support/patience.h"

namespace permora::test {

namespace {

using host::UniqueFd;

constexpr const char* kConfiguration = "/etc/samba/smb.conf";
constexpr const char* kAccount = "root%secret";

// Every folder in which Samba keeps anything.
constexpr const char* kPrivateFolders[] = {"/etc/samba", "/var/lib/samba", "/var/cache/samba",
                                           "/var/log/samba", "/run/samba"};

std::string FailedStep(const std::string& step) {
    return step + ": " + std::strerror(errno);
}

// A new network namespace has a loopback interface that is down.
bool BringLoopbackUp() {
    const UniqueFd control(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    ifreq request{};
    std::strncpy(request.ifr_name, "lo", IFNAMSIZ - 1);
    request.ifr_flags = IFF_UP;
    return control && ioctl(control.Get(), SIOCSIFFLAGS, &request) == 0;
}

std::string EnterOwnWorld() {
    if (std::string failure = EnterOwnMounts(); !failure.empty()) return failure;
    if (unshare(CLONE_NEWNET) != 0) return FailedStep("unshare");
    if (!BringLoopbackUp()) return FailedStep("loopback interface");
    for (const char* place : kPrivateFolders) {
        if (RunCommand({"mkdir", "-p", place}).exitCode != 0) return std::string("cannot make ") + place;
        if (mount("tmpfs", place, "tmpfs", MS_NOSUID | MS_NODEV, "mode=0755") != 0) return FailedStep(place);
    }
    if (mkdir("/var/lib/samba/private", 0700) != 0) return FailedStep("private folder");
    if (mkdir("/var/lib/samba/usershares", 01770) != 0) return FailedStep("folder of users' shares");
    return {};
}

void WriteConfiguration(const std::string& sharedFolder) {
    std::ofstream(kConfiguration) << "[global]\n"
                                     "netbios name = PERMORATEST\n"
                                     "workgroup = PERMORA\n"
                                     "interfaces = lo\n"
                                     "bind interfaces only = yes\n"
                                     "smb ports = 445\n"
                                     "disable netbios = yes\n"
                                     "load printers = no\n"
                                     "printcap name = /dev/null\n"
                                     "disable spoolss = yes\n"
                                     "vfs objects = acl_xattr\n"
                                     "registry shares = yes\n"
                                     "usershare max shares = 100\n"
                                     "usershare owner only = no\n"
                                     "[share]\n"
                                     "path = "
                                  << sharedFolder
                                  << "\nread only = no\n"
                                     "acl_xattr:ignore system acls = yes\n"
                                     "[plain]\n"
                                     "path = "
                                  << sharedFolder << "\nread only = no\n";
}

bool AnswersOnPort445() {
    const UniqueFd connection(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(445);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return connection &&
           connect(connection.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

CommandResult RunSmbcacls(const std::string& share, const std::string& name,
                          const std::vector<std::string>& options) {
    std::vector<std::string> arguments = {
        "smbcacls", "//127.0.0.1/" + share, name, "-U", kAccount, "--numeric", "-m", "SMB3"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return RunCommand(arguments);
}

}  // namespace

std::string SambaServer::SkipReason() {
    for (const char* program : {"smbd", "smbpasswd", "smbcacls", "smbclient"})
        if (std::string reason = MissingProgram(program); !reason.empty()) return reason;
    return CannotMountReason();
}

std::string InstallSamba(const std::string& sharedFolder) {
    std::string problem = EnterOwnWorld();
    if (problem.empty()) WriteConfiguration(sharedFolder);
    return problem;
}

SambaServer::SambaServer() : root(folder.MakeFolder("shared")) {
    problem = InstallSamba(root);
    if (!problem.empty()) return;
    const CommandResult user = RunCommand({"smbpasswd", "-a", "-s", "root"}, "secret\nsecret\n");
    if (user.exitCode != 0) {
        problem = "smbpasswd: " + user.output;
        return;
    }
    const std::string log = folder.Path("smbd.log");
    server = StartService({"smbd", "--foreground", "--debug-stdout"}, log);
    if (server <= 0 || !Await(AnswersOnPort445)) problem = "smbd: " + ReadWholeFile(log);
}

SambaServer::~SambaServer() {
    if (server <= 0) return;
    kill(server, SIGTERM);
    AwaitServiceEnd(server);
}

CommandResult SambaServer::Smbcacls(const std::string& name, const std::vector<std::string>& options) const {
    return RunSmbcacls("share", name, options);
}

std::string SambaServer::ServedEntries(const std::string& name) const {
    std::istringstream text(Smbcacls(name).output);
    std::string entries;
    for (std::string line; std::getline(text, line);)
        if (line.starts_with("ACL:")) entries += line.substr(4) + '\n';
    return entries;
}

CommandResult SambaServer::SmbcaclsOnPlainShare(const std::string& name,
                                                const std::vector<std::string>& options) const {
    return RunSmbcacls("plain", name, options);
}

CommandResult SambaServer::Smbclient(const std::string& commands) const {
    return RunCommand({"smbclient", "//127.0.0.1/share", "-U", kAccount, "-m", "SMB3", "-c", commands});
}

}  // namespace permora::test
