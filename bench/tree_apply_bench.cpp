// What it costs to reset every object below a folder, against a plain loop that reads and writes the same
// attributes; with and without the dialog that shows each name. Prints rows of the table in
// README.md.
#include <sys/xattr.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "bench/sample_tree.h"
#include "framework/qt/application.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "platform/host_path.h"
#include "security/apply_dialog.h"
#include "security/dacl_builder.h"
#include "security/object_security.h"
#include "tests/support/access_lists.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/temporary_folder.h"

namespace {

using permora::bench::Check;
using permora::bench::Median;
using permora::bench::PeakKibibytesOf;
using permora::bench::PrintLimited;
using permora::bench::PrintRatio;
using permora::bench::Runs;
using permora::bench::Scaled;
using permora::bench::SecondsFor;
using permora::bench::SilentObserver;

void ResetAndCount(const std::string& top, permora::TreeCounts& counts) {
    SilentObserver observer;
    permora::UniqueLocal<ACL> list;
    Check(permora::MakeEmptyList(list).IsDone(), "no list");
    const DWORD error = permora::test::Held(top).SetListsBelow(list.get(), permora::TreeListMode::kWrite,
                                                               permora::Unrecorded(), observer, counts);
    Check(error == ERROR_SUCCESS, "the walk failed");
}

void Reset(const std::string& top, std::size_t objects) {
    permora::TreeCounts counts;
    ResetAndCount(top, counts);
    Check(counts.changed == objects, "not every object was changed");
}

void ResetBehindDialog(const std::string& top) {
    const std::string path = permora::PathFromArgument(top.c_str());
    const std::array<permora::RememberedObject, 1> items = {permora::RememberedObject(nullptr, path)};
    const auto places = permora::PlacesOf(items, permora::Contents::kToo);
    permora::ChangeResults results;
    permora::ApplyDlg dialog(nullptr, permora::Unrecorded(), results);
    dialog.items = items;
    dialog.places = places;
    Check(dialog.DoModal() == IDOK && results.Count(permora::ResultState::kFailed) == 0, "the dialog failed");
}

// The folder's list on the disk, so that it can be changed without the objects below.
std::vector<std::uint8_t> StoredList(const std::string& top, const char* attribute, const char* sddl) {
    Check(permora::test::SetDescriptorText(top, sddl) == ERROR_SUCCESS, "setting the list failed");
    std::vector<std::uint8_t> value(4096);
    const ssize_t size = getxattr(top.c_str(), attribute, value.data(), value.size());
    Check(size > 0, "the list was not stored");
    value.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return value;
}

struct Seconds {
    double ours = 0;
    double plain = 0;
};

// Runs both by turns, so that other load affects both. Returns the medians.
Seconds CompareWithLoop(const char* place, const std::string& top, std::size_t objects, const char* attribute,
                        int runs) {
    if (!Check(permora::bench::MakeSampleTree(top, objects), "cannot make the tree")) return {};
    const std::array<std::vector<std::uint8_t>, 2> lists = {
        StoredList(top, attribute, "D:P(A;OICI;FA;;;BA)(A;OICI;FR;;;BU)"),
        StoredList(top, attribute, "D:P(A;OICI;FA;;;BA)(A;OICI;FR;;;BU)(A;OICI;0x1200a9;;;WD)")};
    const auto setTop = [&](const std::vector<std::uint8_t>& list) {
        Check(setxattr(top.c_str(), attribute, list.data(), list.size(), 0) == 0, "cannot change the folder");
    };
    const auto loop = [&] {
        Check(permora::bench::RewriteAttributes(top, attribute) == objects + 1, "the loop missed objects");
    };
    std::vector<double> ours;
    std::vector<double> withDialog;
    std::vector<double> plain;
    for (int run = 0; run < runs; ++run) {
        // The loop changes a byte and changes it back, so that our side finds its own bytes.
        plain.push_back(SecondsFor(loop));
        loop();
        setTop(lists.front());
        ours.push_back(SecondsFor([&] { Reset(top, objects); }));
        setTop(lists.back());
        withDialog.push_back(SecondsFor([&] { ResetBehindDialog(top); }));
        // The dialog returns no counts, so the check is that nothing is left to do.
        permora::TreeCounts left;
        ResetAndCount(top, left);
        Check(left.unchanged == objects, "the dialog left objects as they were");
    }
    setTop(lists.front());
    const std::size_t peak = PeakKibibytesOf([&] { Reset(top, objects); });
    const std::string where = place + (", " + std::to_string(objects)) + " objects";
    PrintRatio({"resetting a tree", where, "plain loop"}, ours, plain, 2.5);
    PrintRatio({"resetting a tree, with the dialog", where, "plain loop"}, withDialog, plain, 2.5);
    PrintLimited({"memory for it", where, ""}, static_cast<double>(peak), 1024, {0, " KiB"});
    return {Median(ours), Median(plain)};
}

}  // namespace

int main(int argc, char** argv) {
    permora::bench::Begin(argc, argv);
    // A display is not needed.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const permora::QtApplication application(argc, argv);
    {
        const permora::test::TemporaryFolder folder;
        constexpr const char* kPlace = "local disk";
        constexpr const char* kAttribute = "security.NTACL";
        const Seconds small =
            CompareWithLoop(kPlace, folder.Path("small"), Scaled(10'000), kAttribute, Runs(5));
        const Seconds large =
            CompareWithLoop(kPlace, folder.Path("large"), Scaled(100'000), kAttribute, Runs(3));
        PrintRatio({"resetting, ten times the objects", kPlace, "plain loop"}, large.ours / small.ours,
                   large.plain / small.plain, 1.15, {2, " times as long"});
    }
    if (const std::string reason = permora::test::NtfsVolume::SkipReason(); Check(reason.empty(), reason)) {
        const permora::test::NtfsVolume volume(std::uint64_t{256} << 20);
        if (Check(volume.Problem().empty(), volume.Problem()))
            CompareWithLoop("NTFS", volume.Path("tree"), Scaled(10'000), "system.ntfs_acl", Runs(5));
    }
    return permora::bench::ExitCode();
}
