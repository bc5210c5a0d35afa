// A real Samba server for tests, in a world of its own.
#pragma once

#include <string>
#include <vector>

#include "tests/support/command.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {

// A Samba that was just installed and never started: its folders are empty but for the configuration of the
// server below. For a process that enters namespaces of its own by this and has no server yet. What went
// wrong; empty when all is well.
std::string InstallSamba(const std::string& sharedFolder);

// smbd on 127.0.0.1:445 with one user, "root", and one share that keeps access lists as they are
// (vfs objects = acl_xattr, ignore system acls); its registry and its users may add shares. The process that
// makes it enters mount and network namespaces of its own in which Samba's folders are empty, so that neither
// the machine's Samba nor another test is touched, and so that everything this process does (and starts) sees
// this server as the machine's Samba. One for each process, for its whole life; its test program is
// registered with permora_add_samba_test.
class SambaServer {
  public:
    // Why this machine cannot run one; empty when it can.
    static std::string SkipReason();

    SambaServer();
    ~SambaServer();
    SambaServer(const SambaServer&) = delete;
    SambaServer& operator=(const SambaServer&) = delete;

    // What went wrong in starting it; empty when it serves. To be asserted before the first use.
    const std::string& Problem() const { return problem; }

    // The shared folder, and the path of `name` in it, as the host writes paths.
    const std::string& Root() const { return root; }
    std::string Path(const std::string& name) const { return root + "/" + name; }

    // smbcacls on the object `name` of the share (path relative to it), names as SIDs, masks as numbers.
    CommandResult Smbcacls(const std::string& name, const std::vector<std::string>& options = {}) const;
    // The entries of an object as smbcacls tells them: a line "SID:type/flags/mask" for each.
    std::string ServedEntries(const std::string& name) const;
    // smbcacls through a second share of the same folder, which does not ignore the system's own access
    // lists.
    CommandResult SmbcaclsOnPlainShare(const std::string& name,
                                       const std::vector<std::string>& options = {}) const;
    // smbclient with commands separated by semicolons.
    CommandResult Smbclient(const std::string& commands) const;

  private:
    TemporaryFolder folder;
    std::string root;
    std::string problem;
    int server = -1;  // process id of smbd
};

}  // namespace permora::test
