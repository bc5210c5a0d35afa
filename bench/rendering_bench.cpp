// What it costs to read the access lists of many objects and to put them into rows. Prints the rows of the
// second table in README.md.
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "bench/sample_tree.h"
#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/resources.h"
#include "security/access_entry_list.h"
#include "security/access_rows.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/temporary_folder.h"

namespace {

using permora::bench::Check;
using permora::bench::MakeSampleTree;
using permora::bench::Median;
using permora::bench::SampleTreePaths;
using permora::bench::SecondsFor;
using permora::test::NtfsVolume;
using permora::test::TemporaryFolder;

constexpr int kRuns = 7;
constexpr std::size_t kObjects = 10'000;

// The folders of the sample with the names in them, as the program is given them: each folder becomes the
// current directory and its objects are named without it. The raw loop is given the same.
struct NamedFolder {
    std::string path;
    std::vector<std::string> names;
};

std::vector<NamedFolder> FoldersOf(const std::vector<std::string>& hostPaths) {
    std::vector<NamedFolder> folders;
    for (const std::string& path : hostPaths) {
        const std::size_t slash = path.rfind('/');
        std::string folder = path.substr(0, slash);
        if (folders.empty() || folders.back().path != folder) folders.push_back({folder, {}});
        folders.back().names.push_back(path.substr(slash + 1));
    }
    return folders;
}

std::size_t ReadRaw(const std::string& name, const char* attribute) {
    std::array<char, 65536> value;
    return lgetxattr(name.c_str(), attribute, value.data(), value.size()) > 0 ? 1 : 0;
}

// Returns how many rows there are.
std::size_t ReadAndRender(const std::string& name) {
    PACL dacl = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const DWORD error = GetNamedSecurityInfoA(name.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION,
                                              nullptr, nullptr, &dacl, nullptr, &descriptor);
    if (error != ERROR_SUCCESS) return 0;
    const permora::UniqueLocal<void> block(descriptor);
    permora::AccessEntryList list;
    list.LoadFromDacl(dacl);
    return permora::AccessRowsOf(list).size();
}

// The sum of what `work` gives for each object, in its folder.
template <typename Work>
std::size_t SumOver(const std::vector<NamedFolder>& folders, const Work& work) {
    std::size_t sum = 0;
    for (const NamedFolder& folder : folders) {
        if (!Check(chdir(folder.path.c_str()) == 0, "cannot enter a folder")) continue;
        for (const std::string& name : folder.names)
            sum += work(name);
    }
    return sum;
}

void Compare(const char* what, const std::string& top, const char* attribute) {
    constexpr std::size_t kRowsOfAnObject = 2;
    if (!Check(MakeSampleTree(top, kObjects), "cannot make the tree")) return;
    const std::vector<NamedFolder> folders = FoldersOf(SampleTreePaths(top, kObjects));
    std::vector<double> ours;
    std::vector<double> raw;
    std::size_t attributes = 0;
    std::size_t rows = 0;
    for (int run = 0; run < kRuns; ++run) {
        raw.push_back(SecondsFor([&] {
            attributes += SumOver(folders, [&](const std::string& name) { return ReadRaw(name, attribute); });
        }));
        ours.push_back(SecondsFor([&] { rows += SumOver(folders, ReadAndRender); }));
    }
    Check(attributes == kRuns * kObjects, "attributes are missing");
    Check(rows == kRuns * kObjects * kRowsOfAnObject, "rows are missing");
    Check(chdir("/") == 0, "cannot leave the volume, which is to be unmounted");
    std::printf("| %s | %zu | %.3f s | %.3f s | %.2f |\n", what, kObjects, Median(ours), Median(raw),
                Median(ours) / Median(raw));
    std::fflush(stdout);
}

void CompareOnNtfs() {
    if (const std::string reason = NtfsVolume::SkipReason(); !Check(reason.empty(), reason)) return;
    const NtfsVolume volume(std::uint64_t{256} << 20);
    if (!Check(volume.Problem().empty(), volume.Problem())) return;
    Compare("NTFS", volume.Path("tree"), "system.ntfs_acl");
}

}  // namespace

int main() {
    std::printf("| where | objects | read and rendered | raw attributes read | ratio |\n");
    std::printf("|---|---|---|---|---|\n");
    const TemporaryFolder folder;
    Compare("local disk", folder.Path("tree"), "security.NTACL");
    CompareOnNtfs();
    return permora::bench::ExitCode();
}
