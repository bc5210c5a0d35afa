// What it costs that changes can be taken back: a tree reset, and given away, with history and without, and
// the undo of it. Prints rows of the table in README.md.
#include <sys/stat.h>
#include <sys/xattr.h>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "bench/sample_tree.h"
#include "history/history.h"
#include "history/undo.h"
#include "platform/api/errors.h"
#include "platform/nt/sid.h"
#include "platform/resources.h"
#include "platform/tree_security.h"
#include "tests/support/access_lists.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/temporary_folder.h"

namespace {

using permora::ChangeRecorder;
using permora::bench::Check;
using permora::bench::MakeSampleTree;
using permora::bench::PeakKibibytesOf;
using permora::bench::PrintLimited;
using permora::bench::PrintRatio;
using permora::bench::Runs;
using permora::bench::Scaled;
using permora::bench::SecondsFor;
using permora::bench::SilentObserver;

// One of two states that take turns, so that every run changes every object.
using Walk = std::function<void(const std::string& top, int state, ChangeRecorder& recorder)>;

void CheckWalk(DWORD error, const permora::TreeCounts& counts, std::size_t objects) {
    Check(error == ERROR_SUCCESS && counts.changed == objects, "not every object was changed");
}

// The folder's list is written past the program, so that what is below stays as it is.
Walk ResetOf(std::size_t objects, const char* attribute) {
    return [=](const std::string& top, int state, ChangeRecorder& recorder) {
        constexpr std::array<const char*, 2> kLists = {"D:P(A;OICI;FA;;;BA)(A;OICI;FR;;;BU)",
                                                       "D:P(A;OICI;FA;;;BA)(A;OICI;FR;;;WD)"};
        const std::string place = top.substr(0, top.rfind('/')) + "/model";
        Check(mkdir(place.c_str(), 0755) == 0, "no model");
        Check(permora::test::SetDescriptorText(place, kLists.at(static_cast<std::size_t>(state))) == 0,
              "no list");
        std::vector<char> value(4096);
        const ssize_t size = getxattr(place.c_str(), attribute, value.data(), value.size());
        Check(size > 0 &&
                  setxattr(top.c_str(), attribute, value.data(), static_cast<std::size_t>(size), 0) == 0,
              "cannot change the folder");
        Check(rmdir(place.c_str()) == 0, "the model stays");
        SilentObserver observer;
        permora::TreeCounts counts;
        const permora::UniqueLocal<void> empty = permora::test::DescriptorOf("D:");
        const DWORD error = permora::test::Held(top).SetListsBelow(
            permora::test::ListOf(empty), permora::TreeListMode::kWrite, recorder, observer, counts);
        CheckWalk(error, counts, objects);
    };
}

Walk OwnersOf(std::size_t objects) {
    return [=](const std::string& top, int state, ChangeRecorder& recorder) {
        // Users of the host by the SIDs that they have on every host.
        const permora::nt::Sid owner(22, {1, state == 0 ? 1U : 2U});
        std::vector<std::uint8_t> bytes(owner.Bytes().begin(), owner.Bytes().end());
        SilentObserver observer;
        permora::TreeCounts counts;
        const DWORD error = permora::test::Held(top).SetOwnersBelow(
            bytes.data(), permora::LinkedFiles::kPassOver, permora::TreeListMode::kWrite, recorder, observer,
            counts);
        CheckWalk(error, counts, objects);
    };
}

class SilentUndo : public permora::UndoObserver {
  public:
    bool Begin(const permora::ChangedTop& /*top*/, const std::string& /*path*/) override { return true; }
    void Leave(const permora::ChangedTop& /*top*/, const std::string& path, permora::LeftAlone /*extent*/,
               DWORD reason) override {
        Check(false, "left alone: " + path + ", " + std::to_string(reason));
    }
};

double Kibibytes(const std::string& file) {
    struct stat status {};
    return stat(file.c_str(), &status) == 0 ? static_cast<double>(status.st_size) / 1024 : 0;
}

struct Goals {
    double walk;
    double undo = 1.5;
};

// All by turns, so that other load affects all.
void Compare(const char* what, const std::string& where, const std::string& top, const Walk& walk,
             const Goals& goals, int runs) {
    const permora::test::TemporaryFolder state;
    const std::string file = state.Path("history.db");
    std::unique_ptr<permora::History> history;
    if (!Check(permora::History::Open(file, history) == ERROR_SUCCESS, "no history")) return;
    std::vector<double> plain;
    std::vector<double> recorded;
    std::vector<double> undone;
    for (int run = 0; run < runs; ++run) {
        plain.push_back(SecondsFor([&] { walk(top, (run + 1) % 2, permora::Unrecorded()); }));
        std::unique_ptr<permora::Change> change = history->Begin(permora::ChangeKind::kReset);
        recorded.push_back(SecondsFor([&] {
            walk(top, run % 2, *change);
            change->End();
        }));
        SilentUndo observer;
        permora::UndoCounts counts;
        undone.push_back(SecondsFor([&] {
            Check(permora::UndoChange(*history, change->Number(), {}, observer, counts) == ERROR_SUCCESS,
                  "the undo failed");
        }));
    }
    PrintRatio({what, where, "without history"}, recorded, plain, goals.walk);
    PrintRatio({std::string("undoing: ") + what, where, "with history"}, undone, recorded, goals.undo);
}

void MeasureMemory(const std::string& top, std::size_t objects) {
    const permora::test::TemporaryFolder state;
    const std::string file = state.Path("history.db");
    std::unique_ptr<permora::History> history;
    if (!Check(permora::History::Open(file, history) == ERROR_SUCCESS, "no history")) return;
    const std::unique_ptr<permora::Change> change = history->Begin(permora::ChangeKind::kReset);
    const std::size_t peak = PeakKibibytesOf([&] {
        ResetOf(objects, "security.NTACL")(top, 1, *change);
        change->End();
    });
    history.reset();
    const std::string where = "local disk, " + std::to_string(objects) + " objects";
    PrintLimited({"memory for resetting with history", where, ""}, static_cast<double>(peak), 65536,
                 {0, " KiB"});
    PrintLimited({"history of an object", where, ""}, Kibibytes(file) * 1024 / static_cast<double>(objects),
                 60, {1, " bytes"});
}

}  // namespace

