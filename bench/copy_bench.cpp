// What it costs to copy files with the shell's file operations. Prints rows of the table in README.md.
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "platform/api/shell.h"
#include "platform/host_path.h"
#include "platform/linux/base/unique_fd.h"
#include "tests/support/command.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/temporary_folder.h"

namespace {

using permora::bench::Check;
using permora::bench::Runs;
using permora::bench::Scaled;
using permora::bench::SecondsFor;
using permora::host::UniqueFd;
using permora::test::NtfsVolume;
using permora::test::RunCommand;
using permora::test::TemporaryFolder;

constexpr off_t kMebibyte = off_t{1} << 20;

void MakeBigFile(const std::string& folder) {
    const std::string contents(static_cast<std::size_t>(kMebibyte), 'x');
    std::ofstream file(folder + "/big", std::ios::binary);
    for (std::size_t i = 0; i < Scaled(256); ++i)
        file << contents;
}

void MakeSmallFiles(const std::string& folder) {
    const std::string contents(4096, 'x');
    for (std::size_t i = 0; i < Scaled(5'000); ++i)
        std::ofstream(folder + "/" + std::to_string(i), std::ios::binary) << contents;
}

// 5 GiB, of which 16 MiB are data.
void MakeSparseFile(const std::string& folder) {
    const std::string contents(static_cast<std::size_t>(kMebibyte), 'x');
    const UniqueFd file(open((folder + "/sparse").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
    Check(ftruncate(file.Get(), 5120 * kMebibyte) == 0, "the sparse file cannot be made");
    for (int i = 0; i < 16; ++i)
        Check(pwrite(file.Get(), contents.data(), contents.size(), i * 320 * kMebibyte) == kMebibyte,
              "the sparse file cannot be filled");
}

std::string AsList(const std::string& hostPath) {
    return permora::PathFromArgument(hostPath.c_str()) + '\0';
}

void CopyWithOurs(const std::string& source, const std::string& target) {
    std::filesystem::create_directory(target);
    const std::string from = AsList(source);
    const std::string to = AsList(target);
    SHFILEOPSTRUCTA operation{};
    operation.wFunc = FO_COPY;
    operation.pFrom = from.c_str();
    operation.pTo = to.c_str();
    operation.fFlags = FOF_ALLOWUNDO;
    const int result = SHFileOperationA(&operation);
    Check(result == 0 && operation.fAnyOperationsAborted == FALSE, "error " + std::to_string(result));
}

void CopyWithPeer(const std::string& source, const std::string& target) {
    std::filesystem::create_directory(target);
    const auto result = RunCommand({"cp", "-a", source, target});
    Check(result.exitCode == 0, result.output);
}

struct Sample {
    std::string what;
    void (*make)(const std::string& folder);
};

// From where to where. Each copy gets an empty folder, as if it were the first one.
struct Way {
    const char* name;
    std::string from;
    std::function<std::string()> newPlace;
};

// Runs both by turns and lets each begin by turns, after a run that does not count. Earlier writes are on the
// disk when a run begins.
void Compare(const Way& way, const Sample& sample) {
    const std::string source = way.from + "/" + sample.what;
    std::filesystem::create_directory(source);
    sample.make(source);
    const auto secondsFor = [&](auto copy) {
        const std::string target = way.newPlace() + "/target";
        sync();
        const double seconds = SecondsFor([&] { copy(source, target); });
        // Many files stay until the end: for each new file, a disk without a journal looks through all that
        // were just deleted, and the next run would take twice as long.
        if (sample.make != MakeSmallFiles) std::filesystem::remove_all(target);
        return seconds;
    };
    secondsFor(CopyWithPeer);
    std::vector<double> ours;
    std::vector<double> peers;
    for (int run = 0; run < Runs(5); ++run) {
        if (run % 2 == 0) ours.push_back(secondsFor(CopyWithOurs));
        peers.push_back(secondsFor(CopyWithPeer));
        if (run % 2 != 0) ours.push_back(secondsFor(CopyWithOurs));
    }
    permora::bench::PrintRatio({"copying " + sample.what, way.name, "`cp -a`"}, ours, peers, 1.3);
}

void CompareAll(const Way& way) {
    Compare(way, {std::to_string(Scaled(256)) + " MiB", MakeBigFile});
    Compare(way, {std::to_string(Scaled(5'000)) + " x 4 KiB", MakeSmallFiles});
    Compare(way, {"5 GiB, sparse", MakeSparseFile});
}

void CompareWithNtfs(const TemporaryFolder& local, const std::function<std::string()>& newLocalPlace) {
    // Each run gets a new driver, since a driver caches contents and free space.
    std::optional<NtfsVolume> target;
    CompareAll({"local disk to NTFS", local.MakeFolder("sources"), [&] {
                    target.emplace(std::uint64_t{2} << 30);
                    Check(target->Problem().empty(), target->Problem());
                    return target->Root();
                }});
    target.reset();
    NtfsVolume source(std::uint64_t{2} << 30);
    if (!Check(source.Problem().empty(), source.Problem())) return;
    CompareAll({"NTFS to local disk", source.Root(), [&] {
                    source.Mount();
                    Check(source.Problem().empty(), source.Problem());
                    return newLocalPlace();
                }});
}

}  // namespace

int main(int argc, char** argv) {
    permora::bench::Begin(argc, argv);
    const TemporaryFolder folder;
    int places = 0;
    const auto newLocalPlace = [&] { return folder.MakeFolder(std::to_string(places++)); };
    CompareAll({"local disk", folder.Path(), newLocalPlace});
    if (const std::string reason = NtfsVolume::SkipReason(); Check(reason.empty(), reason))
        CompareWithNtfs(folder, newLocalPlace);
    return permora::bench::ExitCode();
}
