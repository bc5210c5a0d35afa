// Putting saved lists back, on real volumes.
#include "saved/restore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "history/undo.h"
#include "platform/api/errors.h"
#include "platform/host_path.h"
#include "platform/nt/sddl.h"
#include "platform/security_change.h"
#include "saved/saved_list_writer.h"
#include "saved/saved_path.h"
#include "saved/tree_comparison.h"
#include "tests/saved/memory_texts.h"
#include "tests/support/access_lists.h"
#include "tests/support/command.h"
#include "tests/support/kept_files.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/own_mounts.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr SECURITY_INFORMATION kAll = 15;

std::string Joined(const std::string& root, std::string path) {
    std::ranges::replace(path, '\\', '/');
    return path.empty() ? root : root + '/' + path;
}

// Everything in a tree in the order of saved texts, the top as an empty path.
std::vector<std::string> PathsIn(const std::string& root) {
    std::vector<std::string> paths = {""};
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        paths.push_back(entry.path().lexically_relative(root).string());
        std::ranges::replace(paths.back(), '/', '\\');
    }
    std::ranges::sort(paths, ComesBefore);
    return paths;
}

SavedKind KindOf(const std::string& path) {
    const fs::file_status status = fs::symlink_status(path);
    if (fs::is_symlink(status)) return SavedKind::kLink;
    return fs::is_directory(status) ? SavedKind::kFolder : SavedKind::kFile;
}

std::vector<std::uint8_t> Bytes(const std::string& hostPath) {
    ReadParts parts;
    EXPECT_EQ(Held(hostPath).ReadSecurity(kAll, parts), ERROR_SUCCESS) << hostPath;
    const auto* bytes = static_cast<const std::uint8_t*>(parts.descriptor.get());
    return {bytes, bytes + GetSecurityDescriptorLength(parts.descriptor.get())};
}

