// What it costs to copy files with the shell's file operations. Prints rows of the table in README.md.
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
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

// Both by turns, so that what else the machine does falls on both; what was written is on the disk before the
// next one begins.
void Compare(const char* way, const std::string& what, const std::function<void(const std::string&)>& make,
             const std::string& from, const std::string& to) {
    const std::string source = from + "/source";
    const std::string target = to + "/target";
    std::filesystem::create_directory(source);
    make(source);
    std::vector<double> ours;
    std::vector<double> peers;
    const auto measure = [&](std::vector<double>& seconds, auto copy) {
        sync();
        seconds.push_back(SecondsFor([&] { copy(source, target); }));
        std::filesystem::remove_all(target);
    };
    for (int run = 0; run < Runs(5); ++run) {
        measure(ours, CopyWithOurs);
        measure(peers, CopyWithPeer);
    }
    std::filesystem::remove_all(source);
    permora::bench::PrintRatio({"copying " + what, way, "`cp -a`"}, ours, peers, 1.3);
}

void CompareAll(const char* way, const std::string& from, const std::string& to) {
    Compare(way, std::to_string(Scaled(256)) + " MiB", MakeBigFile, from, to);
    Compare(way, std::to_string(Scaled(5'000)) + " x 4 KiB", MakeSmallFiles, from, to);
    Compare(way, "5 GiB, sparse", MakeSparseFile, from, to);
}

}  // namespace

int main(int argc, char** argv) {
    permora::bench::Begin(argc, argv);
    const TemporaryFolder folder;
    CompareAll("local disk", folder.Path(), folder.Path());
    if (const std::string reason = NtfsVolume::SkipReason(); Check(reason.empty(), reason)) {
        const NtfsVolume volume(std::uint64_t{2} << 30);
        if (Check(volume.Problem().empty(), volume.Problem())) {
            CompareAll("local disk to NTFS", folder.Path(), volume.Root());
            CompareAll("NTFS to local disk", volume.Root(), folder.Path());
        }
    }
    return permora::bench::ExitCode();
}
