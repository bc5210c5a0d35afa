// Sharing a folder.
#include "shares/new_share_dialog.h"

#include <gmock/gmock.h>

#include "resources/resource_ids.h"
#include "tests/shares/share_table.h"

namespace permora::test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class NewShareDialog : public WithShareTable {
  protected:
    int Run(const UiDriver::Script& script) {
        ui.ExpectDialog(IDD_NEW_SHARE, script);
        return CNewShareDlg(nullptr).DoModal();
    }
};

TEST_F(NewShareDialog, SaysWhatIsWrongWhereItIsWritten) {
    AddShare("docs", nullptr);
    const struct {
        const char* folder;
        const char* name;
        const char* users;  // null: as many as allowed
        const char* fault;
        unsigned int field;  // 0: any
    } cases[] = {
        {"", "plans", nullptr, "choose the folder", IDC_SHARE_FOLDER},
        {R"(T:\docs)", "", nullptr, "enter a name", IDC_SHARE_NAME},
        {R"(T:\docs)", "a/b", nullptr, "cannot contain", IDC_SHARE_NAME},
        {R"(T:\docs)", "ipc$", nullptr, "reserved", IDC_SHARE_NAME},
        {R"(T:\docs)", "plans", "0", "how many users", IDC_SHARE_USER_LIMIT},
        {R"(T:\docs)", "plans", "4294967295", "how many users", IDC_SHARE_USER_LIMIT},
        {R"(T:\docs)", "plans", "7 or 8", "how many users", IDC_SHARE_USER_LIMIT},
        {R"(T:\docs)", "DOCS", nullptr, "Error: cannot share the folder: ", 0},
        {R"(T:\gone)", "plans", nullptr, "Error: cannot share the folder: ", 0},
    };
    EXPECT_EQ(Run([&](WindowDriver& dialog) {
                  for (const auto& each : cases) {
                      SCOPED_TRACE(each.fault);
                      dialog.SetText(IDC_SHARE_FOLDER, each.folder);
                      dialog.SetText(IDC_SHARE_NAME, each.name);
                      dialog.Click(each.users != nullptr ? IDC_SHARE_SOME_USERS : IDC_SHARE_ALL_USERS);
                      EXPECT_EQ(dialog.IsEnabled(IDC_SHARE_USER_LIMIT), each.users != nullptr);
                      if (each.users != nullptr) dialog.SetText(IDC_SHARE_USER_LIMIT, each.users);
                      ui.ExpectError(HasSubstr(each.fault));
                      dialog.Click(IDOK);
                      EXPECT_TRUE(each.field == 0 || dialog.FocusedControl() == each.field);
                  }
                  dialog.Press("Esc");
              }),
              IDCANCEL);
    EXPECT_THAT(FactsOf("plans"), StartsWith("error")) << "nothing was shared";
}

TEST_F(NewShareDialog, SharesAFolderForReaders) {
    const std::string path = folder.MakeFolder("plans");
    const auto share = [&](const char* name, const char* users) {
        EXPECT_EQ(Run([&](WindowDriver& dialog) {
                      dialog.SetText(IDC_SHARE_FOLDER, path);  // as the host writes it
                      dialog.SetText(IDC_SHARE_NAME, name);
                      dialog.SetText(IDC_SHARE_COMMENT, "What we want");
                      if (users != nullptr) {
                          dialog.Click(IDC_SHARE_SOME_USERS);
                          dialog.SetText(IDC_SHARE_USER_LIMIT, users);
                      }
                      dialog.Press("Return");
                  }),
                  IDOK);
    };
    share("Our plans", "12");
    EXPECT_THAT(FactsOf("our plans"), ::testing::EndsWith(R"(\plans, What we want, 12)"));
    EXPECT_EQ(ListOf("our plans"), "D:(A;;0x1200a9;;;WD)");
    share("all$", nullptr);
    EXPECT_THAT(FactsOf("all$"), ::testing::EndsWith(R"(\plans, What we want, 4294967295)"));
}

}  // namespace
}  // namespace permora::test
