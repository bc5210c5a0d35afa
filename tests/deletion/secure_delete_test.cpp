#include "deletion/secure_delete.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <limits>

#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/api/memory.h"
#include "platform/linux/base/unique_fd.h"
#include "tests/deletion/recording_host.h"
#include "tests/support/command.h"
#include "tests/support/places.h"
#include "tests/support/refused_leases.h"
#include "tests/support/temporary_folder.h"

namespace {

// The engine's calls to the system, one word each, and the planned failures.
std::string calls;
std::function<void()> beforeWrite;
bool isWritingRefused = false;
bool isFlushingRefused = false;
bool isMemoryRefused = false;
bool isDiskBroken = false;
bool isWritingPiecemeal = false;
off_t sizeAtSync = -1;

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the linker demands these names
extern "C" {

BOOL __real_WriteFile(HANDLE file, LPCVOID buffer, DWORD bytes, LPDWORD written, LPOVERLAPPED overlapped);
BOOL __wrap_WriteFile(HANDLE file, LPCVOID buffer, DWORD bytes, LPDWORD written, LPOVERLAPPED overlapped) {
    calls += "write ";
    if (beforeWrite) beforeWrite();
    if (!isWritingRefused) return __real_WriteFile(file, buffer, bytes, written, overlapped);
    SetLastError(ERROR_CRC);
    return FALSE;
}

BOOL __real_FlushFileBuffers(HANDLE file);
BOOL __wrap_FlushFileBuffers(HANDLE file) {
    calls += "flush ";
    if (!isFlushingRefused) return __real_FlushFileBuffers(file);
    SetLastError(ERROR_CRC);
    return FALSE;
}

HLOCAL __real_LocalAlloc(UINT flags, SIZE_T bytes);
HLOCAL __wrap_LocalAlloc(UINT flags, SIZE_T bytes) {
    if (!isMemoryRefused) return __real_LocalAlloc(flags, bytes);
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

int __real_fdatasync(int descriptor);
int __wrap_fdatasync(int descriptor) {
    struct stat status {};
    fstat(descriptor, &status);
    sizeAtSync = status.st_size;
    calls += "sync ";
    if (!isDiskBroken) return __real_fdatasync(descriptor);
    errno = EIO;
    return -1;
}

ssize_t __real_pwrite(int descriptor, const void* bytes, size_t size, off_t position);
ssize_t __wrap_pwrite(int descriptor, const void* bytes, size_t size, off_t position) {
    return __real_pwrite(descriptor, bytes, isWritingPiecemeal ? std::min(size, size_t{100}) : size,
                         position);
}

int __real_unlinkat(int folder, const char* name, int flags);
int __wrap_unlinkat(int folder, const char* name, int flags) {
    calls += "delete ";
    return __real_unlinkat(folder, name, flags);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)

namespace permora {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class SecureDelete : public ::testing::Test {
  protected:
    SecureDelete() { std::filesystem::current_path(work); }
    ~SecureDelete() override {
        std::filesystem::current_path("/");
        calls.clear();
        beforeWrite = nullptr;
        isWritingRefused = isFlushingRefused = isMemoryRefused = isDiskBroken = isWritingPiecemeal = false;
    }

    static void Fill(const std::string& path, std::size_t size) {
        std::ofstream(path, std::ios::binary) << std::string(size, 'x');
    }
    bool Exists(const std::string& name) const {
        return std::filesystem::exists(std::filesystem::symlink_status(folder.Path(name)));
    }
    static std::size_t OpenDescriptors() {
        const std::filesystem::directory_iterator all("/proc/self/fd");
        return static_cast<std::size_t>(std::distance(begin(all), end(all)));
    }

    const test::TemporaryFolder folder;
    const std::string work = folder.MakeFolder("work");
    test::RecordingHost host;
};

TEST_F(SecureDelete, WholeSectorsReachTheDiskBeforeTheNameGoes) {
    struct Case {
        std::size_t size;
        const char* expectedCalls;
        off_t expectedSize;
    };
    for (const Case& each : {
             Case{0, "flush sync delete ", 0},
             {1, "write flush sync delete ", 512},
             {1536, "write write write flush sync delete ", 1536},
             {1537, "write write write write flush sync delete ", 2048},
         }) {
        calls.clear();
        Fill("file", each.size);
        host.Delete("file");
        EXPECT_EQ(calls, each.expectedCalls) << each.size;
        EXPECT_EQ(sizeAtSync, each.expectedSize) << each.size;
        EXPECT_FALSE(Exists("work/file")) << each.size;
    }
    EXPECT_THAT(host.failures, IsEmpty());
}

TEST_F(SecureDelete, AFailureIsToldWithItsStepAndTheFileStays) {
    struct Case {
        bool* fault;
        Step step;
        DWORD error;
    };
    bool isReadOnly = false;
    bool isOpenElsewhere = false;
    const Case cases[] = {
        {&isReadOnly, Step::kOpenFile, ERROR_ACCESS_DENIED},
        {&isOpenElsewhere, Step::kOpenFile, ERROR_SHARING_VIOLATION},
        {&isMemoryRefused, Step::kTakeZeros, ERROR_NOT_ENOUGH_MEMORY},
        {&isWritingRefused, Step::kWrite, ERROR_CRC},
        {&isFlushingRefused, Step::kFlush, ERROR_CRC},
        {&isDiskBroken, Step::kFlush, ERROR_IO_DEVICE},
    };
    Fill("file", 700);
    const std::size_t before = OpenDescriptors();
    for (const Case& each : cases) {
        *each.fault = true;
        chmod("file", isReadOnly ? 0444 : 0644);
        const host::UniqueFd other(isOpenElsewhere ? open("file", O_RDONLY | O_CLOEXEC) : -1);
        host.failures.clear();
        host.Delete("file");
        *each.fault = false;
        EXPECT_THAT(host.failures, ElementsAre(Outcome{each.error, each.step, "file"}));
        EXPECT_TRUE(Exists("work/file"));
    }
    EXPECT_EQ(OpenDescriptors(), before);
}

TEST_F(SecureDelete, WritesThatTheSystemCutsShortAreFinished) {
    Fill("file", 1100);
    isWritingPiecemeal = isDiskBroken = true;
    host.Delete("file");
    EXPECT_EQ(test::ReadWholeFile("file"), std::string(1536, '\0'));
}

// Where another program cannot be kept from it.
TEST_F(SecureDelete, AFileThatGrowsMeanwhileIsLeft) {
    class GrowingHost : public test::RecordingHost {
        FileScrutiny Scrutiny() const override {
            std::filesystem::resize_file("file", 5000);
            return FileScrutiny::kNone;
        }
    };
    Fill("file", 1000);
    GrowingHost growing;
    test::areLeasesRefused = true;
    growing.Delete("file");
    test::areLeasesRefused = false;
    EXPECT_THAT(growing.failures, ElementsAre(Outcome{ERROR_SHARING_VIOLATION, Step::kGetSize, "file"}));
    EXPECT_TRUE(Exists("work/file"));
}

// Its last sector ends beyond what this process may write.
TEST_F(SecureDelete, AFileThatCannotGrowGoes) {
    Fill("file", 1000);
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit usual{};
    getrlimit(RLIMIT_FSIZE, &usual);
    const rlimit tight{1000, usual.rlim_max};
    setrlimit(RLIMIT_FSIZE, &tight);
    host.Delete("file");
    setrlimit(RLIMIT_FSIZE, &usual);
    std::signal(SIGXFSZ, SIG_DFL);
    EXPECT_THAT(host.failures, IsEmpty());
    EXPECT_THAT(host.deleted, ElementsAre("file"));
}

// No file can have more.
TEST_F(SecureDelete, TheLastBytesOfTheLargestFileAreOverwritten) {
    setenv("TMPDIR", "/dev/shm", 1);
    const test::TemporaryFolder memory;
    unsetenv("TMPDIR");
    std::filesystem::current_path(memory.Path());
    constexpr off_t kLargest = std::numeric_limits<off_t>::max();
    const host::UniqueFd made(open("file", O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    ASSERT_EQ(ftruncate(made.Get(), kLargest), 0);
    ASSERT_EQ(pwrite(made.Get(), "x", 1, kLargest - 1), 1);
    FolderHandle place;
    FileHandle file;
    UniqueHandle contents;
    ASSERT_EQ(FolderHandle::Open(".", place), ERROR_SUCCESS);
    ASSERT_EQ(place.HoldFile("file", file), ERROR_SUCCESS);
    test::areLeasesRefused = true;
    EXPECT_EQ(file.OpenForOverwriting(contents), ERROR_SUCCESS);
    test::areLeasesRefused = false;
    LARGE_INTEGER begin{};
    begin.QuadPart = kLargest - 300;
    EXPECT_TRUE(SetFilePointerEx(contents.get(), begin, nullptr, FILE_BEGIN));
    EXPECT_TRUE(WriteFile(contents.get(), std::string(512, '\0').data(), 512, nullptr, nullptr));
    char last = 'x';
    EXPECT_EQ(pread(made.Get(), &last, 1, kLargest - 1), 1);
    EXPECT_EQ(last, '\0');
    std::filesystem::current_path("/");
}

TEST_F(SecureDelete, AReadOnlyFolderStays) {
    folder.MakeFolder("work/top");
    ASSERT_TRUE(SetFileAttributesA("top", FILE_ATTRIBUTE_READONLY));
    host.Delete("top");
    EXPECT_THAT(host.failures, ElementsAre(Outcome{ERROR_ACCESS_DENIED, Step::kRemoveFolder, "top"}));
    EXPECT_TRUE(Exists("work/top"));
}

TEST_F(SecureDelete, NobodyCanOpenAFileThatIsBeingOverwritten) {
    Fill("file", 512);
    int error = 0;
    beforeWrite = [&] {
        const host::UniqueFd other(open("file", O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        error = other ? 0 : errno;
    };
    host.Delete("file");
    EXPECT_EQ(error, EWOULDBLOCK);
    EXPECT_THAT(host.deleted, ElementsAre("file"));
}

TEST_F(SecureDelete, AStopLeavesWhatIsNotYetDone) {
    folder.MakeFolder("work/top");
    folder.MakeFolder("work/top/sub");
    Fill("top/sub/file", 2048);
    int writes = 0;
    beforeWrite = [&] {
        if (++writes == 2) host.isStopping = true;
    };
    host.Delete("top");
    EXPECT_THAT(host.failures, IsEmpty());
    EXPECT_THAT(host.deleted, IsEmpty());
    EXPECT_EQ(test::ReadWholeFile("top/sub/file"), std::string(1024, '\0') + std::string(1024, 'x'));

    Fill("file", 512);
    host.Delete("file");
    EXPECT_TRUE(Exists("work/file"));
    EXPECT_THAT(host.failures, IsEmpty());
}

TEST_F(SecureDelete, ATreeGoesFromItsLeavesAndLinksLeadNowhere) {
    folder.MakeFolder("outside");
    folder.MakeFile("outside/kept");
    for (const char* name : {"top", "top/.hidden", "top/a:b. ", "top/\xff"})
        folder.MakeFolder(std::string("work/") + name);
    for (const char* name : {"top/.hidden/f", "top/a:b. /q?\x01"})
        Fill(name, 100);
    std::filesystem::create_directory_symlink("../../outside", "top/folderlink");
    std::filesystem::create_symlink("../../outside/kept", "top/link");
    ASSERT_EQ(mkfifo("top/pipe", 0600), 0);
    host.Delete("top");
    EXPECT_THAT(host.failures, IsEmpty());
    EXPECT_EQ(host.deleted.size(), 9U);
    EXPECT_EQ(host.deleted.back(), "top");
    EXPECT_FALSE(Exists("work/top"));
    EXPECT_TRUE(Exists("outside/kept"));

    std::filesystem::create_directory_symlink("../outside", "link");
    host.Delete("link");
    EXPECT_FALSE(Exists("work/link"));
    EXPECT_TRUE(Exists("outside/kept"));
}

TEST_F(SecureDelete, AFolderThatIsSwappedLeadsNowhereElse) {
    folder.MakeFolder("outside");
    folder.MakeFolder("outside/sub");
    Fill(folder.Path("outside/file"), 100);
    Fill(folder.Path("outside/sub/file"), 100);

    // Before it is entered.
    folder.MakeFolder("work/top");
    folder.MakeFolder("work/top/sub");
    host.onEntry = [&](const std::string& name) {
        if (name != "sub") return;
        std::filesystem::rename("top/sub", folder.Path("away"));
        std::filesystem::create_directory_symlink("../../outside", "top/sub");
    };
    host.Delete("top");
    ASSERT_EQ(host.failures.size(), 2U);
    EXPECT_EQ(host.failures[0].step, Step::kEnterFolder);
    EXPECT_EQ(host.failures[1].step, Step::kRemoveFolder);

    // While it is being emptied.
    folder.MakeFolder("work/second");
    folder.MakeFolder("work/second/sub");
    Fill("second/sub/file", 100);
    host.onEntry = [&](const std::string& name) {
        if (name != "file") return;
        std::filesystem::rename("second/sub", folder.Path("taken"));
        std::filesystem::create_directory_symlink("../../outside", "second/sub");
    };
    host.Delete("second");
    EXPECT_FALSE(Exists("taken/file"));
    EXPECT_EQ(std::filesystem::file_size(folder.Path("outside/file")), 100U);
    EXPECT_EQ(test::ReadWholeFile(folder.Path("outside/file")), std::string(100, 'x'));
    EXPECT_TRUE(Exists("outside/sub/file"));
}

TEST_F(SecureDelete, AFileThatIsSwappedStaysWhole) {
    // Another file takes the name of the file that is being overwritten.
    Fill("file", 512);
    Fill("other", 512);
    beforeWrite = [] {
        std::filesystem::rename("file", "taken");
        std::filesystem::rename("other", "file");
    };
    host.Delete("file");
    beforeWrite = nullptr;
    EXPECT_EQ(test::ReadWholeFile("file"), std::string(512, 'x'));
    EXPECT_EQ(test::ReadWholeFile("taken"), std::string(512, '\0'));

    // A file takes the name of an object that was listed as a link.
    folder.MakeFolder("work/top");
    std::filesystem::create_symlink("missing", "top/link");
    host.onEntry = [](const std::string&) { std::filesystem::rename("taken", "top/link"); };
    host.Delete("top");
    EXPECT_TRUE(Exists("work/top/link"));

    // A pipe takes the name of an object that was listed as a file.
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    host.onEntry = [](const std::string&) { std::filesystem::rename("pipe", "top/link"); };
    host.Delete("top");
    EXPECT_TRUE(Exists("work/top/link"));
    EXPECT_THAT(host.failures, ElementsAre(Outcome{ERROR_FILE_INVALID, Step::kDeleteFile, "file"},
                                           Outcome{ERROR_ACCESS_DENIED, Step::kDeleteFile, "link"},
                                           Outcome{ERROR_DIR_NOT_EMPTY, Step::kRemoveFolder, "top"},
                                           Outcome{ERROR_ACCESS_DENIED, Step::kOpenFile, "link"},
                                           Outcome{ERROR_DIR_NOT_EMPTY, Step::kRemoveFolder, "top"}));
    EXPECT_THAT(host.deleted, IsEmpty());
}

TEST_F(SecureDelete, WhatGotTheNameAfterTheChoiceStays) {
    folder.MakeFolder("work/junk");
    folder.MakeFolder("work/important");
    Fill("important/file", 100);
    for (const char* name : {"old file", "new file", "kept"})
        Fill(name, 100);
    std::filesystem::create_symlink("a", "link");
    const RememberedPlace chosen = RememberPlace(test::InCurrentFolder({"junk", "old file", "link", "kept"}));
    std::filesystem::rename("junk", "junk 2");
    std::filesystem::rename("important", "junk");
    std::filesystem::rename("new file", "old file");
    unlink("link");
    std::filesystem::create_symlink("b", "link");
    for (const RememberedObject& item : chosen.items)
        SecureDeleteItem(host, item);
    EXPECT_THAT(host.failures, ElementsAre(Outcome{ERROR_FILE_INVALID, Step::kCompare, "junk"},
                                           Outcome{ERROR_FILE_INVALID, Step::kCompare, "old file"},
                                           Outcome{ERROR_FILE_INVALID, Step::kCompare, "link"}));
    EXPECT_EQ(test::ReadWholeFile("junk/file") + test::ReadWholeFile("old file"), std::string(200, 'x'));
    EXPECT_THAT(host.deleted, ElementsAre("kept"));
}

TEST_F(SecureDelete, NothingIsWhatWasNotRemembered) {
    folder.MakeFolder("work/sub");
    Fill("file", 100);
    std::filesystem::create_symlink("a", "link");
    FolderHandle place;
    ASSERT_EQ(FolderHandle::Open(".", place), ERROR_SUCCESS);
    for (const char* name : {"sub", "file", "link"}) {
        host.failures.clear();
        SecureDeleteItem(host, place, name, RememberedObject());
        EXPECT_THAT(host.failures, ElementsAre(Outcome{ERROR_FILE_NOT_FOUND, Step::kExamine, name}));
        EXPECT_TRUE(Exists(std::string("work/") + name));
    }
}

// More than there are descriptors; a new file gets the number of one that is gone. The limit of this process
// could not be raised again.
TEST_F(SecureDelete, HundredsOfItemsAreToldFromWhatTakesTheirPlace) {
    constexpr int kCount = 300;
    std::vector<std::string> names;
    for (int i = 0; i < kCount; ++i)
        Fill(names.emplace_back(std::to_string(i)), 10);
    const auto answer = test::InAnotherProcess([&]() -> std::string {
        const rlimit few{OpenDescriptors() + 40, OpenDescriptors() + 40};
        if (setrlimit(RLIMIT_NOFILE, &few) != 0) return "no limit";
        const RememberedPlace chosen = RememberPlace(test::InCurrentFolder(names));
        for (const std::string& name : {names.front(), names.back()}) {
            unlink(name.c_str());
            Fill(name, 10);
        }
        for (const RememberedObject& item : chosen.items)
            SecureDeleteItem(host, item);
        const Outcomes expected = {{ERROR_FILE_INVALID, Step::kCompare, names.front()},
                                   {ERROR_FILE_INVALID, Step::kCompare, names.back()}};
        return std::to_string(host.deleted.size()) + (host.failures == expected ? "" : ", other failures");
    });
    EXPECT_EQ(answer, std::to_string(kCount - 2));
}

TEST_F(SecureDelete, WhoMayHaveAForeignFileOpenIsNotKnown) {
    if (geteuid() != 0) GTEST_SKIP() << "becoming an ordinary user needs root";
    Fill("foreign", 100);
    Fill("own", 100);
    chmod("foreign", 0666);
    chmod(folder.Path("").c_str(), 0755);
    chmod(".", 0777);
    ASSERT_EQ(chown("own", 65534, 65534), 0);
    const host::UniqueFd other(open("foreign", O_RDONLY | O_CLOEXEC));
    for (const FileScrutiny scrutiny : {FileScrutiny::kOpeners, FileScrutiny::kObstacles}) {
        const auto answer = test::AsOrdinaryUser([this, scrutiny] {
            host.scrutiny = scrutiny;
            host.Delete("foreign");
            return std::string(host.obstacles == std::vector{OverwriteObstacle::kOpenersUnknown} ? "unknown"
                                                                                                 : "");
        });
        EXPECT_EQ(answer, "unknown");
        EXPECT_EQ(test::ReadWholeFile("foreign"), std::string(100, 'x'));
    }
    test::AsOrdinaryUser([this] {
        host.Delete("own");
        return std::string();
    });
    EXPECT_FALSE(Exists("work/own"));
}

TEST_F(SecureDelete, WhatCannotBeLookedAtIsNoFolder) {
    Fill("kept", 10);
    folder.MakeFolder("work/top");
    Fill("top/kept", 10);
    for (const char* name : {"missing", "..", ".", "", "top\\kept"})
        host.Delete(name);
    EXPECT_THAT(host.failures, ElementsAre(Outcome{ERROR_FILE_NOT_FOUND, Step::kExamine, "missing"},
                                           Outcome{ERROR_INVALID_NAME, Step::kEnterFolder, ".."},
                                           Outcome{ERROR_INVALID_NAME, Step::kEnterFolder, "."},
                                           Outcome{ERROR_INVALID_NAME, Step::kEnterFolder, ""},
                                           Outcome{ERROR_INVALID_NAME, Step::kOpenFile, "top\\kept"}));
    EXPECT_TRUE(Exists("work/kept") && Exists("work/top/kept"));
}

TEST_F(SecureDelete, VanishedEntriesAreToldAndTheRestGoes) {
    folder.MakeFolder("work/top");
    Fill("top/one", 10);
    Fill("top/two", 10);
    host.onEntry = [](const std::string& name) {
        if (name == "one") unlink("top/one");
    };
    host.Delete("top");
    EXPECT_THAT(host.failures, ElementsAre(Outcome{ERROR_FILE_NOT_FOUND, Step::kOpenFile, "one"}));
    EXPECT_THAT(host.deleted, ElementsAre("two", "top"));
}

TEST_F(SecureDelete, ThousandsOfNestedFoldersGo) {
    constexpr int kDepth = 5000;
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    if (limit.rlim_max < kDepth + 100) GTEST_SKIP() << "this machine allows too few open files";
    // In memory: a disk would be slow with so many folders.
    setenv("TMPDIR", "/dev/shm", 1);
    const test::TemporaryFolder memory;
    unsetenv("TMPDIR");
    std::filesystem::current_path(memory.Path());
    host::UniqueFd place(open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (int i = 0; i < kDepth; ++i) {
        ASSERT_EQ(mkdirat(place.Get(), "deep", 0700), 0);
        place = host::UniqueFd(openat(place.Get(), "deep", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }
    host.Delete("deep");
    EXPECT_THAT(host.failures, IsEmpty());
    EXPECT_EQ(host.deleted.size(), static_cast<std::size_t>(kDepth));
    EXPECT_TRUE(std::filesystem::is_empty(memory.Path()));
    std::filesystem::current_path("/");
}

}  // namespace
}  // namespace permora
