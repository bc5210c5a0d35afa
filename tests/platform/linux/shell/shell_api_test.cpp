#include "platform/api/shell.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>

#include "platform/api/errors.h"
#include "platform/file_types.h"
#include "platform/linux/base/run_tool.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/shell_icons.h"
#include "tests/platform/linux/files/files_fixture.h"
#include "tests/support/command.h"
#include "tests/support/patience.h"
#include "tests/support/scoped_variable.h"

namespace permora::host {
namespace {

// A desktop of its own for this process, which reads it once: types, icons, and a program that notes what it
// is asked to open.
class Desktop {
  public:
    static const Desktop& Get() {
        static const Desktop desktop;
        return desktop;
    }

    // What the program was handed; waits for it.
    std::string Opened() const {
        EXPECT_TRUE(test::Await([this] { return std::filesystem::exists(note); }));
        std::string text = test::ReadWholeFile(note);
        std::filesystem::remove(note);
        return text;
    }

  private:
    Desktop() : note(home.Path("note")) {
        for (const char* variable : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_DATA_DIRS"})
            setenv(variable, home.Path().c_str(), 1);
        setenv("LC_ALL", "C", 1);
        std::filesystem::create_directories(home.Path("mime/application"));
        std::filesystem::create_directories(home.Path("applications"));
        Write("mime/globs2",
              "50:application/x-noted:*.noted\n50:application/vnd.ms-htmlhelp:*.chm\n50:text/html:*.html\n");
        Write("program", "#!/bin/sh\nprintf '%s|' \"$@\" \"$PATH\" \"$SECRET\" > " + note + ".new\nmv " +
                             note + ".new " + note + "\n");
        chmod(home.Path("program").c_str(), 0755);
        Write("applications/noting.desktop",
              "[Desktop Entry]\nType=Application\nName=Noting\nExec=" + home.Path("program") +
                  " %f\nMimeType=application/x-noted;text/html;\n");
        Write("mimeapps.list",
              "[Default Applications]\napplication/x-noted=noting.desktop\ntext/html=noting.desktop\n");
    }
    void Write(const std::string& name, const std::string& text) const {
        std::ofstream(home.Path(name)) << text;
    }

    test::TemporaryFolder home;
    std::string note;
};

class Shell : public OnDriveT {
  protected:
    Shell() { Desktop::Get(); }

    const test::ScopedVariable noTools{"PATH", "/nowhere"};
    const test::ScopedVariable secret{"SECRET", "ours"};
    static std::uintptr_t Open(const char* file, const char* operation = "open") {
        return reinterpret_cast<std::uintptr_t>(
            ShellExecuteA(nullptr, operation, file, nullptr, nullptr, SW_SHOW));
    }
    // With something in it: the desktop does not ask for the type of an empty file.
    std::string MakeFile(const std::string& name) const {
        std::ofstream(folder.Path(name)) << "content";
        return folder.Path(name);
    }
};

// Knows one ending, and calls a type by its own name.
class KnownTypes : public FileTypes {
  public:
    KnownTypes() : before(thePresenters.fileTypes.exchange(this)) {}
    ~KnownTypes() override { thePresenters.fileTypes = before; }
    KnownTypes(const KnownTypes&) = delete;
    KnownTypes& operator=(const KnownTypes&) = delete;

    std::string TypeOfName(const std::string& hostName) const override {
        return hostName.ends_with(".noted") ? "noted" : "";
    }
    std::string TextOf(const std::string& type) const override {
        if (type == "noted") return std::string(78, 'x').append("äö");
        return type == "application/octet-stream" ? "" : type;
    }
    ShellIcon IconOf(const std::string& type) const override {
        return {nullptr, type == "noted" ? picture : nullptr};
    }

    const std::shared_ptr<const ShellPicture> picture = std::make_shared<const ShellPicture>();

