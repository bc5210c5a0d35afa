// What it costs to list and to add shares where there are thousands, in the machine's own table and on a real
// Samba server. Prints rows of the table in README.md.
#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "platform/api/errors.h"
#include "platform/host_path.h"
#include "platform/linux/base/unique_fd.h"
#include "platform/linux/shares/recent_shares.h"
#include "platform/linux/shares/samba_shares.h"
#include "platform/linux/shares/share_table.h"
#include "tests/support/command.h"
#include "tests/support/samba_server.h"
#include "tests/support/temporary_folder.h"

namespace {

using permora::bench::Check;
using permora::bench::PrintRatio;
using permora::bench::Runs;
using permora::bench::Scaled;
using permora::bench::SecondsFor;
using permora::host::RecentShares;
using permora::host::SambaShares;
using permora::host::Share;
using permora::host::ShareProvider;
using permora::host::ShareTable;
using permora::host::UniqueFd;
using permora::test::RunCommand;
using permora::test::SambaServer;
using permora::test::TemporaryFolder;

constexpr std::size_t kShares = 2'000;
constexpr const char* kRemark = "A share of the sample";

std::string NameOf(std::size_t number) {
    return "Share " + std::to_string(number);
}

void Add(const ShareProvider& provider, const std::string& name, const std::string& folder) {
    Share share;
    share.name = name;
    share.remark = kRemark;
    share.path = permora::PathFromArgument(folder.c_str());
    const DWORD error = provider.Add(share);
    Check(error == ERROR_SUCCESS, name + " was not added: error " + std::to_string(error));
}

// As the main window does: all of them, then each one again for its folder.
void List(const ShareProvider& provider, std::size_t expected) {
    RecentShares recent(provider);
    std::vector<Share> shares;
    Check(recent.List(shares) == ERROR_SUCCESS, "the shares cannot be listed");
    Check(shares.size() >= expected, "shares are missing");
    for (const Share& share : shares) {
        Share found;
        Check(recent.Find(share.name, permora::host::Freshness::kRecent, found) == ERROR_SUCCESS,
              share.name + " is not found");
    }
}

void RunPeer(const std::vector<std::string>& command) {
    const auto result = RunCommand(command);
    Check(result.exitCode == 0, command.front() + ": " + result.output);
}

// The least work that replaces a file so that a power cut leaves the old one or the new one.
void ReplaceFile(const std::string& folder, const std::string& contents) {
    const std::string path = folder + "/peer";
    const std::string fresh = path + ".new";
    const UniqueFd file(open(fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
    const UniqueFd top(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    Check(write(file.Get(), contents.data(), contents.size()) == static_cast<ssize_t>(contents.size()) &&
              fsync(file.Get()) == 0 && rename(fresh.c_str(), path.c_str()) == 0 && fsync(top.Get()) == 0,
          "a file cannot be replaced");
}

void CompareListings(const ShareProvider& provider, const std::string& where, std::size_t shares,
                     double goal) {
    std::vector<double> ours;
    std::vector<double> peers;
    for (int run = 0; run < Runs(5); ++run) {
        ours.push_back(SecondsFor([&] { List(provider, shares); }));
        peers.push_back(SecondsFor([] { RunPeer({"net", "conf", "list"}); }));
    }
    PrintRatio({"listing shares", where, "`net conf list`"}, ours, peers, goal);
}

// The table's file is on the local disk, where the machine keeps its own.
void FillTable(const TemporaryFolder& folder, const std::string& shared, const std::string& where,
               std::size_t shares) {
    const std::string kept = folder.MakeFolder("kept");
    std::filesystem::create_directories("/etc/permora");
    if (!Check(mount(kept.c_str(), "/etc/permora", nullptr, MS_BIND, nullptr) == 0,
               "the table cannot be put aside"))
        return;
    double ours = 0;
    double peer = 0;
    for (std::size_t i = 0; i < shares; ++i) {
        ours += SecondsFor([&] { Add(ShareTable(), NameOf(i), shared); });
        const std::string contents = permora::test::ReadWholeFile(kept + "/registry.reg");
        peer += SecondsFor([&] { ReplaceFile(folder.Path(), contents); });
    }
    PrintRatio({"adding each of these shares", where, "the same file replaced"}, ours, peer, 2, {3, " s"});
}

// All at once, for which Samba's tool needs a moment.
void FillServer(const TemporaryFolder& folder, const std::string& shared, std::size_t shares) {
    const std::string path = folder.Path("shares.conf");
    {
        std::ofstream file(path);
        for (std::size_t i = 0; i < shares; ++i)
            file << '[' << NameOf(i) << "]\npath = " << shared << "\ncomment = " << kRemark << '\n';
    }
    RunPeer({"net", "conf", "import", path});
}

void CompareAdding(const std::string& shared, const std::string& where) {
    std::vector<double> ours;
    std::vector<double> peers;
    for (int run = 0; run < Runs(5); ++run) {
        const std::string number = std::to_string(run);
        ours.push_back(SecondsFor([&] { Add(SambaShares(), "Ours " + number, shared); }));
        peers.push_back(SecondsFor([&] {
            RunPeer({"testparm", "-s", "-l"});
            RunPeer(
                {"net", "conf", "addshare", "Peer " + number, shared, "writeable=y", "guest_ok=n", kRemark});
        }));
    }
    PrintRatio({"adding one share", where, "`testparm -s` and `net conf addshare`"}, ours, peers, 3);
}

}  // namespace

int main(int argc, char** argv) {
    permora::bench::Begin(argc, argv);
    if (const std::string reason = SambaServer::SkipReason(); !Check(reason.empty(), reason))
        return permora::bench::ExitCode();
    const SambaServer server;
    if (!Check(server.Problem().empty(), server.Problem())) return permora::bench::ExitCode();
    const std::size_t shares = Scaled(kShares);
    const std::string count = std::to_string(shares) + " shares";
    const TemporaryFolder folder;
    FillServer(folder, server.Root(), shares);
    FillTable(folder, server.Root(), "own table, " + count, shares);
    CompareListings(ShareTable(), "own table, " + count, shares, 1);
    CompareListings(SambaShares(), "Samba, " + count, shares, 3);
    CompareAdding(server.Root(), "Samba, " + count);
    umount2("/etc/permora", MNT_DETACH);
    return permora::bench::ExitCode();
}