void WriteFile(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

void Save(const std::string& root, const std::string& file) {
    MemoryOutput output;
    const auto writer = SavedListWriter::Make(SavedForm::kPermora, output);
    ASSERT_EQ(writer->Begin({SavedForm::kPermora, "2026-11-26T08:02:11Z", kAll}), ERROR_SUCCESS);
    ASSERT_EQ(writer->BeginTop({PathFromArgument(root.c_str()), "ext4 1a2b3c4d"}), ERROR_SUCCESS);
    for (const std::string& path : PathsIn(root)) {
        const std::string hostPath = Joined(root, path);
        ASSERT_EQ(writer->Add(path, KindOf(hostPath), Bytes(hostPath)), ERROR_SUCCESS) << path;
    }
    ASSERT_EQ(writer->End(), ERROR_SUCCESS);
    WriteFile(file, output.text);
}

std::vector<std::string> TextsIn(const std::string& root) {
    std::vector<std::string> texts;
    for (const std::string& path : PathsIn(root))
        texts.push_back(path + " " + DescriptorText(Joined(root, path), kAll));
    return texts;
}

// Notes what it is told; looks for the objects below `root`.
class NotingHost : public RestoreHost {
  public:
    explicit NotingHost(std::string top) : root(std::move(top)) {}

    bool FindTop(const SavedTop& /*saved*/, RestoredTop& top) override {
        const std::string path = PathFromArgument(root.c_str());
        const bool isThere = HeldObject::Hold(path, top.object) == ERROR_SUCCESS;
        if (isThere && top.object.IsFolder()) EXPECT_EQ(FolderHandle::Open(path, top.folder), ERROR_SUCCESS);
        return isThere;
    }
    void LeaveSystemLists() override { notes.emplace_back("hidden audits"); }
    bool Begin(const std::string& /*path*/) override { return begun++ != stopAt; }
    void Change(const std::string& path) override { notes.push_back("changed " + path); }
    void Fail(const std::string& path, RestoreFault fault, DWORD error) override {
        constexpr const char* kFaults[] = {"error ",      "other kind ", "not saved ",
                                           "not listed ", "hidden ",     "alike "};
        notes.push_back(kFaults[static_cast<int>(fault)] + path +
                        (error == 0 ? "" : " " + std::to_string(error)));
    }
    void Miss(const std::string& path) override { notes.push_back("missing " + path); }
    void FindExtra(const std::string& path) override { notes.push_back("extra " + path); }
    void FailExtra(const std::string& path, DWORD error) override {
        notes.push_back("unlisted " + path + " " + std::to_string(error));
    }

    std::string root;
    std::vector<std::string> notes;
    std::size_t begun = 0;
    std::size_t stopAt = static_cast<std::size_t>(-1);
};

// Compares a tree as it is with itself as it was read.
class SelfComparison : public TreeVisitor, private ComparisonObserver {
  public:
    SelfComparison(const HeldObject& top, SECURITY_INFORMATION readable)
        : comparison(kAll, top, readable, *this) {}

    bool Visit(const ReadObject& object) override { return comparison.Take(object); }
    std::vector<std::string> End() {
        EXPECT_TRUE(comparison.End());
        return differences;
    }

  private:
    bool Begin(std::string_view /*path*/) override { return true; }
    void Differ(const TreeDifference& difference) override {
        differences.push_back(std::string(difference.path) + " " + std::to_string(difference.error));
    }

    TreeComparison comparison;
    std::vector<std::string> differences;
};

std::string TextOf(const RestoreCounts& counts) {
    return std::to_string(counts.changed) + " changed, " + std::to_string(counts.unchanged) + " so, " +
           std::to_string(counts.failed) + " failed, " + std::to_string(counts.missing) + " missing, " +
           std::to_string(counts.extra) + " extra";
}

class RestoreTest : public testing::Test {
  protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "other owners need root";
        const std::string problem = EnterOwnMounts();
        ASSERT_EQ(problem, "");
    }

    void MakeTree(const std::string& at) {
        root = at;
        fs::create_directories(root + "/a/deep");
        for (const char* name : {"/a/file", "/a/deep/one", "/b", "/a.txt"})
            WriteFile(root + name, "x");
    }
    void SetLists() {
        ASSERT_EQ(SetDescriptorText(root, "O:BAG:BAD:P(A;OICI;FA;;;BA)"), ERROR_SUCCESS);
        ASSERT_EQ(SetDescriptorText(root + "/a", "O:S-1-22-1-7D:(D;CI;FW;;;BG)S:(AU;SA;FA;;;WD)"),
                  ERROR_SUCCESS);
        ASSERT_EQ(SetDescriptorText(root + "/a/file", "D:P"), ERROR_SUCCESS);
        ASSERT_EQ(SetDescriptorText(root + "/b", "O:S-1-5-21-1-2-3-1001D:NO_ACCESS_CONTROL"), ERROR_SUCCESS);
    }
    // Something else for everything.
    void Spoil() {
        for (const std::string& path : PathsIn(root))
            ASSERT_EQ(SetDescriptorText(
                          Joined(root, path),
                          "O:S-1-22-1-9D:P(A;;FR;;;" + std::string(path.size() % 2 == 0 ? "WD" : "BG") + ")"),
                      ERROR_SUCCESS);
    }

    std::unique_ptr<CheckedList> Open() {
        auto list = CheckedList::Open(PathFromArgument(file.c_str()), {}, fault);
        EXPECT_TRUE(list) << fault.line << ": " << fault.reason;
        return list;
    }
    DWORD Restore(NotingHost& host, ChangeRecorder& recorder, RestoreOptions options = {}) {
        const auto list = Open();
        counts = {};
        return list ? RestoreLists(*list, options, host, recorder, counts, fault) : ERROR_INVALID_DATA;
    }
    // Without history.
    std::vector<std::string> Notes(RestoreOptions options = {}) {
        NotingHost host(root);
        NoRecord nothing;
        EXPECT_EQ(Restore(host, nothing, options), ERROR_SUCCESS) << fault.reason;
        return host.notes;
    }

    const TemporaryFolder folder;
    std::string root = folder.Path("tree");
    const std::string file = folder.Path("saved");
    RestoreCounts counts;
    SavedFault fault;
};

