// What the changes of whole trees cost as users run them: the terminal program, from its start to its end,
// against a plain loop of the same raw calls. Prints rows of the table in README.md.
#include <sys/xattr.h>

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "bench/sample_tree.h"
#include "platform/api/errors.h"
#include "tests/support/access_lists.h"
#include "tests/support/command.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/temporary_folder.h"

namespace {

using permora::bench::Check;
using permora::bench::Runs;
using permora::bench::Scaled;
using permora::bench::SecondsFor;
using permora::test::RunCommand;

void RunProgram(const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {PERMORA_CLI};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const permora::test::CommandResult result = RunCommand(command);
    Check(result.exitCode == 0, result.output);
}

struct Tree {
    const char* place;
    std::string top;
    std::size_t objects;
    const char* attribute;
    int runs;
    double goal;
};

// `change` must change every object, whatever the run before it has left. Runs both by turns, so that other
// load affects both.
void CompareWithLoop(const std::string& what, const Tree& tree, const std::function<void(int run)>& prepare,
                     const std::function<void(int run)>& change) {
    const auto loop = [&] {
        Check(permora::bench::RewriteAttributes(tree.top, tree.attribute) == tree.objects + 1,
              "the loop missed objects");
    };
    std::vector<double> ours;
    std::vector<double> plain;
    for (int run = 0; run < tree.runs; ++run) {
        // The loop changes a byte and changes it back, so that our side finds its own bytes.
        plain.push_back(SecondsFor(loop));
        loop();
        prepare(run);
        ours.push_back(SecondsFor([&] { change(run); }));
    }
    permora::bench::PrintRatio(
        {what, tree.place + (", " + std::to_string(tree.objects)) + " objects", "plain loop"}, ours, plain,
        tree.goal);
}

// The top's list on the disk, so that it can be changed without the objects below.
std::vector<char> StoredList(const Tree& tree, const char* sddl) {
    Check(permora::test::SetDescriptorText(tree.top, sddl) == ERROR_SUCCESS, "setting the list failed");
    std::vector<char> value(4096);
    const ssize_t size = getxattr(tree.top.c_str(), tree.attribute, value.data(), value.size());
    Check(size > 0, "the list was not stored");
    value.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return value;
}

void CompareCommands(const Tree& tree) {
    if (!Check(permora::bench::MakeSampleTree(tree.top, tree.objects), "cannot make the tree")) return;
    const auto nothing = [](int) {};
    CompareWithLoop("`permora-cli grant` and `revoke`", tree, nothing, [&](int run) {
        if (run % 2 == 0)
            RunProgram({"grant", "--no-history", "--account", "S-1-1-0", "--rights", "0x1200a9", tree.top});
        else
            RunProgram({"revoke", "--no-history", "--account", "S-1-1-0", tree.top});
    });
    CompareWithLoop("`permora-cli owner --tree`", tree, nothing, [&](int run) {
        const char* owner = run % 2 == 0 ? "S-1-5-32-546" : "S-1-5-32-545";
        RunProgram({"owner", "--no-history", "--tree", "--set", owner, tree.top});
    });
    const std::array<std::vector<char>, 2> lists = {
        StoredList(tree, "D:P(A;OICI;FA;;;BA)(A;OICI;FR;;;BU)"),
        StoredList(tree, "D:P(A;OICI;FA;;;BA)(A;OICI;FR;;;BU)(A;OICI;0x1200a9;;;WD)")};
    const auto setTop = [&](int run) {
        const std::vector<char>& list = lists[static_cast<std::size_t>(run) % 2];
        Check(setxattr(tree.top.c_str(), tree.attribute, list.data(), list.size(), XATTR_REPLACE) == 0,
              "the top's list was not written");
    };
    CompareWithLoop("`permora-cli reset`", tree, setTop, [&](int) {
        RunProgram({"reset", "--no-history", "--yes", "--quiet", tree.top});
    });
}

}  // namespace

int main(int argc, char** argv) {
    permora::bench::Begin(argc, argv);
    {
        const permora::test::TemporaryFolder folder;
        CompareCommands({"local disk", folder.Path("tree"), Scaled(100'000), "security.NTACL", Runs(5), 1});
    }
    if (const std::string reason = permora::test::NtfsVolume::SkipReason(); Check(reason.empty(), reason)) {
        const permora::test::NtfsVolume volume(std::uint64_t{256} << 20);
        if (Check(volume.Problem().empty(), volume.Problem()))
            CompareCommands({"NTFS", volume.Path("tree"), Scaled(10'000), "system.ntfs_acl", Runs(5), 1.1});
    }
    return permora::bench::ExitCode();
}
