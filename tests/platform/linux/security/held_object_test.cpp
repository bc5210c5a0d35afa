// Objects that are held between a question and the action after it.
#include "platform/held_object.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/access_lists.h"
#include "tests/support/command.h"
#include "tests/support/patience.h"
#include "tests/support/recording_observer.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::Each;

class HeldObjectTest : public testing::Test {
  protected:
    void SetUp() override {
        if (SetDescriptorText(folder.Path(), "D:P(A;OICI;FA;;;BA)") == ERROR_NOT_SUPPORTED)
            GTEST_SKIP() << "the temporary folder holds no access lists";
        std::filesystem::current_path(folder.Path());
        start = std::make_shared<FolderHandle>();
        ASSERT_EQ(FolderHandle::Open(".", *start), ERROR_SUCCESS);
    }

    static DWORD Write(const HeldObject& object, const char* sddl, PSECURITY_DESCRIPTOR expected,
                       FailuresBelow& below) {
        const UniqueLocal<void> descriptor = DescriptorOf(sddl);
        return object.WriteSecurity(DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION,
                                    {.dacl = ListOf(descriptor)}, expected, Unrecorded(), below);
    }

    const TemporaryFolder folder;
    std::shared_ptr<FolderHandle> start;
};

TEST_F(HeldObjectTest, IsTheObjectThatWasFoundWhateverBecomesOfItsName) {
    folder.MakeFolder("sub");
    ASSERT_EQ(SetDescriptorText(folder.MakeFile("sub/one"), "D:P(A;;FR;;;BU)"), 0U);
    ASSERT_EQ(SetDescriptorText(folder.MakeFile("sub/other"), "D:P(A;;FX;;;BU)"), 0U);
    HeldObject held;
    ASSERT_EQ(start->HoldObject("sub\\one", held), ERROR_SUCCESS);
    const RememberedObject one(start, "sub\\one");
    const RememberedObject sub(start, "sub");
    const RememberedObject itself(start, "");
    const RememberedObject never(start, "never");
    folder.MakeFile("never");
    HeldObject found;
    EXPECT_EQ(never.Find(found), ERROR_FILE_NOT_FOUND) << "what was not there is not what was asked about";
    EXPECT_EQ(one.Find(found), ERROR_SUCCESS);

    std::filesystem::rename("sub/one", "sub/moved");
    EXPECT_EQ(one.Find(found), ERROR_FILE_NOT_FOUND);
    std::filesystem::rename("sub/other", "sub/one");
    EXPECT_EQ(one.Find(found), ERROR_FILE_INVALID);
    FailuresBelow below;
    EXPECT_EQ(Write(held, "D:(A;;FA;;;BG)", nullptr, below), ERROR_SUCCESS);
    EXPECT_EQ(DaclText(folder.Path("sub/moved")), "D:PAI(A;;FA;;;BG)");
    EXPECT_EQ(DaclText(folder.Path("sub/one")), "D:PAI(A;;FX;;;BU)");
    std::filesystem::rename("sub/one", "sub/other");
    std::filesystem::rename("sub/moved", "sub/one");
    EXPECT_EQ(one.Find(found), ERROR_SUCCESS) << "the name leads to it again";

    // A link in the place of a folder is another object, wherever it leads.
    std::filesystem::rename("sub", "gone");
    std::filesystem::create_directory_symlink("gone", "sub");
    EXPECT_EQ(sub.Find(found), ERROR_FILE_INVALID);

    // The folder that names are relative to has none itself.
    const std::filesystem::path renamed = folder.Path() + ".renamed";
    std::filesystem::rename(folder.Path(), renamed);
    EXPECT_EQ(itself.Find(found), ERROR_SUCCESS);
    EXPECT_TRUE(found.IsFolder());
    std::filesystem::rename(renamed, folder.Path());
}