TEST_F(RestoreTest, EverythingComesBackAndCanBeTakenBack) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    for (const std::string& place : {folder.Path("tree"), volume.Path("tree")}) {
        SCOPED_TRACE(place);
        MakeTree(place);
        SetLists();
        const auto saved = TextsIn(root);
        Save(root, file);
        Spoil();
        const auto spoilt = TextsIn(root);

        EXPECT_EQ(Notes({.mode = RestoreMode::kDryRun}).size(), 7U);
        EXPECT_EQ(TextsIn(root), spoilt);

        const std::string database = folder.Path("history.db");
        std::unique_ptr<History> history;
        ASSERT_EQ(History::Open(database, history), ERROR_SUCCESS);
        const auto change = history->Begin(ChangeKind::kRestore);
        NotingHost host(root);
        ASSERT_EQ(Restore(host, *change), ERROR_SUCCESS) << fault.reason;
        change->End();
        EXPECT_EQ(TextsIn(root), saved);
        EXPECT_EQ(TextOf(counts), "7 changed, 0 so, 0 failed, 0 missing, 0 extra");
        EXPECT_THAT(Notes(), IsEmpty());
        EXPECT_EQ(TextOf(counts), "0 changed, 7 so, 0 failed, 0 missing, 0 extra");

        class : public UndoObserver {
            bool Begin(const ChangedTop& /*top*/, const std::string& /*path*/) override { return true; }
            void Leave(const ChangedTop& /*top*/, const std::string& path, LeftAlone /*extent*/,
                       DWORD reason) override {
                ADD_FAILURE() << path << " " << reason;
            }
        } observer;
        UndoCounts undone;
        ASSERT_EQ(UndoChange(*history, change->Number(), {}, observer, undone), ERROR_SUCCESS);
        EXPECT_EQ(undone.restored, 7U);
        EXPECT_EQ(TextsIn(root), spoilt);
    }
}

TEST_F(RestoreTest, WhatIsMissingExtraOrAnotherThingIsTold) {
    MakeTree(root);
    fs::create_directories(root + "/gone/below");
    fs::create_directories(root + "/linked");
    WriteFile(root + "/linked/file", "x");
    fs::create_directories(root + "/mounted");
    WriteFile(root + "/turned", "x");
    fs::create_symlink("a", root + "/link");
    SetLists();
    Save(root, file);
    Spoil();
    const std::string outside = folder.MakeFolder("outside");
    WriteFile(outside + "/file", "x");
    const auto outsides = TextsIn(outside);
    fs::remove_all(root + "/gone");
    fs::remove_all(root + "/linked");
    fs::create_symlink(outside, root + "/linked");
    fs::remove(root + "/turned");
    fs::create_directory(root + "/turned");
    fs::remove(root + "/a/file");
    fs::create_symlink(outside + "/file", root + "/a/file");
    WriteFile(root + "/a/new", "x");
    fs::create_directories(root + "/new/deep");
    ASSERT_EQ(mount("none", (root + "/mounted").c_str(), "tmpfs", 0, nullptr), 0);
    WriteFile(root + "/mounted/inside", "x");

    EXPECT_THAT(Notes(),
                UnorderedElementsAre("missing gone", "other kind linked", "other kind turned",
                                     "other kind a\\file", "extra a\\new", "extra new", "error mounted 17",
                                     "changed ", "changed a", "changed a\\deep", "changed a\\deep\\one",
                                     "changed a.txt", "changed b", "changed link"));
    EXPECT_EQ(TextOf(counts), "7 changed, 0 so, 4 failed, 3 missing, 2 extra");
    EXPECT_EQ(TextsIn(outside), outsides);
    umount((root + "/mounted").c_str());
}

// Notes where the records say that objects are.
class PathRecorder : public NoRecord {
  public:
    DWORD Record(std::uint64_t /*top*/, std::span<const DescriptorChange> batch) override {
        for (const DescriptorChange& change : batch)
            paths.push_back(change.path);
        return ERROR_SUCCESS;
    }
    std::vector<std::string> paths;
};

TEST_F(RestoreTest, TheCaseOfLettersMattersEverywhereButOnNtfs) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    for (const bool isNtfs : {false, true}) {
        SCOPED_TRACE(isNtfs);
        MakeTree(isNtfs ? volume.Path("tree") : folder.Path("tree"));
        fs::rename(root + "/b", root + "/b\xC3\xA4");
        SetDescriptorText(root + "/a/deep/one", "D:P(A;;FR;;;BG)");
        Save(root, file);
        const std::string one = DescriptorText(root + "/a/deep/one", kAll);
        fs::rename(root + "/a", root + "/A");
        fs::rename(root + "/A/deep", root + "/A/DEEP");
        fs::rename(root + "/b\xC3\xA4", root + "/B\xC3\x84");
        WriteFile(root + "/A/New", "x");
        Spoil();
        PathRecorder recorder;
        NotingHost host(root);
        ASSERT_EQ(Restore(host, recorder), ERROR_SUCCESS);
        if (!isNtfs) {
            EXPECT_THAT(host.notes, UnorderedElementsAre("changed ", "changed a.txt", "missing a",
                                                         "missing b\xC3\xA4", "extra A", "extra B\xC3\x84"));
            continue;
        }
        EXPECT_THAT(host.notes, UnorderedElementsAre("changed ", "changed A", "changed A\\DEEP",
                                                     "changed A\\DEEP\\one", "changed A\\file",
                                                     "changed a.txt", "changed B\xC3\x84", "extra A\\New"));
        EXPECT_THAT(recorder.paths, UnorderedElementsAre("", "A", "A\\DEEP", "A\\DEEP\\one", "A\\file",
                                                         "a.txt", "B\xC3\x84"));
        EXPECT_EQ(DescriptorText(root + "/A/DEEP/one", kAll), one);
    }
}