int main(int argc, char** argv) {
    permora::bench::Begin(argc, argv);
    {
        const permora::test::TemporaryFolder folder;
        const std::string top = folder.Path("tree");
        const std::size_t objects = Scaled(100'000);
        const std::string where = "local disk, " + std::to_string(objects) + " objects";
        if (Check(MakeSampleTree(top, objects), "cannot make the tree")) {
            Compare("resetting a tree, with history", where, top, ResetOf(objects, "security.NTACL"), {1.3},
                    Runs(5));
            Compare("giving a tree to a user, with history", where, top, OwnersOf(objects), {1.3}, Runs(5));
        }
    }
    if (const std::string reason = permora::test::NtfsVolume::SkipReason(); Check(reason.empty(), reason)) {
        const permora::test::NtfsVolume volume(std::uint64_t{256} << 20);
        const std::size_t objects = Scaled(10'000);
        const std::string top = volume.Path("tree");
        if (Check(volume.Problem().empty(), volume.Problem()) &&
            Check(MakeSampleTree(top, objects), "cannot make the tree"))
            Compare("resetting a tree, with history", "NTFS, " + std::to_string(objects) + " objects", top,
                    ResetOf(objects, "system.ntfs_acl"), {1.15}, Runs(5));
    }
    const permora::test::TemporaryFolder folder;
    const std::size_t objects = Scaled(1'000'000);
    if (Check(MakeSampleTree(folder.Path("tree"), objects), "cannot make the tree"))
        MeasureMemory(folder.Path("tree"), objects);
    return permora::bench::ExitCode();
}
