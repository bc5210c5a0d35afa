// The commands that change files, on real ones, with the clipboard of the toolkit.
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "browser/clipboard_block.h"
#include "browser/desktop_files.h"
#include "framework/clipboard.h"
#include "framework/file_operation_ids.h"
#include "resources/resource_ids.h"
#include "tests/browser/browser_fixture.h"

namespace permora::test {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

class BrowserFiles : public BrowserTest {
  protected:
    BrowserFiles() {
        setenv("XDG_DATA_HOME", folder.Path(".data").c_str(), 1);  // where the trash is
        folder.MakeFolder("from");
        folder.MakeFolder("from/sub");
        folder.MakeFile("from/sub/deep");
        std::ofstream(folder.Path("from/a b.txt")) << "contents";
        folder.MakeFolder("to");
    }
    ~BrowserFiles() override { unsetenv("XDG_DATA_HOME"); }

    void Run(unsigned int command) { frame.RunCommand(command); }
    void Go(const std::string& path) {
        view.GoToLocation(path);
        ASSERT_EQ(view.Rows().Folder(), path);
    }
    void Select(const std::string& name) {
        for (int row = 0; row < view.List().GetItemCount(); ++row)
            view.List().SetSelected(row, view.List().GetItemText(row, 0) == name);
    }
    void ExpectQuestion(unsigned int answer) {
        ui.ExpectDialog(kFileQuestionWindowId, [answer](WindowDriver& window) { window.Click(answer); });
    }
    bool Exists(const std::string& name) { return std::filesystem::exists(folder.Path(name)); }
    std::string Read(const std::string& name) {
        std::ifstream file(folder.Path(name));
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void PutOnClipboard(const char* format, const std::string& bytes) {
        Clipboard clipboard(frame);
        clipboard.Empty();
        const std::vector<std::uint8_t> block(bytes.begin(), bytes.end());
        EXPECT_TRUE(clipboard.SetData(RegisterClipboardFormat(format), block));
    }
};

TEST_F(BrowserFiles, CopiesArePastedAgainAndAgainAndWhatWasCutOnce) {
    folder.MakeFolder("third");
    Start(R"(T:\from)");
    view.SelectAll();
    Run(ID_EDIT_COPY);
    for (const char* target : {R"(T:\to)", R"(T:\third)"}) {
        Go(target);
        Run(ID_EDIT_PASTE);
        EXPECT_THAT(Names(), UnorderedElementsAre("a b.txt", "sub"));
    }
    EXPECT_EQ(Read("to/a b.txt"), "contents");
    EXPECT_TRUE(Exists("third/sub/deep") && Exists("from/sub/deep"));
    ExpectQuestion(IDCANCEL);  // they are there already
    Run(ID_EDIT_PASTE);

    Go(R"(T:\third)");
    Select("a b.txt");
    Run(ID_EDIT_CUT);
    EXPECT_TRUE(Exists("third/a b.txt"));
    EXPECT_TRUE(HasFilesToPaste());
    Go(R"(T:\)");
    Run(ID_EDIT_PASTE);
    EXPECT_THAT(Names(), UnorderedElementsAre("from", "third", "to", "a b.txt"));
    EXPECT_THAT(view.SelectedNames(), ElementsAre("a b.txt"));
    EXPECT_FALSE(Exists("third/a b.txt"));
    EXPECT_FALSE(HasFilesToPaste());
    Run(ID_EDIT_PASTE);
}

TEST_F(BrowserFiles, GoToAndComeFromOtherProgramsOfTheDesktop) {
    Start(R"(T:\from)");
    Select("a b.txt");
    Run(ID_EDIT_CUT);
    const std::string url = "file://" + folder.Path("from/a%20b.txt");
    const auto offered = [this](const char* format) {
        std::vector<std::uint8_t> bytes;
        EXPECT_EQ(Clipboard(frame).GetData(RegisterClipboardFormat(format), bytes), ClipboardAnswer::kGiven);
        return std::string(bytes.begin(), bytes.end());
    };
    EXPECT_EQ(offered(kUriListFormatName), url + "\r\n");
    EXPECT_EQ(offered(kGnomeFilesFormatName), "cut\n" + url);
    EXPECT_EQ(offered(kKdeCutFormatName), "1");

    Go(R"(T:\to)");
    PutOnClipboard(kUriListFormatName, "file://" + folder.Path("from/sub") + "\r\n" + url + "\r\n");
    Run(ID_EDIT_PASTE);
    EXPECT_THAT(Names(), UnorderedElementsAre("a b.txt", "sub"));
    EXPECT_TRUE(Exists("from/a b.txt"));
    Go(R"(T:\)");
    PutOnClipboard(kGnomeFilesFormatName, "cut\n" + url);
    Run(ID_EDIT_PASTE);
    EXPECT_FALSE(Exists("from/a b.txt"));
    EXPECT_FALSE(HasFilesToPaste());
    std::string wide("\x14\0\0\0\0\0\0\0\0\0\0\0\1\0\0\0\1\0\0\0", 20);
    for (const char letter : "T:\\a b.txt\0"s)
        wide += {letter, '\0'};
    PutOnClipboard(kClipboardFormatName, wide + "\0\0"s);
    Go(R"(T:\from)");
    Run(ID_EDIT_PASTE);
    EXPECT_EQ(Read("from/a b.txt"), "contents");
}

TEST_F(BrowserFiles, NothingIsTouchedByWhatCannotBePasted) {
    Start(R"(T:\to)");
    const std::pair<const char*, std::string> kCases[] = {
        {kClipboardFormatName, "\x14"},
        {kGnomeFilesFormatName, "copy\nfile:///etc/../etc/hostname"},
        {kUriListFormatName, "http://host.example/a"},
    };
    for (const auto& [format, bytes] : kCases) {
        PutOnClipboard(format, bytes);
        ExpectError("Error: the ");
        Run(ID_EDIT_PASTE);
        EXPECT_THAT(Names(), ElementsAre()) << format;
        EXPECT_TRUE(HasFilesToPaste());
    }
    const Clipboard held(frame);
    ExpectError("Error: cannot open the clipboard.");
    Run(ID_EDIT_PASTE);
    Go(R"(T:\from)");
    view.SelectAll();
    ExpectError("Error: cannot open the clipboard.");
    Run(ID_EDIT_COPY);
}

TEST_F(BrowserFiles, AreDeletedWhenTheUserSaysSo) {
    Start(R"(T:\from)");
    view.SelectAll();
    ExpectQuestion(IDCANCEL);
    Window().Press("Del");
    EXPECT_THAT(Names(), UnorderedElementsAre("a b.txt", "sub"));
    Select("a b.txt");
    ExpectQuestion(IDYES);
    Run(ID_DELETE);
    EXPECT_THAT(Names(), ElementsAre("sub"));
    EXPECT_EQ(Read(".data/Trash/files/a b.txt"), "contents");
}

TEST_F(BrowserFiles, TakeNewNames) {
    Start(R"(T:\from)");
    const auto rename = [this](const std::string& from, const std::string& to) {
        Select(from);
        ui.ExpectDialog(IDD_RENAME, [&](WindowDriver& dialog) {
            EXPECT_EQ(dialog.Text(IDC_NEW_NAME), from);
            dialog.Press("X");  // in the place of all but the extension
            EXPECT_EQ(dialog.Text(IDC_NEW_NAME), from == "a b.txt" ? "x.txt" : "x");
            dialog.SetText(IDC_NEW_NAME, to);
            dialog.Press("Return");
        });
        Window().Press("F2");
    };
    const char* const kOdd = "A'b %41 \u65E5\u672C&.txt";
    rename("a b.txt", kOdd);
    EXPECT_THAT(Names(), UnorderedElementsAre(kOdd, "sub"));
    folder.MakeFile("from/new");
    rename("sub", "");  // lists again all the same
    EXPECT_THAT(Names(), UnorderedElementsAre(kOdd, "new", "sub"));
    rename("sub", "sub");
    rename("new", "NEW");
    EXPECT_THAT(view.SelectedNames(), ElementsAre("NEW"));
    EXPECT_THAT(Names(), UnorderedElementsAre(kOdd, "NEW", "sub"));
    Select("sub");
    ui.ExpectDialog(IDD_RENAME, [this](WindowDriver& dialog) {
        dialog.SetText(IDC_NEW_NAME, "a/b");
        ExpectQuestion(IDNO);  // it cannot be done
        dialog.Click(IDOK);
    });
    Run(ID_RENAME);
    EXPECT_THAT(Names(), UnorderedElementsAre(kOdd, "NEW", "sub"));
}

TEST_F(BrowserFiles, NewFoldersAreMadeWhereTheUserIs) {
    Start(R"(T:\from)");
    ui.ExpectDialog(IDD_NEW_FOLDER, [this](WindowDriver& dialog) {
        EXPECT_EQ(dialog.Text(IDC_FOLDER_NAME), "New Folder");
        dialog.SetText(IDC_FOLDER_NAME, "");
        ui.ExpectInformation("You should specify directory name.");
        dialog.Click(IDOK);
        dialog.SetText(IDC_FOLDER_NAME, "caf\u00E9 100%");
        dialog.Click(IDOK);
    });
    frame.RunCommand(ID_NEW_FOLDER);
    EXPECT_THAT(Names(), UnorderedElementsAre("caf\u00E9 100%", "sub", "a b.txt"));
    EXPECT_THAT(view.SelectedNames(), ElementsAre("caf\u00E9 100%"));
    frame.RunCommand(ID_COPY_HOST_PATH);
    std::vector<std::uint8_t> copied;
    EXPECT_EQ(Clipboard(frame).GetData(RegisterClipboardFormat("text/plain"), copied),
              ClipboardAnswer::kGiven);
    EXPECT_EQ(std::string(copied.begin(), copied.end()), folder.Path("from/caf\u00E9 100%"));
    ui.ExpectDialog(IDD_NEW_FOLDER, [](WindowDriver& dialog) {
        dialog.SetText(IDC_FOLDER_NAME, "sub");
        dialog.Click(IDOK);
    });
    ExpectError("");
    frame.RunCommand(ID_NEW_FOLDER);
    ui.ExpectDialog(IDD_NEW_FOLDER, [this](WindowDriver& dialog) {
        dialog.SetText(IDC_FOLDER_NAME, folder.Path("to/deeper"));
        dialog.Click(IDOK);
    });
    frame.RunCommand(ID_NEW_FOLDER);
    EXPECT_TRUE(Exists("to/deeper"));
    view.GoToRoot();
    ui.ExpectInformation("Please, enter the disk volume where you would like to create new folder.");
    frame.RunCommand(ID_NEW_FOLDER);
}

TEST_F(BrowserFiles, CommandsNeedRowsOfTheFolderThatIsShown) {
    Start(R"(T:\from)");
    const unsigned int kCommands[] = {ID_EDIT_CUT, ID_EDIT_COPY, ID_DELETE, ID_RENAME};
    for (const unsigned int command : kCommands) {
        ui.ExpectInformation(command == ID_RENAME ? "Please, select an item to work with."
                                                  : "Please, select items to work with them.");
        Run(command);
    }
    // Another folder has taken the path, with files of the same names. It is shown, not changed.
    PutOnClipboard(kGnomeFilesFormatName, "cut\nfile://" + folder.Path("to"));
    folder.MakeFolder("other");
    folder.MakeFile("other/a b.txt");
    for (const unsigned int command : std::initializer_list<unsigned int>{
             ID_EDIT_CUT, ID_EDIT_COPY, ID_EDIT_PASTE, ID_DELETE, ID_RENAME, ID_NEW_FOLDER}) {
        Go(R"(T:\from)");
        view.SelectAll();
        std::filesystem::rename(folder.Path("from"), folder.Path("real"));
        ASSERT_EQ(chdir(folder.Path("other").c_str()), 0);
        std::filesystem::create_directory_symlink("other", folder.Path("from"));
        ExpectError("");
        command == ID_NEW_FOLDER ? frame.RunCommand(ID_NEW_FOLDER) : Run(command);
        const bool isListedAgain = command != ID_EDIT_CUT && command != ID_EDIT_COPY;
        EXPECT_EQ(view.Rows().Folder(), isListedAgain ? R"(T:\other)" : R"(T:\from)") << command;
        std::filesystem::remove(folder.Path("from"));
        std::filesystem::rename(folder.Path("real"), folder.Path("from"));
    }
    EXPECT_TRUE(Exists("other/a b.txt") && Exists("to"));
    Select("a b.txt");
    ui.ExpectDialog(IDD_RENAME, [this](WindowDriver& dialog) {
        std::filesystem::rename(folder.Path("other"), folder.Path("away"));
        std::filesystem::create_directory_symlink("from", folder.Path("other"));
        dialog.SetText(IDC_NEW_NAME, "new");
        ExpectError("");
        dialog.Press("Return");
    });
    Run(ID_RENAME);
    EXPECT_TRUE(Exists("from/a b.txt") && Exists("away/a b.txt"));

    view.GoToRoot();
    view.SelectAll();
    for (const unsigned int command : kCommands)
        Run(command);
    Run(ID_EDIT_PASTE);
    EXPECT_TRUE(HasFilesToPaste());
}

}  // namespace
}  // namespace permora::test
