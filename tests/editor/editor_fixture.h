// The security editor on files of the test's own.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "editor/security_sheet.h"
#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/host_path.h"
#include "tests/support/access_lists.h"
#include "tests/support/places.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/ui_driver.h"

namespace permora::test {

// The current directory is a temporary folder whose list hands nothing down.
class EditorTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const DWORD error = test::SetDescriptorText(folder.Path(), "D:P(A;;FA;;;BA)");
        if (error == ERROR_NOT_SUPPORTED) GTEST_SKIP() << "the temporary folder holds no access lists";
        ASSERT_EQ(error, ERROR_SUCCESS);
        ASSERT_NE(SetCurrentDirectoryA(PathFromArgument(folder.Path().c_str()).c_str()), FALSE);
        MakeFiles();
    }
    virtual void MakeFiles() = 0;

    static void Give(const std::string& path, const std::string& sddl) {
        ASSERT_EQ(test::SetDescriptorText(path, sddl), ERROR_SUCCESS) << path;
    }

    // Opens the editor on `names` and shows its page `tab`; the script ends with a button of the sheet.
    void Edit(std::vector<std::string> names, const UiDriver::Script& script,
              const std::string& tab = "Permissions") {
        Edit(InCurrentFolder(std::move(names)), script, tab);
    }
    void Edit(const Place& place, const UiDriver::Script& script, const std::string& tab = "Permissions") {
        ui.ExpectSheet("Security Editor - " + place.names.front(), [&](WindowDriver& window) {
            if (window.ActiveTab() != tab) window.SwitchToTab(tab);
            script(window);
        });
        EditSecurity(nullptr, place, changes, {nullptr, askBeforeLosses});
    }

    const test::TemporaryFolder folder;
    ChangeSession changes{History::UsualPath(), {}};
    std::uint8_t* askBeforeLosses = nullptr;  // nobody is asked
    UiDriver ui;
};

}  // namespace permora::test
