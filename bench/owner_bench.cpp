// What it costs to give every object below a folder another owner, against a plain loop of the same raw
// calls. Prints rows of the table in README.md.
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "bench/sample_tree.h"
#include "platform/api/errors.h"
#include "platform/resources.h"
#include "platform/tree_security.h"
#include "tests/support/access_lists.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/temporary_folder.h"

namespace {

using permora::bench::Check;
using permora::bench::MakeSampleTree;
using permora::bench::Runs;
using permora::bench::Scaled;
using permora::bench::SecondsFor;
using permora::bench::SilentObserver;

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
    const DWORD error = permora::test::Held(top).SetOwnersBelow(sid, permora::LinkedFiles::kPassOver,
                                                                permora::TreeListMode::kWrite,
                                                                permora::Unrecorded(), observer, counts);
    Check(error == ERROR_SUCCESS && counts.changed == objects, "not every object was changed");
}

// Runs both by turns, so that other load affects both.
void CompareWithLoop(const char* what, const char* place, const std::string& top, std::size_t objects,
                     const char* attribute, const Owners& owners) {
    const auto loop = [&](const Owner& owner) {
        Check(permora::bench::RewriteAttributes(top, attribute, owner.hostUser) == objects + 1,
              "the loop missed objects");
    };
    std::vector<double> ours;
    std::vector<double> plain;
    for (int run = 0; run < Runs(5); ++run) {
        // The loop changes a byte and changes it back, and so the host's owner.
        plain.push_back(SecondsFor([&] { loop(owners.front()); }));
        loop(owners.back());
        ours.push_back(SecondsFor([&] { SetOwners(top, owners.front(), objects); }));
        SetOwners(top, owners.back(), objects);
    }
    permora::bench::PrintRatio({what, place + (", " + std::to_string(objects)) + " objects", "plain loop"},
                               ours, plain, 2.5);
}

}  // namespace

int main(int argc, char** argv) {
    permora::bench::Begin(argc, argv);
    constexpr const char* kToGroup = "giving a tree to a group";
    {
        const permora::test::TemporaryFolder folder;
        const std::string top = folder.Path("tree");
        const std::size_t objects = Scaled(100'000);
        if (Check(MakeSampleTree(top, objects), "cannot make the tree")) {
            CompareWithLoop(kToGroup, "local disk", top, objects, "security.NTACL", kGroups);
            CompareWithLoop("giving a tree to a user", "local disk", top, objects, "security.NTACL", kUsers);
        }
    }
    if (const std::string reason = permora::test::NtfsVolume::SkipReason(); Check(reason.empty(), reason)) {
        const permora::test::NtfsVolume volume(std::uint64_t{256} << 20);
        const std::size_t objects = Scaled(10'000);
        if (Check(volume.Problem().empty(), volume.Problem()) &&
            Check(MakeSampleTree(volume.Path("tree"), objects), "cannot make the tree"))
            CompareWithLoop(kToGroup, "NTFS", volume.Path("tree"), objects, "system.ntfs_acl", kGroups);
    }
    return permora::bench::ExitCode();
}
