// What it costs to delete files for good. Prints rows of the table in README.md.
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "deletion/secure_delete.h"
#include "tests/support/command.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/temporary_folder.h"

namespace {

using permora::bench::Check;
using permora::bench::Runs;
using permora::bench::Scaled;
using permora::bench::SecondsFor;
using permora::test::NtfsVolume;
using permora::test::RunCommand;
using permora::test::TemporaryFolder;

class Deletion : public permora::SecureDeleteHost {
  public:
    Deletion() : SecureDeleteHost(stop) {}
    void Failed(const permora::Outcome& failure) override {
        Check(false, failure.object + ": error " + std::to_string(failure.code));
    }
    // As the terminal program does without --force: each file is examined.
    permora::FileScrutiny Scrutiny() const override { return permora::FileScrutiny::kObstacles; }
    bool MayOverwrite(const std::string& name,
                      const std::vector<permora::OverwriteObstacle>& /*obstacles*/) override {
        return Check(false, name + ": refused");
    }

  private:
    std::atomic<bool> stop = false;
};

// Files of `bytes` bytes each in a new folder, all of it on the disk.
void MakeFiles(const std::string& top, std::size_t count, std::size_t bytes) {
    std::filesystem::create_directory(top);
    const std::string contents(bytes, 'x');
    for (std::size_t i = 0; i < count; ++i)
        std::ofstream(top + "/" + std::to_string(i), std::ios::binary) << contents;
    sync();
}

void DeleteWithOurs(const std::string& top) {
    const std::filesystem::path path(top);
    std::filesystem::current_path(path.parent_path());
    Deletion host;
    const auto folder = std::make_shared<permora::FolderHandle>();
    if (Check(permora::FolderHandle::Open(".", *folder) == 0, "the folder cannot be opened"))
        permora::SecureDeleteItem(host, permora::RememberedObject(folder, path.filename().string()));
    host.seclusion.End();
    std::filesystem::current_path("/");
}

void DeleteWithPeer(const std::string& top) {
    const auto result =
        RunCommand({"find", top, "-type", "f", "-exec", "shred", "-n", "0", "-z", "-u", "{}", "+"});
    Check(result.exitCode == 0, result.output);
    std::filesystem::remove_all(top);
}

// Runs both by turns, so that other load affects both.
void Compare(const char* place, const std::string& top, std::size_t count, std::size_t bytes) {
    std::vector<double> ours;
    std::vector<double> peers;
    for (int run = 0; run < Runs(5); ++run) {
        MakeFiles(top, count, bytes);
        ours.push_back(SecondsFor([&] { DeleteWithOurs(top); }));
        Check(!std::filesystem::exists(top), "something was left");
        MakeFiles(top, count, bytes);
        peers.push_back(SecondsFor([&] { DeleteWithPeer(top); }));
    }
    const std::string files = std::to_string(count) + " x " + std::to_string(bytes >> 10) + " KiB";
    permora::bench::PrintRatio({"deleting for good, " + files, place, "`shred -n 0 -z -u`"}, ours, peers, 1);
}

void CompareBoth(const char* place, const std::string& top) {
    Compare(place, top, 1, Scaled(256) << 20);
    Compare(place, top, Scaled(2'000), std::size_t{4} << 10);
}

}  // namespace

int main(int argc, char** argv) {
    permora::bench::Begin(argc, argv);
    if (const std::string reason = permora::test::MissingProgram("shred"); !Check(reason.empty(), reason))
        return permora::bench::ExitCode();
    {
        const TemporaryFolder folder;
        CompareBoth("local disk", folder.Path("files"));
    }
    if (const std::string reason = NtfsVolume::SkipReason(); Check(reason.empty(), reason)) {
        const NtfsVolume volume(std::uint64_t{1} << 30);
        if (Check(volume.Problem().empty(), volume.Problem())) CompareBoth("NTFS", volume.Path("files"));
    }
    return permora::bench::ExitCode();
}