TEST_F(HeldObjectTest, ManyObjectsAreKnownAgainWithFewDescriptors) {
    constexpr std::size_t kObjects = 300;
    std::vector<std::string> names;
    for (std::size_t i = 0; i < kObjects; ++i) {
        names.push_back('f' + std::to_string(i));
        folder.MakeFile(names.back());
    }
    const auto answer = InAnotherProcess([&]() -> std::string {
        constexpr rlimit kLimit{64, 64};
        if (setrlimit(RLIMIT_NOFILE, &kLimit) != 0) return "no limit";
        std::vector<RememberedObject> objects;
        for (const std::string& name : names)
            objects.emplace_back(start, name);
        HeldObject found;
        for (const RememberedObject& object : objects)
            if (const DWORD error = object.Find(found); error != ERROR_SUCCESS)
                return object.Path() + " " + std::to_string(error);
        found = HeldObject();
        // The last one was not kept open, so its number is free when it is deleted.
        const std::string last = folder.Path(names.back());
        struct stat before {};
        struct stat after {};
        stat(last.c_str(), &before);
        for (int i = 0; i < 1000 && after.st_ino != before.st_ino; ++i) {
            std::filesystem::remove(last);
            folder.MakeFile(names.back());
            stat(last.c_str(), &after);
        }
        return std::to_string(objects.back().Find(found)) +
               (after.st_ino == before.st_ino ? " with the number" : " with another number");
    });
    ASSERT_TRUE(answer);
    EXPECT_THAT(*answer, testing::StartsWith(std::to_string(ERROR_FILE_INVALID)));
    RecordProperty("successor", *answer);
}

TEST_F(HeldObjectTest, AListThatIsAnotherOneByNowIsLeftAlone) {
    const std::string file = folder.MakeFile("file");
    ASSERT_EQ(SetDescriptorText(file, "D:P(A;;FR;;;BU)"), 0U);
    const HeldObject held = Held(file);
    ReadParts read;
    FailuresBelow below;
    ASSERT_EQ(held.ReadSecurity(DACL_SECURITY_INFORMATION, read), ERROR_SUCCESS);
    for (const char* foreign : {"D:P(A;;FX;;;BU)", "D:(A;;FR;;;BU)", "D:NO_ACCESS_CONTROL", "D:P"}) {
        ASSERT_EQ(SetDescriptorText(file, foreign), 0U);
        const std::string now = DaclText(file);
        EXPECT_EQ(Write(held, "D:(A;;FA;;;BG)", read.descriptor.get(), below), ERROR_REVISION_MISMATCH)
            << foreign;
        EXPECT_EQ(DaclText(file), now);
    }
    // Another owner is no other list.
    ASSERT_EQ(SetDescriptorText(file, "O:BGD:P(A;;FR;;;BU)"), 0U);
    EXPECT_EQ(Write(held, "D:(A;;FA;;;BG)", read.descriptor.get(), below), ERROR_SUCCESS);
    EXPECT_EQ(DaclText(file), "D:PAI(A;;FA;;;BG)");

    // Without a stored list, the mode is the list.
    const std::string plain = folder.MakeFile("plain");
    ASSERT_EQ(chmod(plain.c_str(), 0600), 0);
    const HeldObject heldPlain = Held(plain);
    ASSERT_EQ(heldPlain.ReadSecurity(DACL_SECURITY_INFORMATION, read), ERROR_SUCCESS);
    ASSERT_EQ(chmod(plain.c_str(), 0644), 0);
    const std::string now = DaclText(plain);
    EXPECT_EQ(Write(heldPlain, "D:(A;;FA;;;BG)", read.descriptor.get(), below), ERROR_REVISION_MISMATCH);
    EXPECT_EQ(DaclText(plain), now);
}

