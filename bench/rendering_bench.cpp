// What it costs to read the access lists of many objects and to put them into rows. Prints rows of the table
// in README.md.
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "bench/sample_tree.h"
#include "platform/api/errors.h"
#include "platform/held_object.h"
#include "platform/raw_security.h"
#include "security/access_entry_list.h"
#include "security/access_rows.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/temporary_folder.h"

namespace {

using permora::bench::Check;
using permora::bench::MakeSampleTree;
using permora::bench::Runs;
using permora::bench::SampleTreePaths;
using permora::bench::Scaled;
using permora::bench::SecondsFor;
using permora::test::NtfsVolume;
using permora::test::TemporaryFolder;

constexpr std::size_t kObjects = 10'000;

// A folder of the sample and the names in it. For both sides, each folder becomes the current directory and
// its objects are named without it.
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
    std::array<char, 4096> value;
    return lgetxattr(name.c_str(), attribute, value.data(), value.size()) > 0 ? 1 : 0;
}

// Returns the number of rows.
std::size_t ReadAndRender(const std::string& name) {
    permora::HeldObject object;
    permora::ReadParts parts;
    if (permora::HeldObject::Hold(name, object) != ERROR_SUCCESS ||
        object.ReadSecurity(DACL_SECURITY_INFORMATION, parts) != ERROR_SUCCESS) {
        return 0;
    }
    permora::AccessEntryList list(permora::AcesOf(parts.dacl));
    return permora::AccessRowsOf(list, permora::AccountDisplayName).size();
}

// The sum of the results of `work` for each object, in its folder.
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

void Compare(const char* place, const std::string& top, const char* attribute) {
    constexpr std::size_t kRowsOfAnObject = 2;
    const std::size_t objects = Scaled(kObjects);
    if (!Check(MakeSampleTree(top, objects), "cannot make the tree")) return;
    const std::vector<NamedFolder> folders = FoldersOf(SampleTreePaths(top, objects));
    std::vector<double> ours;
    std::vector<double> raw;
    const int runs = Runs(7);
    std::size_t attributes = 0;
    std::size_t rows = 0;
    for (int run = 0; run < runs; ++run) {
        raw.push_back(SecondsFor([&] {
            attributes += SumOver(folders, [&](const std::string& name) { return ReadRaw(name, attribute); });
        }));
        ours.push_back(SecondsFor([&] { rows += SumOver(folders, ReadAndRender); }));
    }
    const std::size_t reads = static_cast<std::size_t>(runs) * objects;
    Check(attributes == reads, "attributes are missing");
    Check(rows == reads * kRowsOfAnObject, "rows are missing");
    Check(chdir("/") == 0, "cannot leave the volume, which is to be unmounted");
    permora::bench::PrintRatio({"reading and rendering lists",
                                place + (", " + std::to_string(objects)) + " objects", "`lgetxattr` alone"},
                               ours, raw, 3);
}

void CompareOnNtfs() {
    if (const std::string reason = NtfsVolume::SkipReason(); !Check(reason.empty(), reason)) return;
    const NtfsVolume volume(std::uint64_t{256} << 20);
    if (!Check(volume.Problem().empty(), volume.Problem())) return;
    Compare("NTFS", volume.Path("tree"), "system.ntfs_acl");
}

}  // namespace

int main(int argc, char** argv) {
    permora::bench::Begin(argc, argv);
    const TemporaryFolder folder;
    Compare("local disk", folder.Path("tree"), "security.NTACL");
    CompareOnNtfs();
    return permora::bench::ExitCode();
}
