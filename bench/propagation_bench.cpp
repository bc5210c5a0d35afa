// What it costs to set an inheritable entry on a folder with many objects below. Prints rows of the table in
// README.md.
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
using permora::bench::PrintRatio;
using permora::bench::RewriteAttributes;
using permora::bench::Runs;
using permora::bench::Scaled;
using permora::bench::SecondsFor;
using permora::test::NtfsVolume;
using permora::test::SambaServer;
using permora::test::SetDescriptorText;
using permora::test::TemporaryFolder;

// Two lists to change between, so that every run changes every object.
constexpr const char* kLists[] = {"D:P(A;OICI;FA;;;BA)(A;OICI;FR;;;BU)",
                                  "D:P(A;OICI;FA;;;BA)(A;OICI;FR;;;BU)(A;OICI;0x1200a9;;;WD)"};

void SetList(const std::string& top, int run) {
    Check(SetDescriptorText(top, kLists[run % 2]) == ERROR_SUCCESS, "setting the list failed");
}

struct Medians {
    double ours = 0;
    double plain = 0;
};

// Runs both by turns, so that other load affects both.
Medians CompareWithLoop(const char* place, const std::string& top, std::size_t objects, const char* attribute,
                        int runs) {
    if (!Check(MakeSampleTree(top, objects), "cannot make the tree")) return {};
    const auto set = [&](int run) { SetList(top, run); };
    const auto loop = [&] {
        Check(RewriteAttributes(top, attribute) == objects + 1, "the loop missed objects");
    };
    std::vector<double> ours;
    std::vector<double> plain;
    for (int run = 0; run < runs; ++run) {
        // The loop changes a byte and changes it back, so that our side finds its own bytes.
        plain.push_back(SecondsFor(loop));
        loop();
        ours.push_back(SecondsFor([&] { set(run + 1); }));
    }
    const std::size_t loopPeak = PeakKibibytesOf(loop);
    loop();
    const std::size_t ourPeak = PeakKibibytesOf([&] { set(runs + 1); });
    const std::string where = place + (", " + std::to_string(objects)) + " objects";
    PrintRatio({"setting an entry that is inherited", where, "plain loop"}, ours, plain, 2.5);
    permora::bench::PrintLimited({"memory for it", where, "plain loop"}, static_cast<double>(ourPeak), 1024,
                                 {0, " KiB"}, static_cast<double>(loopPeak));
    return {Median(ours), Median(plain)};
}

void CompareOnLocalDisk() {
    const TemporaryFolder folder;
    const char* attribute = "security.NTACL";
    const char* place = "local disk";
    const Medians small = CompareWithLoop(place, folder.Path("small"), Scaled(10'000), attribute, Runs(5));
    const Medians large = CompareWithLoop(place, folder.Path("large"), Scaled(100'000), attribute, Runs(3));
    PrintRatio({"setting an entry, ten times the objects", place, "plain loop"}, large.ours / small.ours,
               large.plain / small.plain, 1.15, {2, " times as long"});
}

void CompareOnNtfs() {
    if (const std::string reason = NtfsVolume::SkipReason(); !Check(reason.empty(), reason)) return;
    const NtfsVolume volume(std::uint64_t{256} << 20);
    if (!Check(volume.Problem().empty(), volume.Problem())) return;
    CompareWithLoop("NTFS", volume.Path("tree"), Scaled(10'000), "system.ntfs_acl", Runs(5));
}

void CompareWithSambasTool() {
    const std::size_t objects = Scaled(2'000);
    if (const std::string reason = SambaServer::SkipReason(); !Check(reason.empty(), reason)) return;
    const SambaServer server;
    if (!Check(server.Problem().empty(), server.Problem())) return;
    if (!Check(MakeSampleTree(server.Path("tree"), objects), "cannot make the tree")) return;
    std::vector<double> ours;
    std::vector<double> peers;
    for (int run = 0; run < Runs(3); ++run) {
        SetList(server.Path("tree"), 0);
        ours.push_back(SecondsFor([&] { SetList(server.Path("tree"), 1); }));
        SetList(server.Path("tree"), 0);
        peers.push_back(SecondsFor([&] {
            const auto result =
                server.Smbcacls("tree", {"-a", "ACL:S-1-1-0:0/0x3/0x001200a9", "--propagate-inheritance"});
            Check(result.exitCode == 0, result.output);
        }));
    }
    PrintRatio({"setting an entry that is inherited", "Samba share, " + std::to_string(objects) + " objects",
                "`smbcacls --propagate-inheritance`"},
               ours, peers, 1);
}

}  // namespace

int main(int argc, char** argv) {
    permora::bench::Begin(argc, argv);
    CompareOnLocalDisk();
    CompareOnNtfs();
    CompareWithSambasTool();
    return permora::bench::ExitCode();
}