// Never one in the place of the other.
TEST_F(RestoreTest, NamesThatDifferInTheCaseOfLettersAloneAreToldApartOrRefused) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    MakeTree(volume.Path("tree"));
    for (const char* name : {"/both", "/BOTH", "/one", "/ONE", "/split"})
        WriteFile(root + name, "x");
    fs::create_directories(root + "/sub/x");
    fs::create_directories(root + "/SUB/x");
    Save(root, file);
    fs::remove(root + "/ONE");
    fs::remove_all(root + "/sub");
    fs::rename(root + "/split", root + "/Split");
    WriteFile(root + "/SPLIT", "x");
    Spoil();
    const auto untouched = [this] {
        return DescriptorText(root + "/Split", kAll) + DescriptorText(root + "/SPLIT", kAll);
    };
    const std::string before = untouched();
    const std::vector<std::string> notes = Notes();
    for (const char* note : {"changed both", "changed BOTH", "changed one", "alike ONE", "changed SUB",
                             "changed SUB\\x", "alike sub", "alike split"})
        EXPECT_THAT(notes, testing::Contains(note));
    EXPECT_EQ(TextOf(counts), "12 changed, 0 so, 3 failed, 1 missing, 0 extra");
    EXPECT_EQ(untouched(), before);
}

TEST_F(RestoreTest, AFileWithTwoNamesIsChangedOnce) {
    MakeTree(root);
    fs::create_hard_link(root + "/b", root + "/a/b");
    SetLists();
    Save(root, file);
    const auto saved = TextsIn(root);
    Spoil();
    Notes();
    EXPECT_EQ(TextOf(counts), "7 changed, 1 so, 0 failed, 0 missing, 0 extra");
    EXPECT_EQ(TextsIn(root), saved);
}

TEST_F(RestoreTest, FewOpenFilesAreEnough) {
    MakeTree(root);
    for (int i = 0; i < 300; ++i)
        WriteFile(root + "/a/" + std::to_string(i), "x");
    Save(root, file);
    const auto saved = TextsIn(root);
    Spoil();
    rlimit usual{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &usual), 0);
    const rlimit few{.rlim_cur = 100, .rlim_max = usual.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    Notes();
    setrlimit(RLIMIT_NOFILE, &usual);
    EXPECT_EQ(TextOf(counts), "307 changed, 0 so, 0 failed, 0 missing, 0 extra");
    EXPECT_EQ(TextsIn(root), saved);
}

// Another program writes between the reading and the writing of an object.
class Meddler : public NoRecord {
  public:
    Meddler(std::string path, int howOften) : meddled(std::move(path)), times(howOften) {}
    DWORD Record(std::uint64_t /*top*/, std::span<const DescriptorChange> batch) override {
        recorded += batch.size();
        if (times-- > 0)
            EXPECT_EQ(SetDescriptorText(meddled, "D:P(A;;FX;;;S-1-5-21-1-2-3-" + std::to_string(times) + ")"),
                      0U);
        return ERROR_SUCCESS;
    }
    std::string meddled;
    int times;
    std::size_t recorded = 0;
};

TEST_F(RestoreTest, WhatAnotherProgramChangesMeanwhileIsTriedAgainAFewTimes) {
    MakeTree(root);
    SetLists();
    Save(root, file);
    const auto saved = TextsIn(root);
    Spoil();
    Meddler once(root + "/b", 1);
    NotingHost host(root);
    EXPECT_EQ(Restore(host, once), ERROR_SUCCESS);
    EXPECT_EQ(once.recorded, 8U) << "the second attempt is recorded too";
    EXPECT_EQ(TextsIn(root), saved);

    Spoil();
    Meddler always(root + "/b", 100);
    NotingHost unlucky(root);
    EXPECT_EQ(Restore(unlucky, always), ERROR_SUCCESS);
    EXPECT_EQ(TextOf(counts), "6 changed, 0 so, 1 failed, 0 missing, 0 extra");
    EXPECT_EQ(unlucky.notes.back(), "error b " + std::to_string(ERROR_REVISION_MISMATCH));
}

