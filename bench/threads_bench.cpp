// What further threads bring, on volumes of several kinds: the same change of a tree, and the same reading of
// it in order, with a fixed number of threads and with as many as are chosen, against the plain loop on one.
// Prints rows of the table in README.md.
#include <fcntl.h>
#include <sys/mount.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "bench/sample_tree.h"
#include "bench/slow_volume.h"
#include "platform/api/errors.h"
#include "platform/linux/files/object_handle.h"
#include "platform/linux/security/propagation.h"
#include "platform/raw_security.h"
#include "saved/tree_saving.h"
#include "tests/support/access_lists.h"
#include "tests/support/command.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/temporary_folder.h"

namespace {

using permora::bench::Check;
using permora::bench::Median;
using permora::bench::PrintRatio;
using permora::bench::ReadAttributes;
using permora::bench::RewriteAttributes;
using permora::bench::Runs;
using permora::bench::Scaled;
using permora::bench::SecondsFor;
using permora::host::ObjectHandle;
using permora::test::NtfsVolume;
using permora::test::RunCommand;
using permora::test::TemporaryFolder;

using Threads = std::optional<std::size_t>;  // nothing: as many as the walk chooses

constexpr Threads kSteps[] = {1, 2, 4, 16, std::nullopt};

// Two lists to change between, so that every run changes every object.
permora::nt::Acl ListOfRun(int run) {
    const auto descriptor = permora::test::DescriptorOf(run % 2 == 0 ? "D:P(A;OICI;FA;;;BA)(A;OICI;FR;;;BU)"
                                                                     : "D:P(A;OICI;FA;;;BA)(A;OICI;FW;;;BU)");
    return permora::AclOf(permora::test::ListOf(descriptor)).value_or(permora::nt::Acl());
}

void CarryDown(const std::string& top, int run, Threads threads) {
    ObjectHandle folder;
    Check(ObjectHandle::OpenAt(AT_FDCWD, top.c_str(), folder) == ERROR_SUCCESS, "cannot open the tree");
    const permora::host::DescriptorStore store;
    permora::FailuresBelow failures;
    Check(permora::host::PropagateList(folder, ListOfRun(run), store, {}, failures, threads) == ERROR_SUCCESS,
          "the tree was not walked to its end");
    Check(failures.count == 0, "objects were passed over, first " +
                                   (failures.named.empty() ? std::string() : failures.named.begin()->first));
}

class Counter : public permora::TreeVisitor {
  public:
    bool Visit(const permora::ReadObject& object) override {
        if (Check(!object.descriptor.empty(), "not read: " + std::string(object.path))) ++count;
        return true;
    }
    std::size_t count = 0;
};

void ReadInOrder(const std::string& top, std::size_t objects, Threads threads) {
    const permora::HeldObject held = permora::test::Held(top);
    Counter visitor;
    (void)permora::ReadTree(held, permora::ReadableParts(held), visitor, threads);
    Check(visitor.count == objects + 1, "the reading missed objects");
}

std::string TextOf(Threads threads) {
    if (!threads) return "threads as chosen";
    return std::to_string(*threads) + (*threads == 1 ? " thread" : " threads");
}

struct Place {
    const char* name;
    std::string tree;
    std::size_t objects;
    const char* attribute;
    int runs;
    double changeGoal;  // of the number that the walk chooses
    double readGoal;
    bool hasLoop = true;
};

// The figures of one kind of work.
struct Figures {
    std::vector<double> loop;
    std::vector<std::vector<double>> ours = std::vector<std::vector<double>>(std::size(kSteps));

