// What it costs to save the lists of a tree as text and to compare it with them, against reading the same
// attributes in a plain loop and against getfattr. Prints rows of the table in README.md.
#include <cstdint>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "bench/sample_tree.h"
#include "platform/api/errors.h"
#include "platform/sequential_file.h"
#include "saved/saved_list_reader.h"
#include "saved/tree_comparison.h"
#include "saved/tree_saving.h"
#include "tests/support/access_lists.h"
#include "tests/support/command.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/temporary_folder.h"

namespace {

using permora::bench::Check;
using permora::bench::MakeSampleTree;
using permora::bench::PrintRatio;
using permora::bench::Runs;
using permora::bench::Scaled;
using permora::bench::SecondsFor;

class FileOutput : public permora::SavedOutput {
  public:
    explicit FileOutput(permora::FileReplacement& replacement) : file(replacement) {}
    DWORD Write(std::string_view bytes) override { return file.Write(bytes); }

  private:
    permora::FileReplacement& file;
};

class Nothing : public permora::SavingObserver, public permora::ComparisonObserver {
  public:
    bool Begin(std::string_view /*path*/) override { return true; }
    void PassOver(std::string_view path, permora::SavedKind /*kind*/, DWORD /*error*/) override {
        Check(false, "passed over " + std::string(path));
    }
    void Differ(const permora::TreeDifference& difference) override {
        Check(false, "different: " + std::string(difference.path));
    }
};

// The drive's path of a host path below the root.
std::string SystemPath(std::string hostPath) {
    for (char& character : hostPath)
        if (character == '/') character = '\\';
    return "C:" + hostPath;
}

void Save(const std::string& top, const std::string& text) {
    const permora::HeldObject held = permora::test::Held(top);
    const SECURITY_INFORMATION parts = permora::ReadableParts(held);
    permora::FileReplacement file;
    Check(permora::FileReplacement::Begin(SystemPath(text), file) == ERROR_SUCCESS, "cannot make the text");
    FileOutput output(file);
    const auto writer = permora::SavedListWriter::Make(permora::SavedForm::kPermora, output);
    Nothing observer;
    const bool isSaved =
        writer->Begin({permora::SavedForm::kPermora, "2026-11-26T08:02:11Z", parts}) == ERROR_SUCCESS &&
        writer->BeginTop({"C:\\tree", "bench"}) == ERROR_SUCCESS &&
        permora::SaveTree(held, parts, *writer, observer) == ERROR_SUCCESS &&
        writer->End() == ERROR_SUCCESS && file.Complete() == ERROR_SUCCESS;
    Check(isSaved, "cannot save");
}

// Reads the text twice, as the command does.
void Compare(const std::string& text, const std::string& top) {
    const permora::HeldObject held = permora::test::Held(top);
    permora::SavedFileInput input;
    Check(permora::SavedFileInput::Open(SystemPath(text), input) == ERROR_SUCCESS, "cannot open the text");
    Nothing observer;
    for (const bool isCompared : {false, true}) {
        permora::SavedFault fault;
        const auto reader = permora::SavedListReader::Open(input, fault);
        if (!Check(reader != nullptr, fault.reason)) return;
        permora::TreeComparison comparison(reader->Head().parts, held, reader->Head().parts, observer);
        permora::SavedObject object;
        while (reader->Next(object, fault))
            if (isCompared) comparison.Take({object.path, object.kind, object.descriptor->bytes});
        if (isCompared) comparison.End();
        Check(fault.reason.empty(), fault.reason);
        Check(input.Rewind() == ERROR_SUCCESS, "cannot rewind");
    }
}

void Measure(const char* place, const std::string& top, const std::string& text, std::size_t objects,
             const char* attribute) {
    std::vector<double> saves;
    std::vector<double> compares;
    std::vector<double> loops;
    std::vector<double> peers;
    const std::string peer = std::string("getfattr -R -P -e hex -n ") + attribute + " '" + top + "' >'" +
                             text + ".peer' 2>/dev/null";
    for (int run = 0; run < Runs(5); ++run) {
        loops.push_back(SecondsFor([&] {
            Check(permora::bench::ReadAttributes(top, attribute) == objects + 1, "the loop missed objects");
        }));
        saves.push_back(SecondsFor([&] { Save(top, text); }));
        compares.push_back(SecondsFor([&] { Compare(text, top); }));
        peers.push_back(SecondsFor([&] {
            Check(permora::test::RunCommand({"sh", "-c", peer}).exitCode == 0, "getfattr failed");
        }));
    }
    const std::string where = place + (", " + std::to_string(objects)) + " objects";
    PrintRatio({"saving lists", where, "`lgetxattr` alone"}, saves, loops, 2);
    PrintRatio({"saving lists", where, "`getfattr -R`"}, saves, peers, 1);
    PrintRatio({"comparing with saved lists", where, "`lgetxattr` alone"}, compares, loops, 2);
    PrintRatio({"comparing with saved lists", where, "`getfattr -R`"}, compares, peers, 1);
    permora::bench::PrintLimited(
        {"memory for saving", where, ""},
        static_cast<double>(permora::bench::PeakKibibytesOf([&] { Save(top, text); })), 4096, {0, " KiB"});
}

}  // namespace

int main(int argc, char** argv) {
    permora::bench::Begin(argc, argv);
    {
        const permora::test::TemporaryFolder folder;
        const std::size_t objects = Scaled(100'000);
        if (Check(MakeSampleTree(folder.Path("tree"), objects), "cannot make the tree"))
            Measure("local disk", folder.Path("tree"), folder.Path("text"), objects, "security.NTACL");
    }
    if (const std::string reason = permora::test::NtfsVolume::SkipReason(); Check(reason.empty(), reason)) {
        const permora::test::NtfsVolume volume(std::uint64_t{256} << 20);
        const permora::test::TemporaryFolder folder;
        const std::size_t objects = Scaled(10'000);
        if (Check(volume.Problem().empty(), volume.Problem()) &&
            Check(MakeSampleTree(volume.Path("tree"), objects), "cannot make the tree"))
            Measure("NTFS", volume.Path("tree"), folder.Path("text"), objects, "system.ntfs_acl");
    }
    return permora::bench::ExitCode();
}
