// What it costs to set an inheritable entry on a folder with many objects below. Prints the rows of the table
// in README.md.
#include <cstdio>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "bench/sample_tree.h"
#include "platform/api/errors.h"
#include "tests/support/access_lists.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/samba_server.h"
#include "tests/support/temporary_folder.h"

namespace {

using permora::bench::Check;
using permora::bench::MakeSampleTree;
using permora::bench::Median;
using permora::bench::PeakKibibytesOf;
using permora::bench::RewriteAttributes;
using permora::bench::SecondsFor;
using permora::test::NtfsVolume;
using permora::test::SambaServer;
using permora::test::SetDescriptorText;
using permora::test::TemporaryFolder;

constexpr int kRuns = 7;

// Two lists to change between, so that every run changes every object.
constexpr const char* kLists[] = {"D:P(A;OICI;FA;;;BA)(A;OICI;FR;;;BU)",
                                  "D:P(A;OICI;FA;;;BA)(A;OICI;FR;;;BU)(A;OICI;0x1200a9;;;WD)"};

void SetList(const std::string& top, int run) {
    Check(SetDescriptorText(top, kLists[run % 2]) == ERROR_SUCCESS, "setting the list failed");
}

// Runs both by turns, so that what else the machine does falls on both. Returns the seconds of ours.
double CompareWithLoop(const char* what, const std::string& top, std::size_t objects, const char* attribute) {
    if (!Check(MakeSampleTree(top, objects), "cannot make the tree")) return 0;
    const auto set = [&](int run) { SetList(top, run); };
    const auto loop = [&] {
        Check(RewriteAttributes(top, attribute) == objects + 1, "the loop missed objects");
    };
    std::vector<double> ours;
    std::vector<double> plain;
    for (int run = 0; run < kRuns; ++run) {
        // The loop changes a byte and changes it back, so that ours finds what it wrote itself.
        plain.push_back(SecondsFor(loop));
        loop();
        ours.push_back(SecondsFor([&] { set(run + 1); }));
    }
    const std::size_t loopPeak = PeakKibibytesOf(loop);
    loop();
    const std::size_t ourPeak = PeakKibibytesOf([&] { set(kRuns + 1); });
    std::printf("| %s | %zu | %.3f s | %.3f s | %.2f | %zu KiB | %zu KiB |\n", what, objects, Median(ours),
                Median(plain), Median(ours) / Median(plain), ourPeak, loopPeak);
    std::fflush(stdout);
    return Median(ours);
}

void CompareOnLocalDisk() {
    const TemporaryFolder folder;
    const char* attribute = "security.NTACL";
    const double small = CompareWithLoop("local disk", folder.Path("small"), 10'000, attribute);
    const double large = CompareWithLoop("local disk", folder.Path("large"), 100'000, attribute);
    std::printf("100,000 objects take %.2f times as long as 10,000.\n", large / small);
}

void CompareOnNtfs() {
    if (const std::string reason = NtfsVolume::SkipReason(); !Check(reason.empty(), reason)) return;
    const NtfsVolume volume(std::uint64_t{256} << 20);
    if (!Check(volume.Problem().empty(), volume.Problem())) return;
    CompareWithLoop("NTFS", volume.Path("tree"), 10'000, "system.ntfs_acl");
}

void CompareWithSambasTool() {
    constexpr std::size_t kObjects = 2'000;
    if (const std::string reason = SambaServer::SkipReason(); !Check(reason.empty(), reason)) return;
    const SambaServer server;
    if (!Check(server.Problem().empty(), server.Problem())) return;
    if (!Check(MakeSampleTree(server.Path("tree"), kObjects), "cannot make the tree")) return;
    std::vector<double> ours;
    std::vector<double> peers;
    for (int run = 0; run < kRuns; ++run) {
        SetList(server.Path("tree"), 0);
        ours.push_back(SecondsFor([&] { SetList(server.Path("tree"), 1); }));
        SetList(server.Path("tree"), 0);
        peers.push_back(SecondsFor([&] {
            const auto result =
                server.Smbcacls("tree", {"-a", "ACL:S-1-1-0:0/0x3/0x001200a9", "--propagate-inheritance"});
            Check(result.exitCode == 0, result.output);
        }));
    }
    std::printf("| Samba share, against smbcacls | %zu | %.3f s | %.3f s | %.3f | | |\n", kObjects,
                Median(ours), Median(peers), Median(ours) / Median(peers));
}

}  // namespace

int main() {
    std::printf("| where | objects | ours | plain loop | ratio | peak memory, ours | peak memory, loop |\n");
    std::printf("|---|---|---|---|---|---|---|\n");
    CompareOnLocalDisk();
    CompareOnNtfs();
    CompareWithSambasTool();
    return permora::bench::ExitCode();
}