TEST_F(HeldObjectTest, AFailureBelowIsNamedAndCounted) {
    for (const char* name : {"top", "top/sub", "top/sub/deep"})
        folder.MakeFolder(name);
    for (const char* name : {"top/sub/deep/a", "top/sub/deep/b"})
        ASSERT_EQ(setxattr(folder.MakeFile(name).c_str(),
                           geteuid() == 0 ? "security.NTACL" : "user.permora.sd", "\x01\x00garbage", 9, 0),
                  0);
    FailuresBelow below;
    ASSERT_EQ(Write(Held(folder.Path("top")), "D:(A;OICI;FA;;;BG)", nullptr, below), ERROR_SUCCESS);
    EXPECT_EQ(below.count, 2U);
    EXPECT_THAT(below.named,
                testing::ElementsAre(testing::Pair("sub\\deep\\a", ERROR_INVALID_SECURITY_DESCR),
                                     testing::Pair("sub\\deep\\b", ERROR_INVALID_SECURITY_DESCR)));
    EXPECT_EQ(DaclText(folder.Path("top")), "D:PAI(A;OICI;FA;;;BG)");
}

TEST_F(HeldObjectTest, OneProgramWaitsForTheOtherAndNobodyElseCanMakeItWait) {
    const std::string file = folder.MakeFile("file");
    const std::string other = folder.MakeFile("other");
    auto held = std::make_unique<HeldObject>(Held(file));
    ASSERT_EQ(held->TakeTurn(), ERROR_SUCCESS);
    ASSERT_EQ(held->TakeTurn(), ERROR_SUCCESS) << "who has it need not wait";
    // A process of its own would wait for ten seconds; a look at the lock is enough. One that need not wait
    // has all the time that it takes on a busy machine.
    const auto mayChange = [](const std::string& path, unsigned seconds = 0) {
        return InAnotherProcess([&] {
                   alarm(seconds);  // ends the process while it waits
                   HeldObject object = Held(path);
                   return std::string(object.TakeTurn() == ERROR_SUCCESS ? "yes" : "no");
               })
            .value_or("waits");
    };
    EXPECT_EQ(mayChange(file, 1), "waits");
    EXPECT_EQ(mayChange(other), "yes");
    held.reset();
    EXPECT_EQ(mayChange(file), "yes");
    if (geteuid() != 0) return;
    held = std::make_unique<HeldObject>(Held(file));
    ASSERT_EQ(AsOrdinaryUser([&] {
                  std::filesystem::current_path("/");
                  return std::to_string(access("/run/permora.lock", R_OK) == 0 ? 1 : 0);
              }),
              "0");
}

// Has the turn on a folder taken while a walk is at something in it.
class Rival : public RecordingObserver {
  public:
    explicit Rival(HeldObject& wanted) : folder(wanted) {}

    bool Begin(const char* name) override {
        if (std::string(name) == "inside") {
            thread = std::jthread([this] { isTaken = folder.TakeTurn() == ERROR_SUCCESS; });
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            wasTakenInside = isTaken;
        }
        return RecordingObserver::Begin(name);
    }

    std::atomic<bool> isTaken = false;
    bool wasTakenInside = false;

  private:
    HeldObject& folder;
    std::jthread thread;
};

// The objects in it inherit from the list that the walk keeps of the folder.
TEST_F(HeldObjectTest, AWalkKeepsTheTurnOnTheFoldersThatItIsIn) {
    folder.MakeFolder("top");
    folder.MakeFolder("top/sub");
    folder.MakeFile("top/sub/inside");
    HeldObject top;
    HeldObject sub;
    ASSERT_EQ(start->HoldObject("top", top), ERROR_SUCCESS);
    ASSERT_EQ(start->HoldObject("top\\sub", sub), ERROR_SUCCESS);
    const UniqueLocal<void> nothing = DescriptorOf("D:");
    Rival rival(sub);
    TreeCounts counts;
    EXPECT_EQ(top.SetListsBelow(ListOf(nothing), TreeListMode::kWrite, Unrecorded(), rival, counts),
              ERROR_SUCCESS);
    EXPECT_EQ(counts.changed + counts.unchanged, 2U);
    EXPECT_FALSE(rival.wasTakenInside);
    EXPECT_TRUE(Await([&rival] { return rival.isTaken.load(); })) << "the walk has ended";
}

}  // namespace
}  // namespace permora::test
