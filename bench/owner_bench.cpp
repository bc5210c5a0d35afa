// What it costs to give every object below a folder another owner, against a plain loop of the same raw
// calls. Prints the rows of a table.
#include <array>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "bench/sample_tree.h"
#include "platform/api/errors.h"
#include "platform/host_path.h"
#include "platform/resources.h"
#include "platform/tree_security.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/temporary_folder.h"

namespace {

using permora::bench::Check;
using permora::bench::Median;
using permora::bench::PeakKibibytesOf;
using permora::bench::SecondsFor;
using permora::bench::SilentObserver;

constexpr int kRuns = 7;

// One of two owners that take turns, so that every run changes every object.
struct Owner {
    const char* sid;
    std::optional<uid_t> hostUser;  // nothing: an account that is no user of the host
};
using Owners = std::array<Owner, 2>;

constexpr Owners kGroups = {{{"S-1-5-32-546", std::nullopt}, {"S-1-5-32-544", std::nullopt}}};
constexpr Owners kUsers = {{{"S-1-22-1-1", 1}, {"S-1-22-1-2", 2}}};

void SetOwners(const std::string& top, const Owner& owner, std::size_t objects) {
    PSID sid = nullptr;
    Check(ConvertStringSidToSidA(owner.sid, &sid) != FALSE, "the owner is no SID");
    const permora::UniqueLocal<void> owned(sid);
    SilentObserver observer;
    permora::TreeCounts counts;
    const DWORD error =
        permora::SetOwnersBelow(permora::PathFromArgument(top.c_str()).c_str(), sid, observer, counts);
    Check(error == ERROR_SUCCESS && counts.changed == objects, "not every object was changed");
}

// Runs both by turns, so that what else the machine does falls on both.
void CompareWithLoop(const char* what, const std::string& top, std::size_t objects, const char* attribute,
                     const Owners& owners) {
    if (!Check(permora::bench::MakeSampleTree(top, objects), "cannot make the tree")) return;
    const auto loop = [&](const Owner& owner) {
        Check(permora::bench::RewriteAttributes(top, attribute, owner.hostUser) == objects + 1,
              "the loop missed objects");
    };
    std::vector<double> ours;
    std::vector<double> plain;
    for (int run = 0; run < kRuns; ++run) {
        // The loop changes a byte and changes it back, and so the host's owner.
        plain.push_back(SecondsFor([&] { loop(owners.front()); }));
        loop(owners.back());
        ours.push_back(SecondsFor([&] { SetOwners(top, owners.front(), objects); }));
        SetOwners(top, owners.back(), objects);
    }
    const std::size_t peak = PeakKibibytesOf([&] { SetOwners(top, owners.front(), objects); });
    std::printf("| %s | %zu | %.3f s | %.3f s | %.2f | %zu KiB |\n", what, objects, Median(plain),
                Median(ours), Median(ours) / Median(plain), peak);
    std::fflush(stdout);
}

}  // namespace

int main() {
    std::printf(
        "| where, new owner | objects | plain loop | ours | ratio | peak memory "
        "|\n|---|---|---|---|---|---|\n");
    {
        const permora::test::TemporaryFolder folder;
        CompareWithLoop("local disk, a group", folder.Path("groups"), 100'000, "security.NTACL", kGroups);
    }
    {
        const permora::test::TemporaryFolder folder;
        CompareWithLoop("local disk, a user", folder.Path("users"), 100'000, "security.NTACL", kUsers);
    }
    if (const std::string reason = permora::test::NtfsVolume::SkipReason(); Check(reason.empty(), reason)) {
        const permora::test::NtfsVolume volume(std::uint64_t{256} << 20);
        if (Check(volume.Problem().empty(), volume.Problem()))
            CompareWithLoop("NTFS, a group", volume.Path("tree"), 10'000, "system.ntfs_acl", kGroups);
    }
    return permora::bench::ExitCode();
}
