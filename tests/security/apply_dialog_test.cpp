// On real files, with the window without a display.
#include "security/apply_dialog.h"
#include "platform/system_message.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <sys/xattr.h>

#include <filesystem>
#include <future>
#include <optional>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/threads.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"
#include "security/object_security.h"
#include "tests/support/access_lists.h"
#include "tests/support/places.h"
#include "tests/support/refused_threads.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/ui_driver.h"

namespace {

// Services that fail or wait on demand (CMakeLists.txt).
bool areListsRefused = false;
std::optional<std::shared_future<void>> workMayGoOn;

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the linker demands these names
extern "C" {

BOOL __real_InitializeAcl(PACL acl, DWORD size, DWORD revision);
BOOL __wrap_InitializeAcl(PACL acl, DWORD size, DWORD revision) {
    if (workMayGoOn && areListsRefused) workMayGoOn->wait();
    return areListsRefused ? FALSE : __real_InitializeAcl(acl, size, revision);
}

int __real_setxattr(const char* path, const char* name, const void* value, size_t size, int flags);
int __wrap_setxattr(const char* path, const char* name, const void* value, size_t size, int flags) {
    if (workMayGoOn) workMayGoOn->wait();
    return __real_setxattr(path, name, value, size, flags);
}

int __real_fsetxattr(int file, const char* name, const void* value, size_t size, int flags);
int __wrap_fsetxattr(int file, const char* name, const void* value, size_t size, int flags) {
    if (workMayGoOn) workMayGoOn->wait();
    return __real_fsetxattr(file, name, value, size, flags);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)

namespace permora {
namespace {

using test::DaclText;
using test::SetDescriptorText;
using test::UiDriver;
using test::WindowDriver;

constexpr UINT kErrorBox = MB_OK | MB_ICONERROR;

class ApplyDialog : public ::testing::Test {
  protected:
    // The folder "top" hands an entry down; the file in it has a protected list of its own.
    void SetUp() override {
        const DWORD error = SetDescriptorText(folder.MakeFolder("top"), "D:P(A;OICI;FA;;;BA)");
        if (error == ERROR_NOT_SUPPORTED) GTEST_SKIP() << "the temporary folder holds no access lists";
        ASSERT_EQ(error, ERROR_SUCCESS);
        child = folder.MakeFile("top/a && b");
        ASSERT_EQ(SetDescriptorText(child, kOwnList), ERROR_SUCCESS);
        folder.MakeFile("file");
        std::filesystem::current_path(folder.Path());
    }
    void TearDown() override {
        test::areThreadsRefused = areListsRefused = false;
        workMayGoOn.reset();
    }

    int Run(std::vector<std::string> names) {
        const RememberedPlace place = RememberPlace(test::InCurrentFolder(std::move(names)));
        const std::vector<ObjectPlace> places = PlacesOf(place.items, Contents::kToo);
        ChangeResults results;
        ApplyDlg dialog(nullptr, Unrecorded(), results);
        dialog.items = place.items;
        dialog.places = places;
        const int result = dialog.DoModal();
        failures = results.Count(ResultState::kFailed);
        EXPECT_EQ(results.RowCount(), failures);
        return result;
    }

    static constexpr const char* kOwnList = "D:PAI(A;;FA;;;WD)";

    const test::TemporaryFolder folder;
    std::string child;
    std::size_t failures = 0;
    std::promise<void> gate;
    UiDriver ui;
};

TEST_F(ApplyDialog, ShowsTheBareNameAndStaysUntilAllIsDone) {
    workMayGoOn = gate.get_future().share();
    ui.ExpectDialog(IDD_APPLY_TO_TREE, [&](WindowDriver& dialog) {
        EXPECT_EQ(dialog.Title(), "Applying settings");
        EXPECT_TRUE(dialog.WaitUntil([&] { return dialog.Text(IDC_APPLY_PROGRESS) == "a && b"; }));
        dialog.Press("Esc");
        dialog.Press("Return");
        EXPECT_NONFATAL_FAILURE(dialog.ClickCloseBox(), "no close box");
        EXPECT_TRUE(dialog.IsOpen());
        EXPECT_EQ(DaclText(child), kOwnList);
        gate.set_value();
    });
    EXPECT_EQ(Run({"file", "top", "missing"}), IDOK);
    EXPECT_EQ(failures, 1U);
    EXPECT_EQ(DaclText(child), "D:AI(A;ID;FA;;;BA)");
    EXPECT_EQ(std::filesystem::current_path(), folder.Path());
}

TEST_F(ApplyDialog, TellsWhyItCannotStartAndTouchesNothing) {
    test::areThreadsRefused = true;
    ui.ExpectMessageBox(GetSystemMessageText(ERROR_NOT_ENOUGH_MEMORY), kErrorCaption, kErrorBox, IDOK);
    EXPECT_EQ(Run({"top"}), 3);
    test::areThreadsRefused = false;

    areListsRefused = true;
    workMayGoOn = gate.get_future().share();
    ui.ExpectDialog(IDD_APPLY_TO_TREE, [&](WindowDriver&) { gate.set_value(); });
    ui.ExpectMessageBox("Error: cannot initialize object's access control list", kErrorCaption, kErrorBox,
                        IDOK);
    EXPECT_EQ(Run({"top"}), 3);
    EXPECT_EQ(failures, 0U);
    EXPECT_EQ(DaclText(child), kOwnList);
}

}  // namespace
}  // namespace permora