    void Print(const std::string& what, const Place& place, double goal) const {
        const std::string where = place.name + (", " + std::to_string(place.objects)) + " objects";
        const char* peer = place.hasLoop ? "plain loop" : "1 thread";
        for (std::size_t step = 0; step < std::size(kSteps); ++step)
            PrintRatio({what + ", " + TextOf(kSteps[step]), where, peer}, ours[step],
                       place.hasLoop ? loop : ours.front(), kSteps[step] == Threads() ? goal : 3);
    }
};

// All by turns, so that other load affects all.
void Compare(const Place& place) {
    Figures changing;
    Figures reading;
    int changes = 0;
    const auto isWhole = [&](std::size_t count) {
        Check(count == place.objects + 1, "the loop missed objects");
    };
    const auto rewrite = [&] { isWhole(RewriteAttributes(place.tree, place.attribute)); };
    for (int run = 0; run < place.runs; ++run) {
        // It changes a byte and changes it back, so that our side finds its own bytes.
        if (place.hasLoop) {
            changing.loop.push_back(SecondsFor(rewrite));
            rewrite();
            reading.loop.push_back(SecondsFor([&] { isWhole(ReadAttributes(place.tree, place.attribute)); }));
        }
        for (std::size_t step = 0; step < std::size(kSteps); ++step) {
            reading.ours[step].push_back(
                SecondsFor([&] { ReadInOrder(place.tree, place.objects, kSteps[step]); }));
            changing.ours[step].push_back(
                SecondsFor([&] { CarryDown(place.tree, ++changes, kSteps[step]); }));
        }
    }
    changing.Print("an inherited entry", place, place.changeGoal);
    reading.Print("reading a tree", place, place.readGoal);
}

void CompareLocally(const char* name, const std::string& tree) {
    const std::size_t objects = Scaled(100'000);
    if (Check(permora::bench::MakeSampleTree(tree, objects), "cannot make the tree"))
        Compare({name, tree, objects, "security.NTACL", Runs(5), 0.75, 1});
}

void CompareOnTmpfs() {
    const TemporaryFolder folder;
    if (!Check(mount("none", folder.Path().c_str(), "tmpfs", 0, nullptr) == 0, "cannot mount tmpfs")) return;
    CompareLocally("tmpfs", folder.Path("tree"));
    umount2(folder.Path().c_str(), MNT_DETACH);
}

void CompareOnXfs() {
    const TemporaryFolder folder;
    const TemporaryFolder place;
    const std::string image = folder.Path("image");
    if (!permora::test::MissingProgram("mkfs.xfs").empty()) return;
    Check(RunCommand({"truncate", "-s", "1G", image}).exitCode == 0, "no room for an image");
    const auto made = RunCommand({"mkfs.xfs", "-q", image});
    if (!Check(made.exitCode == 0, made.output)) return;
    const auto mounted = RunCommand({"mount", "-o", "loop", image, place.Path()});
    if (!Check(mounted.exitCode == 0, mounted.output)) return;
    CompareLocally("xfs", place.Path("tree"));
    umount2(place.Path().c_str(), MNT_DETACH);
}

void CompareOnNtfs() {
    if (const std::string reason = NtfsVolume::SkipReason(); !Check(reason.empty(), reason)) return;
    const NtfsVolume volume(std::uint64_t{256} << 20);
    const std::size_t objects = Scaled(10'000);
    if (Check(volume.Problem().empty(), volume.Problem()) &&
        Check(permora::bench::MakeSampleTree(volume.Path("tree"), objects), "cannot make the tree"))
        Compare({"NTFS", volume.Path("tree"), objects, "system.ntfs_acl", Runs(5), 1.1, 1.1});
}

// One run, in which a single thread needs the better part of a minute.
void CompareWithLatency() {
    const TemporaryFolder folder;
    const std::size_t objects = Scaled(10'000);
    if (!Check(permora::bench::MakeSampleTree(folder.Path("tree"), objects), "cannot make the tree")) return;
    const permora::bench::SlowVolume volume(folder.Path(), std::chrono::milliseconds(1));
    if (Check(volume.IsMounted(), "the slow volume cannot be mounted"))
        Compare({"1 ms a request", volume.Root() + "/tree", objects, "security.NTACL", 1, 0.1, 0.1, false});
}

}  // namespace

int main(int argc, char** argv) {
    permora::bench::Begin(argc, argv);
    {
        const TemporaryFolder folder;
        CompareLocally("local disk", folder.Path("tree"));
    }
    CompareOnTmpfs();
    CompareOnXfs();
    CompareOnNtfs();
    CompareWithLatency();
    return permora::bench::ExitCode();
}