class FullRecorder : public NoRecord {
    DWORD Record(std::uint64_t /*top*/, std::span<const DescriptorChange> /*batch*/) override {
        return ERROR_DISK_FULL;
    }
};

TEST_F(RestoreTest, NothingIsWrittenWithoutItsRecordOrFromATextThatChanged) {
    MakeTree(root);
    SetLists();
    Save(root, file);
    Spoil();
    const auto spoilt = TextsIn(root);
    FullRecorder full;
    NotingHost host(root);
    EXPECT_EQ(Restore(host, full), ERROR_DISK_FULL);

    NoRecord nothing;
    NotingHost stopped(root);
    stopped.stopAt = 3;
    EXPECT_EQ(Restore(stopped, nothing), ERROR_OPERATION_ABORTED);

    const auto list = Open();
    std::fstream text(file, std::ios::in | std::ios::out | std::ios::binary);
    text.seekp(-70, std::ios::end);  // in the line at the end
    text << 'x' << std::flush;
    EXPECT_EQ(RestoreLists(*list, {}, host, nothing, counts, fault), ERROR_INVALID_DATA);
    EXPECT_EQ(fault.reason, "it was changed after it had been checked");
    fs::resize_file(file, 100);
    EXPECT_EQ(RestoreLists(*list, {}, host, nothing, counts, fault), ERROR_INVALID_DATA);
    EXPECT_EQ(TextsIn(root), spoilt);
}

TEST_F(RestoreTest, AccountsAreExchangedOnTheWay) {
    MakeTree(root);
    ASSERT_EQ(SetDescriptorText(root + "/b", "O:S-1-5-21-1-2-3-1001G:BGD:P(A;;FA;;;S-1-5-21-1-2-3-1001)"),
              ERROR_SUCCESS);
    nt::SecurityDescriptor hidden = nt::FromSddl("O:BAG:BAD:(A;;FA;;;BA)").value();
    nt::Ace ace;
    ace.type = 4;
    const nt::Sid old(5, {21, 1, 2, 3, 1001});
    ace.tail.assign(old.Bytes().begin(), old.Bytes().end());
    hidden.dacl.entries.push_back(ace);
    ASSERT_EQ(SetDescriptor(root + "/a.txt", hidden), ERROR_SUCCESS);
    Save(root, file);
    Spoil();
    nt::AccountExchange exchange;
    ASSERT_TRUE(exchange.Add(old, nt::Sid(22, {1, 12})));
    EXPECT_THAT(Notes({.exchange = &exchange}), testing::Contains("hidden a.txt"));
    EXPECT_EQ(DescriptorText(root + "/b", kAll), "O:S-1-22-1-12G:BGD:PAI(A;;FA;;;S-1-22-1-12)");
    struct stat status {};
    ASSERT_EQ(stat((root + "/b").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 12U);
}

TEST_F(RestoreTest, AListThatIsTooLargeForTheVolumeIsNamed) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    MakeTree(volume.Path("tree"));
    nt::SecurityDescriptor large = nt::FromSddl("O:BAG:BAD:P").value();
    for (std::uint32_t i = 0; i < 1800; ++i) {
        nt::Ace ace;
        ace.mask = 1;
        ace.sid = nt::Sid(5, {21, 1, 2, 3, i});
        large.dacl.entries.push_back(ace);
    }
    ASSERT_EQ(SetDescriptor(root + "/b", large), ERROR_SUCCESS);
    Save(root, file);
    MakeTree(folder.Path("elsewhere"));
    Spoil();
    const std::string before = DescriptorText(root + "/b", kAll);
    EXPECT_THAT(Notes(), testing::Contains("error b " + std::to_string(ERROR_ALLOTTED_SPACE_EXCEEDED)));
    EXPECT_EQ(TextOf(counts), "6 changed, 0 so, 1 failed, 0 missing, 0 extra");
    EXPECT_EQ(DescriptorText(root + "/b", kAll), before);
}

