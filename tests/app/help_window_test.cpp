// The program's own help: its pages as they are, and the window that shows them.
#include "app/help_window.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>

#include "app/help_topics.h"
#include "app/main_app.h"
#include "app/settings_store.h"
#include "framework/resource_templates.h"
#include "platform/host_path.h"
#include "resources/resource_ids.h"
#include "tests/app/shell_fakes.h"
#include "tests/app/system_fakes.h"
#include "tests/support/project_folders.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using test::UiDriver;
using test::WindowDriver;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

const std::string kProjectFolder = PathFromArgument(test::InProject(".").c_str());

// What is wrong with a reference to a page, or a place in it; empty: nothing.
std::string FaultOf(const std::string& place) {
    const std::size_t mark = place.find('#');
    const auto page = ReadHelpPage(kProjectFolder + R"(\help\)", place.substr(0, mark));
    if (!page) return "no such page: " + place;
    const bool isThere =
        mark == place.npos || page->find("id=\"" + place.substr(mark + 1) + '"') != page->npos;
    return isThere ? "" : "no such place: " + place;
}

TEST(HelpTopics, ExplainEveryDialogWithAPlaceThatThereIs) {
    std::set<unsigned int> explained;
    for (const HelpTopic& topic : HelpTopics()) {
        EXPECT_TRUE(explained.insert(topic.templateId).second) << topic.templateId;
        EXPECT_EQ(FaultOf(topic.place), "");
    }
    constexpr unsigned int kMostId = 2000;
    for (unsigned int id = 1; id <= kMostId; ++id)
        EXPECT_EQ(LoadDialogTemplate(id).has_value(), explained.contains(id)) << "dialog " << id;
}

TEST(HelpPages, LeadOnlyToPlacesThatThereAre) {
    for (const auto& file : std::filesystem::directory_iterator(test::InProject("help"))) {
        const std::string name = file.path().filename();
        if (!name.ends_with(".html")) continue;
        const std::string page = ReadHelpPage(kProjectFolder + R"(\help\)", name).value_or("");
        EXPECT_THAT(page, HasSubstr("<h1>"));
        EXPECT_EQ(page.find("<header"), page.npos);
        static const std::regex kLink("href=\"([^\"]*)\"");
        for (std::sregex_iterator link(page.begin(), page.end(), kLink), end; link != end; ++link) {
            const std::string target = (*link)[1];
            if (target != "style.css")
                EXPECT_EQ(FaultOf(target.starts_with('#') ? name + target : target), "");
        }
    }
}

// Pages of a program in a folder of the test's.
class HelpWindow : public ::testing::Test {
  protected:
    HelpWindow() {
        folder.MakeFolder("help");
        Write("help/index.html",
              "<h1>First</h1><a href='second.html#there'>on</a> <a href='https://web.example/'>web</a> "
              "<a href='../secret.html'>up</a> <a href='file:///etc/passwd'>file</a>");
        Write("help/second.html",
              "<h1>Second</h1><img src='http://web.example/x.png'><p id='there'>There</p>");
        Write("secret.html", "<h1>Secret</h1>");
    }
    void Write(const std::string& name, const std::string& text) const {
        std::ofstream(folder.Path(name)) << text;
    }
    // Follows the link that comes so many Tabs after the beginning of the page.
    static void Follow(WindowDriver& window, int tabs) {
        for (int i = 0; i < tabs; ++i)
            window.Press("Tab");
        window.Press("Return");
    }
    static WindowDriver Help() { return UiDriver::WindowTitled("Permora Help"); }

    const test::TemporaryFolder folder;
    test::ShellFakes shell;
    UiDriver ui;
};

TEST_F(HelpWindow, ReadsNothingButItsPages) {
    const std::string help = PathFromArgument(folder.Path("help").c_str()) + '\\';
    for (const char* name : {"../secret.html", R"(..\secret.html)", "", ".html", "index.htm", "/etc/passwd"})
        EXPECT_FALSE(ReadHelpPage(help, name)) << name;
    CHelpWindow window(nullptr, PathFromArgument(folder.Path().c_str()));
    EXPECT_FALSE(window.Show("third.html"));
    ASSERT_TRUE(window.Show("index.html"));
    WindowDriver shown = Help();
    EXPECT_TRUE(shown.WaitUntil([&] { return shown.HasFocus(IDC_HELP_PAGE); }));
    EXPECT_TRUE(shown.ShowsFocus(IDC_HELP_PAGE));
    EXPECT_FALSE(shown.IsEnabled(IDC_HELP_BACK) || shown.IsEnabled(IDC_HELP_FORWARD));

    for (const int link : {2, 3, 4}) {
        Follow(shown, link);
        EXPECT_THAT(shown.Text(IDC_HELP_PAGE), HasSubstr("First"));
        shown.Click(IDC_HELP_CONTENTS);
        window.Show("index.html");
    }
    EXPECT_THAT(shell.requests, ElementsAre("open https://web.example/"));

    Follow(shown, 1);
    EXPECT_THAT(shown.Text(IDC_HELP_PAGE), HasSubstr("There"));
    shown.Press("Alt+Left");
    EXPECT_THAT(shown.Text(IDC_HELP_PAGE), HasSubstr("First"));
    shown.Press("Alt+Right");
    EXPECT_THAT(shown.Text(IDC_HELP_PAGE), HasSubstr("There"));
    shown.Click(IDC_HELP_BACK);
    shown.Click(IDC_HELP_FORWARD);
    EXPECT_THAT(shown.Text(IDC_HELP_PAGE), HasSubstr("There"));
    shown.Press("Esc");
    EXPECT_FALSE(shown.IsOpen());
}

TEST_F(HelpWindow, IsReadBesideADialogThatWaits) {
    const test::SystemFakes system;
    ASSERT_EQ(StoreProgramFolder(SettingsOwner::kUser, kProjectFolder.c_str()), ERROR_SUCCESS);
    CMainApp app;
    ASSERT_TRUE(app.InitInstance());
    auto& frame = dynamic_cast<CMainFrame&>(*app.mainWindow);
    const auto readBeside = [&](WindowDriver& dialog) {
        dialog.Press("F1");
        WindowDriver help = Help();
        EXPECT_THAT(help.Text(IDC_HELP_PAGE), HasSubstr("How the list looks"));
        help.Click(IDC_HELP_CONTENTS);
        EXPECT_THAT(help.Text(IDC_HELP_PAGE), HasSubstr("The first five minutes"));
        help.Press("Alt+Left");
        EXPECT_THAT(help.Text(IDC_HELP_PAGE), HasSubstr("How the list looks"));
    };
    // Opened from a dialog; open already, when the next one comes.
    for (int i = 0; i < 2; ++i) {
        ui.ExpectDialog(IDD_SETTINGS, [&](WindowDriver& dialog) {
            readBeside(dialog);
            dialog.Press("Esc");
        });
        frame.RunCommand(ID_SETTINGS);
        EXPECT_TRUE(Help().IsOpen());
    }
    WindowDriver help = Help();
    help.Press("F1");
    EXPECT_THAT(help.Text(IDC_HELP_PAGE), HasSubstr("The first five minutes"));
    help.Press("Esc");
    EXPECT_FALSE(help.IsOpen());
    // The program's end does not wait for it.
    shell.refused = {"open"};
    frame.RunCommand(ID_HELP_CONTENTS);
    EXPECT_TRUE(Help().IsOpen());
    app.mainWindow->DestroyWindow();
}

}  // namespace
}  // namespace permora