  private:
    const FileTypes* before;
};

TEST_F(Shell, TellsWhatAnObjectIsByItsKindAndElseByItsName) {
    const KnownTypes types;
    MakeFile("a.noted");
    MakeFile("b.lonely");
    MakeFile("run");
    chmod(folder.Path("run").c_str(), 0755);
    folder.MakeFolder("folder.noted");
    ASSERT_EQ(mkfifo(folder.Path("pipe.noted").c_str(), 0600), 0);
    ASSERT_EQ(symlink("folder.noted", folder.Path("link").c_str()), 0);
    ASSERT_EQ(symlink("nowhere", folder.Path("dead.noted").c_str()), 0);
    const std::pair<const char*, std::string> kTexts[] = {
        {"a.noted", std::string(78, 'x')},  // cut between two characters
        {"folder.noted", "inode/directory"}, {"link", "inode/directory"},
        {"T:\\", "inode/directory"},         {"dead.noted", "inode/symlink"},
        {"pipe.noted", "inode/fifo"},        {"run", "application/x-executable"},
    };
    SHFILEINFOA info{};
    for (const auto& [path, text] : kTexts) {
        EXPECT_NE(SHGetFileInfoA(path, 0, &info, sizeof info, SHGFI_TYPENAME), 0U) << path;
        EXPECT_EQ(std::string(info.szTypeName), text) << path;
    }
    const std::string last = info.szTypeName;
    for (const auto& [path, error] :
         {std::pair("b.lonely", ERROR_NOT_FOUND), std::pair("missing", ERROR_FILE_NOT_FOUND)}) {
        EXPECT_EQ(SHGetFileInfoA(path, 0, &info, sizeof info, SHGFI_TYPENAME), 0U) << path;
        EXPECT_EQ(GetLastError(), error) << path;
        EXPECT_EQ(info.szTypeName, last);
    }
    EXPECT_EQ(FindShellIcon(ShellIconKindOf("a.noted")).small, types.picture);
    for (const char* none : {"folder.noted", "missing"})
        EXPECT_FALSE(FindShellIcon(ShellIconKindOf(none)).small) << none;
}

TEST_F(Shell, OpensFilesOfAnyNameWithTheDesktopsProgram) {
    if (!FindTool("gio")) GTEST_SKIP() << "gio is not installed";
    for (const char* name : {"plain.noted", "-v 'x' $(touch y) \"z\" %41.noted", "文\xFF.noted"}) {
        MakeFile(name);
        EXPECT_GT(Open(EncodeName(name).c_str()), 32U) << name;
        EXPECT_EQ(Desktop::Get().Opened(), folder.Path(name) + "|/usr/bin:/usr/sbin:/bin:/sbin||");
    }
}

// The program's own request has a window behind it, the opening of a file has none.
TEST_F(Shell, TellsTheShareWizardFromAFileOfItsName) {
    static int runs = 0;
    thePresenters.shareWizard = [] { ++runs; };
    MakeFile("shrpubw");
    EXPECT_EQ(Open("shrpubw"), SE_ERR_NOASSOC) << "what no program is chosen for";
    EXPECT_EQ(runs, 0);
    int window = 0;
    const auto answer = reinterpret_cast<std::uintptr_t>(
        ShellExecuteA(reinterpret_cast<HWND>(&window), "open", "shrpubw", nullptr, nullptr, SW_SHOW));
    EXPECT_GT(answer, 32U);
    EXPECT_EQ(runs, 1);
    thePresenters.shareWizard = nullptr;
}

TEST_F(Shell, SaysWhyItOpensNothing) {
    if (!FindTool("gio")) GTEST_SKIP() << "gio is not installed";
    MakeFile("b.lonely");
    EXPECT_EQ(Open("missing.noted"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Open("missing\\a.noted"), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(Open("b.lonely"), SE_ERR_NOASSOC);
    EXPECT_EQ(GetLastError(), ERROR_NO_ASSOCIATION);
    EXPECT_EQ(Open("b.lonely", "print"), SE_ERR_NOASSOC);
    EXPECT_EQ(WinExec("shutdown now", SW_SHOW), ERROR_FILE_NOT_FOUND);
}

TEST_F(Shell, ShowsThePagesBesideAHelpFile) {
    if (!FindTool("gio")) GTEST_SKIP() << "gio is not installed";
    MakeFile("HELP.chm");
    EXPECT_EQ(Open("T:\\HELP.chm"), SE_ERR_NOASSOC);
    EXPECT_EQ(WinExec("hh T:\\HELP.chm::/support.html", SW_SHOW), SE_ERR_NOASSOC);
    folder.MakeFolder("help");
    const std::string index = MakeFile("help/index.html");
    const std::string support = MakeFile("help/support.html");
    const std::pair<const char*, std::string> kCases[] = {
        {"hh T:\\HELP.chm::/support.html", support},
        {"hh T:\\HELP.chm::/missing.html", index},
        {"hh T:\\HELP.chm::/../help/support.html", index},
        {"hh T:\\HELP.chm", index},
    };
    for (const auto& [command, page] : kCases) {
        EXPECT_GT(WinExec(command, SW_SHOW), 31U) << command;
        EXPECT_EQ(Desktop::Get().Opened().substr(0, page.size() + 1), page + "|") << command;
    }
    EXPECT_GT(Open("T:\\HELP.chm"), 32U);
    EXPECT_EQ(Desktop::Get().Opened().substr(0, index.size() + 1), index + "|");
    EXPECT_EQ(WinExec("hh T:\\MISSING.chm::/support.html", SW_SHOW), ERROR_FILE_NOT_FOUND);
}

}  // namespace
}  // namespace permora::host