TEST_F(RestoreTest, ListsThatEarlierVersionsHaveSavedComeBack) {
    MakeTree(root);
    const std::vector<std::pair<std::string, std::string>> lists = {
        {"", "O:BAG:BAD:P(A;OICI;FA;;;BA)"},
        {"a", "O:S-1-22-1-7G:S-1-22-2-8D:(D;CI;FW;;;BG)S:(AU;SA;FA;;;WD)"},
        {"a\\deep", "O:S-1-5-21-1-2-3-1001G:BGD:AI(XA;OICIID;FR;;;WD;(@USER.clearance >= 2))"},
        {"a\\deep\\one", "O:S-1-5-21-1-2-3-1001G:BGD:PAI"},
        {"a\\file", "O:BAG:BAD:AI(A;ID;FR;;;S-1-5-21-1-2-3-1002)"},
        {"a.txt", "O:BAG:BAD:NO_ACCESS_CONTROL"},
        {"b", "O:BGG:BAD:(A;;0x1200a9;;;WD)S:P(AU;SAFA;FA;;;WD)"},
    };
    std::vector<std::string> expected;
    for (const auto& [path, list] : lists)
        expected.push_back((path + ' ').append(list));
    const auto make = [&](const std::string& target) {
        MemoryOutput output;
        const auto writer = SavedListWriter::Make(SavedForm::kPermora, output);
        EXPECT_EQ(writer->Begin({SavedForm::kPermora, "2026-11-26T08:02:11Z", kAll}), ERROR_SUCCESS);
        EXPECT_EQ(writer->BeginTop({R"(C:\srv\data)", "ext4 1a2b3c4d"}), ERROR_SUCCESS);
        for (const auto& [path, list] : lists) {
            std::vector<std::uint8_t> bytes;
            const auto descriptor = nt::FromSddl(list);
            EXPECT_TRUE(descriptor && descriptor->AppendTo(bytes)) << list;
            EXPECT_EQ(writer->Add(path, KindOf(Joined(root, path)), bytes), ERROR_SUCCESS) << path;
        }
        EXPECT_EQ(writer->End(), ERROR_SUCCESS);
        WriteFile(target, output.text);
    };
    for (const std::string& kept : KeptFiles(folder.MakeFolder("kept"), "saved.lists", make)) {
        SCOPED_TRACE(kept);
        Spoil();
        fs::copy_file(kept, file, fs::copy_options::overwrite_existing);
        EXPECT_EQ(Notes().size(), lists.size());
        EXPECT_EQ(TextsIn(root), expected);
    }
}

// The form of icacls, in any order.
std::string IcaclsText(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines)
        for (const char letter : line + "\r\n")
            text += {letter, '\0'};
    return text;
}

TEST_F(RestoreTest, TextsOfIcaclsChangeListsAlone) {
    MakeTree(root);
    SetLists();
    const std::string owner = DescriptorText(root + "/a", OWNER_SECURITY_INFORMATION);
    WriteFile(root + "/a/deep/new", "x");
    WriteFile(root + "/other", "x");
    WriteFile(file, IcaclsText({"a", "D:PAI(A;OICI;FA;;;WD)", "a\\file", "D:AI(A;ID;FR;;;BU)", "a\\deep",
                                "D:AI(A;OICIID;FA;;;WD)", "a\\deep\\one", "D:AI(A;ID;FA;;;WD)"}));
    EXPECT_THAT(Notes(), ElementsAre("changed a", "changed a\\file", "changed a\\deep",
                                     "changed a\\deep\\one", "extra a\\deep\\new"));
    EXPECT_EQ(DaclText(root + "/a"), "D:PAI(A;OICI;FA;;;WD)");
    EXPECT_EQ(DaclText(root + "/a/file"), "D:AI(A;ID;FR;;;BU)");
    EXPECT_EQ(DescriptorText(root + "/a", OWNER_SECURITY_INFORMATION), owner);
    EXPECT_EQ(DescriptorText(root + "/a", SACL_SECURITY_INFORMATION), "S:(AU;SA;FA;;;WD)");

    // Nobody knows what is extra when a folder is come back to.
    WriteFile(file, IcaclsText({"a", "D:P", "b", "D:P", "a\\file", "D:P", "a\\no", "D:P"}));
    EXPECT_THAT(Notes(), UnorderedElementsAre("changed a", "changed b", "changed a\\file", "missing a\\no"));
}

// As on servers that give them only to those with a privilege.
TEST_F(RestoreTest, SystemListsThatAreHiddenAreToldAndNotCompared) {
    MakeTree(root);
    SetLists();
    const HeldObject top = Held(root);
    SelfComparison comparison(top, kUsualParts);
    ASSERT_EQ(ReadTree(top, kAll, comparison), ERROR_SUCCESS);
    EXPECT_THAT(comparison.End(), ElementsAre("a 1314"));
}

}  // namespace
}  // namespace permora::test
