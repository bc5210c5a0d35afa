// Reads the image behind a mounted volume: the old contents are gone.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>

#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/linux/base/unique_fd.h"
#include "tests/deletion/recording_host.h"
#include "tests/support/command.h"
#include "tests/support/ntfs_volume.h"

namespace {

bool areStreamsRefused = false;
int dataSearches = 0;

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the linker demands these names
extern "C" {

int __real_setxattr(const char* path, const char* name, const void* value, size_t size, int flags);
int __wrap_setxattr(const char* path, const char* name, const void* value, size_t size, int flags) {
    if (!areStreamsRefused) return __real_setxattr(path, name, value, size, flags);
    errno = EIO;
    return -1;
}

off_t __real_lseek(int descriptor, off_t place, int whence);
off_t __wrap_lseek(int descriptor, off_t place, int whence) {
    if (whence == SEEK_DATA) ++dataSearches;
    return __real_lseek(descriptor, place, whence);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)

namespace permora {
namespace {

using test::RunCommand;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// A text that occurs only where the test writes it.
std::string Contents(const std::string& mark, std::size_t size) {
    std::string text;
    while (text.size() < size)
        text += mark;
    return text.substr(0, size);
}

void Write(const std::string& path, const std::string& contents) {
    std::ofstream(path, std::ios::binary) << contents;
}

std::vector<std::size_t> PlacesOf(const std::string& mark, const std::string& image) {
    std::vector<std::size_t> places;
    for (std::size_t at = image.find(mark); at != image.npos; at = image.find(mark, at + mark.size()))
        places.push_back(at);
    return places;
}

// Expects zeros wherever `before` held the mark, and the mark nowhere.
void ExpectZeroed(const std::string& mark, const std::string& before, const std::string& image) {
    const std::vector<std::size_t> places = PlacesOf(mark, before);
    EXPECT_FALSE(places.empty()) << mark << " was never on the disk";
    EXPECT_THAT(PlacesOf(mark, image), IsEmpty()) << mark;
    const std::string zeros(mark.size(), '\0');
    const auto wrong = std::count_if(places.begin(), places.end(), [&](std::size_t place) {
        return image.compare(place, zeros.size(), zeros) != 0;
    });
    EXPECT_EQ(wrong, 0) << mark;
}

// An ext4 volume in an image file behind the kernel's loop device.
class Ext4Volume {
  public:
    static std::string SkipReason() {
        const std::string reason = test::MissingProgram("mkfs.ext4");
        return reason.empty() ? test::CannotMountReason() : reason;
    }
    explicit Ext4Volume(const std::string& features = "has_journal", const std::string& options = "loop") {
        std::ofstream(Image()).close();
        std::filesystem::resize_file(Image(), std::uintmax_t{32} << 20);
        problem = RunCommand({"mkfs.ext4", "-q", "-F", "-O", features, Image()}).output;
        const test::CommandResult mounted = RunCommand({"mount", "-o", options, Image(), Root()});
        if (mounted.exitCode != 0) problem += mounted.output;
    }
    ~Ext4Volume() { umount2(Root().c_str(), MNT_DETACH); }
    Ext4Volume(const Ext4Volume&) = delete;
    Ext4Volume& operator=(const Ext4Volume&) = delete;

    const std::string& Problem() const { return problem; }
    std::string Image() const { return folder.Path("volume.img"); }
    const std::string& Root() const { return root; }
    std::string Path(const std::string& name) const { return root + "/" + name; }

  private:
    const test::TemporaryFolder folder;
    const std::string root = folder.MakeFolder("mounted");
    std::string problem;
};

class OnVolume : public ::testing::Test {
  protected:
    void TearDown() override { std::filesystem::current_path("/"); }

    test::RecordingHost host;
};

TEST_F(OnVolume, Ext4KeepsNothing) {
    if (const std::string reason = Ext4Volume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const Ext4Volume volume;
    ASSERT_EQ(volume.Problem(), "");
    Write(volume.Path("large"), Contents("LARGEMARK", 3000001));
    Write(volume.Path("small"), Contents("SMALLMARK", 50));
    sync();
    const std::string before = test::ReadWholeFile(volume.Image());
    std::filesystem::current_path(volume.Root());
    host.Delete("large");
    host.Delete("small");
    // Without a sync: data that is not on the disk now was never sent there.
    const std::string after = test::ReadWholeFile(volume.Image());
    std::filesystem::current_path("/");
    EXPECT_THAT(host.failures, IsEmpty());
    for (const char* mark : {"LARGEMARK", "SMALLMARK"})
        ExpectZeroed(mark, before, after);
}

TEST_F(OnVolume, Ext4TellsWhatItWritesByWayOfItsJournal) {
    if (const std::string reason = Ext4Volume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const Ext4Volume tables("inline_data");
    const Ext4Volume journal("has_journal", "loop,data=journal");
    ASSERT_EQ(tables.Problem() + journal.Problem(), "");
    const std::vector<OverwriteObstacle> none;
    const std::vector<OverwriteObstacle> journaled = {OverwriteObstacle::kJournaled};
    const std::tuple<const Ext4Volume&, std::size_t, std::vector<OverwriteObstacle>> cases[] = {
        {tables, 50, journaled}, {tables, 5000, none}, {journal, 5000, journaled}};
    for (const auto& [volume, size, expected] : cases) {
        Write(volume.Path("file"), Contents("MARK", size));
        std::filesystem::current_path(volume.Root());
        FolderHandle folder;
        FileHandle file;
        UniqueHandle contents;
        std::vector<OverwriteObstacle> obstacles;
        ASSERT_EQ(FolderHandle::Open(".", folder), ERROR_SUCCESS);
        ASSERT_EQ(folder.HoldFile("file", file), ERROR_SUCCESS);
        ASSERT_EQ(file.OpenForOverwriting(contents), ERROR_SUCCESS);
        EXPECT_EQ(file.FindObstacles(obstacles), ERROR_SUCCESS);
        EXPECT_EQ(obstacles, expected) << size;
    }
}

// ext4 puts them into its own tables, which it writes to the journal first.
TEST_F(OnVolume, ZerosOfSmallFilesDoNotWaitInTheJournal) {
    if (const std::string reason = Ext4Volume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const Ext4Volume volume("inline_data");
    ASSERT_EQ(volume.Problem(), "");
    Write(volume.Path("small"), Contents("SMALLMARK", 50));
    sync();
    // Clears the journal, so that the mark is only in its place.
    const host::UniqueFd root(open(volume.Root().c_str(), O_RDONLY));
    std::uint32_t withZeros = 2;
    ASSERT_EQ(ioctl(root.Get(), _IOW('f', 43, std::uint32_t), &withZeros), 0);
    EXPECT_THAT(PlacesOf("SMALLMARK", test::ReadWholeFile(volume.Image())), SizeIs(5));
    std::filesystem::current_path(volume.Root());
    host.Delete("small");
    EXPECT_THAT(host.failures, IsEmpty());
    EXPECT_THAT(PlacesOf("SMALLMARK", test::ReadWholeFile(volume.Image())), IsEmpty());
}

// A file of a gigabyte and more on a smaller volume, with something at its beginning, in its middle and at
// its end.
constexpr off_t kHuge = off_t{1} << 30;

void WriteWithHoles(const std::string& path, const std::string& mark) {
    const std::string text = Contents(mark, 5000);
    const host::UniqueFd file(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    for (const off_t place : {off_t{0}, kHuge / 2 + 1234, kHuge})
        ASSERT_EQ(pwrite(file.Get(), text.data(), text.size(), place), static_cast<ssize_t>(text.size()));
    ASSERT_EQ(fsync(file.Get()), 0);
}

TEST_F(OnVolume, HolesAreNotFilledAndWhatIsAllocatedIsOverwritten) {
    if (const std::string reason = Ext4Volume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const Ext4Volume volume;
    ASSERT_EQ(volume.Problem(), "");
    std::filesystem::current_path(volume.Root());
    WriteWithHoles("holes", "HOLEMARK");
    Write("nothing", "");
    std::filesystem::resize_file("nothing", std::uintmax_t{1} << 40);
    // Reads as zeros, but the blocks are those of the old contents; and a hole behind them.
    Write("set aside", Contents("ASIDEMARK", 200'000));
    sync();
    {
        const host::UniqueFd file(open("set aside", O_WRONLY | O_CLOEXEC));
        ASSERT_EQ(fallocate(file.Get(), FALLOC_FL_ZERO_RANGE, 0, 200'000), 0);
        ASSERT_EQ(ftruncate(file.Get(), kHuge), 0);
    }
    sync();
    const std::string before = test::ReadWholeFile(volume.Image());
    for (const char* name : {"holes", "nothing", "set aside"})
        host.Delete(name);
    const std::string after = test::ReadWholeFile(volume.Image());
    EXPECT_THAT(host.failures, IsEmpty());
    EXPECT_THAT(host.deleted, SizeIs(3));
    for (const char* mark : {"HOLEMARK", "ASIDEMARK"})
        ExpectZeroed(mark, before, after);
}

// Each search for data passes through all reserved space before it.
TEST_F(OnVolume, WhatIsSetAsideInManyPlacesIsSearchedOnce) {
    if (const std::string reason = Ext4Volume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const Ext4Volume volume;
    ASSERT_EQ(volume.Problem(), "");
    std::filesystem::current_path(volume.Root());
    constexpr off_t kCount = 200;
    constexpr off_t kStep = 16384;
    Write("file", "");
    {
        const host::UniqueFd file(open("file", O_WRONLY | O_CLOEXEC));
        for (off_t i = 0; i < kCount; ++i)
            ASSERT_EQ(fallocate(file.Get(), 0, i * kStep, 4096), 0);
        ASSERT_EQ(pwrite(file.Get(), "x", 1, kCount * kStep), 1);
        ASSERT_EQ(fsync(file.Get()), 0);
    }
    dataSearches = 0;
    host.Delete("file");
    EXPECT_THAT(host.failures, IsEmpty());
    EXPECT_THAT(host.deleted, ElementsAre("file"));
    EXPECT_LT(dataSearches, 5);
}

// Data without blocks is a hole for some calls and data for others.
TEST_F(OnVolume, WhatIsNotOnTheDiskYetIsNoHole) {
    const test::TemporaryFolder disk;
    setenv("TMPDIR", "/dev/shm", 1);
    const test::TemporaryFolder memory;
    unsetenv("TMPDIR");
    for (const std::string& place : {disk.Path(), memory.Path()}) {
        std::filesystem::current_path(place);
        Write("file", Contents("MARK", 5000));
        std::filesystem::resize_file("file", kHuge);
        FolderHandle folder;
        FileHandle file;
        UniqueHandle contents;
        FileRange range;
        ASSERT_EQ(FolderHandle::Open(".", folder), ERROR_SUCCESS);
        ASSERT_EQ(folder.HoldFile("file", file), ERROR_SUCCESS);
        ASSERT_EQ(file.OpenForOverwriting(contents), ERROR_SUCCESS);
        EXPECT_EQ(FindAllocated(contents.get(), 0, range), ERROR_SUCCESS);
        EXPECT_EQ(range.begin, 0) << place;
        EXPECT_GE(range.end, 5000) << place;
        EXPECT_LE(range.end, 1 << 20) << place;
        EXPECT_EQ(FindAllocated(contents.get(), range.end, range), ERROR_SUCCESS);
        EXPECT_EQ(range.begin, range.end) << place;
        EXPECT_EQ(range.end, kHuge) << place;
        contents.reset();
        host.Delete("file");
        std::filesystem::current_path("/");
    }
    EXPECT_THAT(host.deleted, SizeIs(2));
}

TEST_F(OnVolume, WhatIsMountedBelowStays) {
    if (const std::string reason = Ext4Volume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const Ext4Volume volume;
    ASSERT_EQ(volume.Problem(), "");
    Write(volume.Path("kept"), "x");
    std::filesystem::current_path(std::filesystem::path(volume.Root()).parent_path());
    host.Delete("mounted");
    EXPECT_THAT(host.failures, ElementsAre(Outcome{ERROR_NOT_SAME_DEVICE, Step::kEnterFolder, "mounted"}));
    EXPECT_TRUE(std::filesystem::exists(volume.Path("kept")));
}

class OnNtfs : public OnVolume {
  protected:
    void SetUp() override {
        if (const std::string reason = test::NtfsVolume::SkipReason(); !reason.empty())
            GTEST_SKIP() << reason;
        volume.emplace();
        ASSERT_EQ(volume->Problem(), "");
    }

    std::optional<test::NtfsVolume> volume;
};

TEST_F(OnNtfs, KeepsNothingAndStaysSound) {
    Write(volume->Path("large"), Contents("LARGEMARK", 300001));
    Write(volume->Path("resident"), Contents("RESIDENTMARK", 600));
    Write(volume->Path("tiny"), "TINYMARK");
    ASSERT_EQ(RunCommand({"setfattr", "-n", "user.zone", "-v", "STREAMMARK", volume->Path("tiny")}).exitCode,
              0);
    const std::string before = test::ReadWholeFile(volume->Image());
    std::filesystem::current_path(volume->Root());
    for (const char* name : {"large", "resident", "tiny"})
        host.Delete(name);
    std::filesystem::current_path("/");
    EXPECT_THAT(host.failures, IsEmpty());
    EXPECT_THAT(host.deleted, SizeIs(3));
    const std::string after = test::ReadWholeFile(volume->Image());
    for (const char* mark : {"LARGEMARK", "TINYMARK", "STREAMMARK"})
        ExpectZeroed(mark, before, after);
    // It grew out of the volume's table, which now holds the list of its clusters there.
    EXPECT_FALSE(PlacesOf("SIDENT", before).empty());
    EXPECT_THAT(PlacesOf("SIDENT", after), IsEmpty());
    EXPECT_THAT(volume->Audit(), ::testing::HasSubstr("No errors were found"));
}

// ntfs-3g does not tell where holes are.
TEST_F(OnNtfs, HolesAreNotFilled) {
    WriteWithHoles(volume->Path("holes"), "HOLEMARK");
    const std::string before = test::ReadWholeFile(volume->Image());
    std::filesystem::current_path(volume->Root());
    host.Delete("holes");
    std::filesystem::current_path("/");
    EXPECT_THAT(host.failures, IsEmpty());
    ExpectZeroed("HOLEMARK", before, test::ReadWholeFile(volume->Image()));
    EXPECT_THAT(volume->Audit(), ::testing::HasSubstr("No errors were found"));
}

TEST_F(OnNtfs, NamesAreCountedInPlaceWhereOwnersDoNotMatter) {
    Write(volume->Path("file"), "x");
    std::filesystem::current_path(volume->Root());
    host.scrutiny = FileScrutiny::kObstacles;
    host.Delete("file");
    EXPECT_THAT(host.obstacles, IsEmpty());
    EXPECT_THAT(host.deleted, ElementsAre("file"));
    EXPECT_TRUE(std::filesystem::is_empty(volume->Root()));
}

TEST_F(OnNtfs, StreamsThatAreFilesAreOverwrittenInPlace) {
    volume->Mount(test::NtfsMount::kStreamsAsFiles);
    Write(volume->Path("file"), Contents("MAINMARK", 5000));
    Write(volume->Path("file:large"), Contents("STREAMMARK", 200000));
    const std::string before = test::ReadWholeFile(volume->Image());
    std::filesystem::current_path(volume->Root());
    host.Delete("file");
    std::filesystem::current_path("/");
    EXPECT_THAT(host.failures, IsEmpty());
    const std::string after = test::ReadWholeFile(volume->Image());
    for (const char* mark : {"MAINMARK", "STREAMMARK"})
        ExpectZeroed(mark, before, after);

    // Another file takes the name before its stream is opened.
    for (const char* name : {"held", "held:stream", "other", "other:stream"})
        Write(volume->Path(name), "x");
    std::filesystem::current_path(volume->Root());
    FolderHandle folder;
    FileHandle file;
    UniqueHandle stream;
    ASSERT_EQ(FolderHandle::Open(".", folder), ERROR_SUCCESS);
    ASSERT_EQ(folder.HoldFile("held", file), ERROR_SUCCESS);
    EXPECT_EQ(file.OpenStreamForOverwriting("stream", stream), ERROR_SUCCESS);
    std::filesystem::rename("held", "away");
    std::filesystem::rename("other", "held");
    EXPECT_EQ(file.OpenStreamForOverwriting("stream", stream), ERROR_FILE_INVALID);
}

TEST_F(OnNtfs, AStreamThatIsNotDoneKeepsItsLengthAndItsFile) {
    const std::string text(1000, 's');
    Write(volume->Path("file"), "contents");
    ASSERT_EQ(setxattr(volume->Path("file").c_str(), "user.zone", text.data(), text.size(), 0), 0);
    const auto streamBytes = [&] { return getxattr(volume->Path("file").c_str(), "user.zone", nullptr, 0); };
    std::filesystem::current_path(volume->Root());

    areStreamsRefused = true;
    host.Delete("file");
    areStreamsRefused = false;
    EXPECT_THAT(host.failures, ElementsAre(Outcome{ERROR_IO_DEVICE, Step::kFlush, "file"}));
    EXPECT_EQ(test::ReadWholeFile("file"), "contents");

    FolderHandle folder;
    FileHandle file;
    UniqueHandle stream;
    ASSERT_EQ(FolderHandle::Open(".", folder), ERROR_SUCCESS);
    ASSERT_EQ(folder.HoldFile("file", file), ERROR_SUCCESS);
    ASSERT_EQ(file.OpenStreamForOverwriting("zone", stream), ERROR_SUCCESS);
    EXPECT_TRUE(WriteFile(stream.get(), std::string(512, '\0').data(), 512, nullptr, nullptr));
    EXPECT_TRUE(FlushFileBuffers(stream.get()));
    EXPECT_EQ(streamBytes(), 1000);
}

TEST_F(OnNtfs, TellsWhatItCannotReplace) {
    Write(volume->Path("plain"), "x");
    Write(volume->Path("short name"), "x");
    Write(volume->Path("PLAIN"), "x");
    Write(volume->Path("linked"), "x");
    Write(volume->Path("streams"), "x");
    std::filesystem::create_hard_link(volume->Path("linked"), volume->Path("second"));
    const std::string shortName = volume->Path("short name");
    ASSERT_EQ(RunCommand({"setfattr", "-n", "system.ntfs_dos_name", "-v", "SHORTN~1", shortName}).exitCode,
              0);
    // One name that is both long and short.
    const std::string onlyName = volume->Path("PLAIN");
    ASSERT_EQ(RunCommand({"setfattr", "-n", "system.ntfs_dos_name", "-v", "PLAIN", onlyName}).exitCode, 0);
    std::filesystem::create_hard_link(onlyName, volume->Path("other"));
    ASSERT_EQ(RunCommand({"setfattr", "-n", "user.s", "-v", "x", volume->Path("streams")}).exitCode, 0);
    std::filesystem::current_path(volume->Root());
    FolderHandle folder;
    ASSERT_EQ(FolderHandle::Open(".", folder), ERROR_SUCCESS);
    const std::pair<const char*, std::vector<OverwriteObstacle>> cases[] = {
        {"plain", {}},
        {"short name", {}},
        {"PLAIN", {OverwriteObstacle::kSeveralNames}},
        {"linked", {OverwriteObstacle::kSeveralNames}},
        {"streams", {OverwriteObstacle::kNamedStreams}},
    };
    for (const auto& [name, expected] : cases) {
        std::vector<OverwriteObstacle> obstacles;
        FileHandle file;
        UniqueHandle contents;
        ASSERT_EQ(folder.HoldFile(name, file), ERROR_SUCCESS) << name;
        ASSERT_EQ(file.OpenForOverwriting(contents), ERROR_SUCCESS) << name;
        EXPECT_EQ(file.FindObstacles(obstacles), ERROR_SUCCESS) << name;
        EXPECT_EQ(obstacles, expected) << name;
    }
}

}  // namespace
}  // namespace permora
