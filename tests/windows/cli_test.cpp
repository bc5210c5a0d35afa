// permora-cli.exe, started as a user starts it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "platform/windows/code_page.h"
#include "tests/windows/test_folder.h"

namespace permora::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr const char* kBeyondAscii = "Ünïcödé 日本 😀";
constexpr const char* kEveryone = "S-1-1-0";

struct CliResult {
    DWORD exitCode = MAXDWORD;
    std::string output;
    std::string errors;
};

// In the folder "tests" beside the program's.
std::wstring CliPath() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    path.resize(path.rfind(L'\\'));
    path.resize(path.rfind(L'\\'));
    return path + LR"(\bin\permora-cli.exe)";
}

// As the C runtime takes it apart again; no argument here has a double quote or ends in a backslash and
// blank.
std::wstring CommandLine(const std::vector<std::string>& arguments) {
    std::wstring line = L'"' + CliPath() + L'"';
    for (const std::string& argument : arguments) {
        std::wstring wide;
        ToWide(argument, wide);
        line += L" \"" + wide + (argument.ends_with('\\') ? L"\\\"" : L"\"");
    }
    return line;
}

struct Pipe {
    Pipe() {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        HANDLE ends[2] = {};
        CreatePipe(&ends[0], &ends[1], &inherited, 1 << 20);
        SetHandleInformation(ends[0], HANDLE_FLAG_INHERIT, 0);
        readEnd.reset(ends[0]);
        writeEnd.reset(ends[1]);
    }
    std::string ReadAll() {
        writeEnd.reset();
        std::string text;
        char block[4096];
        DWORD bytes = 0;
        while (ReadFile(readEnd.get(), block, sizeof block, &bytes, nullptr) != FALSE && bytes > 0)
            text.append(block, bytes);
        return text;
    }
    UniqueHandle readEnd;
    UniqueHandle writeEnd;
};

CliResult RunCli(const std::vector<std::string>& arguments, const std::string& folder = {}) {
    Pipe output;
    Pipe errors;
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const UniqueHandle nothing(
        CreateFileA("NUL", GENERIC_READ, FILE_SHARE_READ, &inherited, OPEN_EXISTING, 0, nullptr));
    start.hStdInput = nothing.get();
    start.hStdOutput = output.writeEnd.get();
    start.hStdError = errors.writeEnd.get();
    std::wstring line = CommandLine(arguments);
    std::wstring current;
    if (!folder.empty()) ToWide(folder, current);
    PROCESS_INFORMATION made{};
    if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                       current.empty() ? nullptr : current.c_str(), &start, &made) == FALSE)
        return {GetLastError(), {}, "it did not start"};
    const UniqueHandle process(made.hProcess);
    const UniqueHandle thread(made.hThread);
    CliResult result;
    result.output = output.ReadAll();
    result.errors = errors.ReadAll();
    WaitForSingleObject(process.get(), INFINITE);  // at once: its streams are closed
    GetExitCodeProcess(process.get(), &result.exitCode);
    return result;
}

nlohmann::json ResultsIn(const CliResult& shown) {
    const nlohmann::json document = nlohmann::json::parse(shown.output, nullptr, false);
    return document.is_object() ? document["results"] : nlohmann::json();
}

nlohmann::json ShownAsJson(const std::string& path) {
    return ResultsIn(RunCli({"show", "--json", path}))[0];
}

// The mask of an account's only entry of one type, or none.
std::string MaskOf(const std::string& path, const std::string& type, const std::string& sid) {
    const nlohmann::json shown = ShownAsJson(path);
    if (!shown.is_object()) return "nothing shown";
    for (const nlohmann::json& entry : shown["entries"])
        if (entry["type"] == type && entry["sid"] == sid) return entry["mask"];
    return "none";
}

TEST(Cli, EachKindOfEndHasItsExitCode) {
    const TestFolder folder;
    const std::string file = folder.MakeFile("file");
    const struct {
        std::vector<std::string> arguments;
        DWORD exitCode;
        const char* output;
        const char* errors;
    } rows[] = {
        {{"--version"}, 0, "permora-cli ", ""},
        {{"--help"}, 0, "Exit code:", ""},
        {{"grant", "--help"}, 0, "--rights", ""},
        {{}, 2, "", "Usage: "},
        {{"nonsense"}, 2, "", "Run with --help"},
        {{"show", folder.Path("missing")}, 1, "", "missing: "},
        {{"show", file}, 0, "Owner: ", ""},
        {{"show", file, folder.Path("missing")}, 1, "Owner: ", "missing: "},
        {{"grant", file, "--account", "no such account", "--rights", "Delete"}, 2, "", "no such account"},
        {{"grant", file, "--account", kEveryone, "--rights", "Dance"}, 2, "", "Dance"},
        {{"shred", file}, 2, "", "--yes"},
        {{"show", file + "\\"}, 1, "", "file"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.arguments));
        const CliResult result = RunCli(row.arguments);
        EXPECT_EQ(result.exitCode, row.exitCode);
        EXPECT_THAT(result.output, HasSubstr(row.output));
        EXPECT_THAT(result.errors, HasSubstr(row.errors));
    }
    EXPECT_TRUE(Exists(file));
}

TEST(Cli, NamesBeyondAsciiComeBackAsTheyWereTyped) {
    const TestFolder folder;
    const std::string path = folder.MakeFolder(kBeyondAscii);
    const CliResult table = RunCli({"show", path});
    EXPECT_EQ(table.exitCode, 0U);
    EXPECT_THAT(table.output, StartsWith(path + '\n'));
    EXPECT_THAT(table.output, Not(HasSubstr("\r"))) << "the same bytes as on other systems";
    const nlohmann::json shown = ShownAsJson(path);
    ASSERT_TRUE(shown.is_object());
    EXPECT_EQ(shown["path"], path);
    EXPECT_FALSE(shown["entries"].empty());
    for (const nlohmann::json& entry : shown["entries"])
        EXPECT_THAT(entry["sid"].get<std::string>(), StartsWith("S-1-"));
    const std::string missing = folder.Path("fehlt ß");
    EXPECT_THAT(RunCli({"show", missing}).errors, HasSubstr(missing));
}

TEST(Cli, ArgumentsAreRelativeToTheCurrentFolder) {
    const TestFolder folder;
    folder.MakeFolder("sub");
    folder.MakeFile("sub\\file");
    folder.MakeFile("-file");
    const struct {
        const char* argument;
        DWORD exitCode;
    } rows[] = {{"file", 0}, {".\\file", 0},       {"./file", 0},    {".", 0},
                {"..", 0},   {"..\\sub\\file", 0}, {"..\\-file", 0}, {"none", 1}};
    for (const auto& row : rows)
        EXPECT_EQ(RunCli({"show", row.argument}, folder.Path("sub")).exitCode, row.exitCode) << row.argument;
    EXPECT_EQ(RunCli({"show", "-file"}, folder.Path()).exitCode, 2U);
    EXPECT_EQ(RunCli({"show", "--", "-file"}, folder.Path()).exitCode, 0U);
}

TEST(Cli, GrantedRightsAreThereAndRevokedOnesGo) {
    const TestFolder folder;
    const std::string file = folder.MakeFile("file");
    const auto mayWrite = [&file] {
        const std::string mask = MaskOf(file, "Allow", kEveryone);
        return mask.starts_with("0x") && (std::stoul(mask, nullptr, 16) & FILE_WRITE_DATA) != 0;
    };
    RunCli({"revoke", file, "--account", kEveryone});
    ASSERT_FALSE(mayWrite());
    const std::vector<std::string> grant = {"grant",   file,       "--account",
                                            kEveryone, "--rights", "Full control"};
    std::vector<std::string> dry = grant;
    dry.emplace_back("--dry-run");
    EXPECT_EQ(RunCli(dry).exitCode, 0U);
    EXPECT_FALSE(mayWrite());
    const CliResult granted = RunCli(grant);
    EXPECT_EQ(granted.exitCode, 0U) << granted.errors;
    EXPECT_THAT(granted.output, HasSubstr(": changed\n"));
    EXPECT_TRUE(mayWrite());
    EXPECT_EQ(RunCli({"revoke", file, "--account", kEveryone}).exitCode, 0U);
    EXPECT_FALSE(mayWrite());
}

TEST(Cli, EveryBitOfAnEntryIsKept) {
    const TestFolder folder;
    const std::string path = folder.MakeFolder("folder");
    ASSERT_EQ(RunCli({"deny", path, "--account", "S-1-5-32-546", "--rights", "Delete"}).exitCode, 0U);
    ASSERT_EQ(RunCli({"grant", path, "--account", "S-1-5-21-1-2-3-1001", "--rights", "Read attributes",
                      "--scope", "Files only"})
                  .exitCode,
              0U);
    EXPECT_EQ(MaskOf(path, "Deny", "S-1-5-32-546"), "0x10000");
    EXPECT_EQ(MaskOf(path, "Allow", "S-1-5-21-1-2-3-1001"), "0x80");
    EXPECT_EQ(RunCli({"inherit", path, "--copy"}).exitCode, 0U);
    EXPECT_EQ(ShownAsJson(path)["inherits"], false);
}

TEST(Cli, OwnersAreShownAndSet) {
    const TestFolder folder;
    const std::string file = folder.MakeFile(kBeyondAscii);
    const CliResult shown = RunCli({"owner", file});
    ASSERT_EQ(shown.exitCode, 0U) << shown.errors;
    EXPECT_THAT(shown.output, StartsWith(file + ": "));
    // The user's own account is an owner that everybody may set.
    const std::string owner = shown.output.substr(file.size() + 2, shown.output.find('\n') - file.size() - 2);
    EXPECT_EQ(RunCli({"owner", file, "--set", owner}).exitCode, 0U);
    EXPECT_EQ(RunCli({"owner", file}).output, shown.output);
}

TEST(Cli, ATreeIsResetAndCounted) {
    const TestFolder folder;
    folder.MakeFolder("sub");
    folder.MakeFile(std::string("sub\\") + kBeyondAscii);
    const CliResult counted = RunCli({"reset", folder.Path(), "--dry-run"});
    EXPECT_EQ(counted.exitCode, 0U) << counted.errors;
    EXPECT_THAT(counted.output, StartsWith("would change: "));
    const CliResult reset = RunCli({"reset", folder.Path(), "--yes"});
    EXPECT_EQ(reset.exitCode, 0U) << reset.errors;
    EXPECT_THAT(reset.output, HasSubstr("passed over: 0\n"));
}

TEST(Cli, ACheckWritesNothingAndKeepsFailuresApart) {
    const TestFolder folder;
    const std::string file = folder.MakeFile("checked");
    const std::string before = RunCli({"show", "--sddl", file}).output;
    const auto check = [](const std::string& path) {
        return RunCli({"grant", path, "--account", kEveryone, "--rights", "Full control", "--check"})
            .exitCode;
    };
    EXPECT_EQ(check(file), 1U);
    EXPECT_EQ(RunCli({"show", "--sddl", file}).output, before);
    EXPECT_EQ(check(folder.Path("missing")), 3U);
}

TEST(Cli, AChangeIsListedAndTakenBack) {
    const TestFolder folder;
    const std::string file = folder.MakeFile(kBeyondAscii);
    RunCli({"revoke", file, "--account", kEveryone});
    const std::string before = RunCli({"show", "--sddl", file}).output;
    ASSERT_EQ(RunCli({"grant", file, "--account", kEveryone, "--rights", "Full control"}).exitCode, 0U);
    const std::string after = RunCli({"show", "--sddl", file}).output;
    ASSERT_NE(after, before);
    const CliResult listed = RunCli({"history", "--json"});
    const nlohmann::json changes = ResultsIn(listed);
    ASSERT_TRUE(changes.is_array() && !changes.empty()) << listed.errors;
    EXPECT_EQ(changes[0]["firstTop"], file);
    const std::string number = std::to_string(changes[0]["number"].get<int>());
    EXPECT_THAT(RunCli({"history"}).output, HasSubstr(kBeyondAscii));
    EXPECT_THAT(RunCli({"history", number}).output, HasSubstr("permissions of " + file));
    EXPECT_EQ(RunCli({"undo", number}).exitCode, 2U) << "nobody can be asked";
    const auto isPutBack = AllOf(HasSubstr("put back: 1, "), HasSubstr("left alone: 0\n"));
    EXPECT_THAT(RunCli({"undo", number, "--dry-run"}).output, AllOf(StartsWith("would "), isPutBack));
    EXPECT_EQ(RunCli({"show", "--sddl", file}).output, after);
    const CliResult undone = RunCli({"undo", number, "--yes"});
    EXPECT_THAT(undone.output, isPutBack) << undone.errors;
    EXPECT_EQ(RunCli({"show", "--sddl", file}).output, before);
}

TEST(Cli, ListsAreSavedComparedAndRestored) {
    const TestFolder folder;
    const TestFolder texts;
    folder.MakeFolder("sub");
    const std::string file = folder.MakeFile(std::string("sub\\") + kBeyondAscii);
    RunCli({"revoke", file, "--account", kEveryone});
    const std::string above = folder.Path().substr(0, folder.Path().rfind('\\'));
    const struct {
        const char* form;
        std::string place;  // from which the form's paths start
    } rows[] = {{"permora", folder.Path()}, {"icacls", above}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.form);
        const std::string text = texts.Path(row.form);
        const CliResult saved = RunCli({"save", folder.Path(), "--output", text, "--format", row.form});
        EXPECT_EQ(saved.output, "saved: 3\n") << saved.errors;
        const CliResult alike = RunCli({"compare", text, row.place});
        EXPECT_EQ(alike.output, "compared: 3, different: 0\n") << alike.errors;
        EXPECT_EQ(alike.exitCode, 0U);
        ASSERT_EQ(RunCli({"grant", file, "--account", kEveryone, "--rights", "Full control"}).exitCode, 0U);
        const CliResult changed = RunCli({"compare", text, row.place});
        EXPECT_EQ(changed.exitCode, 1U);
        EXPECT_THAT(changed.output, HasSubstr(file));
        const CliResult dry = RunCli({"restore", text, "--to", row.place, "--dry-run"});
        EXPECT_THAT(dry.output, HasSubstr("would change: " + file + '\n')) << dry.errors;
        EXPECT_EQ(RunCli({"restore", text, "--to", row.place}).exitCode, 2U) << "nobody can be asked";
        const CliResult restored = RunCli({"restore", text, "--to", row.place, "--yes"});
        EXPECT_EQ(restored.exitCode, 0U) << restored.errors;
        EXPECT_THAT(restored.output, HasSubstr("changed: 1, "));
        EXPECT_EQ(RunCli({"compare", text, row.place}).exitCode, 0U);
    }
    const std::string cut = texts.MakeFile("cut", "permora-lists 1\n");
    EXPECT_EQ(RunCli({"restore", cut, "--yes"}).exitCode, 2U);
}

TEST(Cli, DeletesForGood) {
    const TestFolder folder;
    const std::string top = folder.MakeFolder("top");
    folder.MakeFolder("top\\sub");
    folder.MakeFile(std::string("top\\sub\\") + kBeyondAscii, std::string(100'000, 'x'));
    folder.MakeFile("top\\empty", "");
    const CliResult shredded = RunCli({"shred", top, "--yes"});
    EXPECT_EQ(shredded.exitCode, 0U) << shredded.errors;
    EXPECT_EQ(shredded.output, "deleted: 4, left: 0\n");
    EXPECT_FALSE(Exists(top));
}

TEST(Cli, WhatMayNotBeOverwrittenIsLeft) {
    const TestFolder folder;
    const std::string file = folder.MakeFile("file");
    ASSERT_TRUE(CreateHardLinkA(folder.Path("second").c_str(), file.c_str(), nullptr));
    const std::string open = folder.MakeFile("open");
    const UniqueHandle opener(
        CreateFileA(open.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    const CliResult shredded = RunCli({"shred", file, open, "--yes"});
    EXPECT_EQ(shredded.exitCode, 1U);
    EXPECT_THAT(shredded.output, HasSubstr("deleted: 0, left: 2\n"));
    EXPECT_TRUE(Exists(file) && Exists(open));
}

TEST(Cli, LongPathsAreReached) {
    const TestFolder folder;
    std::string name = folder.MakeFolder("long").substr(folder.Path().size() + 1);
    for (int depth = 0; depth < 8; ++depth)
        folder.MakeFolder(name +=
                          "\\a folder with a name of fifty characters or so " + std::to_string(depth));
    ASSERT_GT(folder.Path(name).size(), std::size_t{MAX_PATH});
    const CliResult shown = RunCli({"show", folder.Path(name)});
    EXPECT_EQ(shown.exitCode, 0U) << shown.errors;
    EXPECT_THAT(shown.output, StartsWith(folder.Path(name) + '\n'));
    const CliResult shredded = RunCli({"shred", folder.Path("long"), "--yes"});
    EXPECT_THAT(shredded.output, StartsWith("deleted: 9, left: 0\n")) << shredded.errors;
}

TEST(Cli, AJunctionIsNeverFollowedAtTheEndOfAPath) {
    const TestFolder folder;
    folder.MakeFolder("target");
    folder.MakeFile("target\\file");
    const std::string junction = folder.Path("junction");
    ASSERT_EQ(folder.MakeJunction("junction", folder.Path("target")), DWORD{ERROR_SUCCESS});
    const std::string before = DescriptorText(folder.Path("target\\file"), DACL_SECURITY_INFORMATION);
    EXPECT_EQ(RunCli({"show", junction + "\\"}).exitCode, 1U);
    EXPECT_EQ(RunCli({"show", junction + "\\file"}).exitCode, 0U);
    RunCli({"reset", folder.Path(), "--yes"});
    EXPECT_EQ(DescriptorText(folder.Path("target\\file"), DACL_SECURITY_INFORMATION), before);
    EXPECT_EQ(RunCli({"shred", junction, "--yes"}).exitCode, 0U);
    EXPECT_FALSE(Exists(junction));
    EXPECT_TRUE(Exists(folder.Path("target\\file")));
}

// Wine answers that it has no shares to list; Windows always has some.
TEST(Cli, SharesAreListed) {
    const CliResult shares = RunCli({"shares", "--json"});
    ASSERT_EQ(shares.exitCode, 0U) << shares.errors;
    EXPECT_TRUE(ResultsIn(shares).is_array());
}

TEST(Cli, AccountsAreFoundByName) {
    const CliResult found = RunCli({"accounts", "--find", "Administrators"});
    EXPECT_THAT(found.output, HasSubstr("S-1-5-32-544"));
}

TEST(Cli, EffectiveRightsAreShown) {
    const CliResult shown = RunCli({"effective", "C:\\", "--account", "S-1-5-32-544"});
    EXPECT_EQ(shown.exitCode, 0U) << shown.errors;
    EXPECT_THAT(shown.output, HasSubstr("Permission: "));
}

TEST(Cli, AWholeTreeIsLookedThroughForAnAccount) {
    const TestFolder folder;
    folder.MakeFolder("sub");
    folder.MakeFile("sub\\file");
    const CliResult result = RunCli(
        {"replace", folder.Path(), "--account", "S-1-5-21-1-2-3-1001", "--by", kEveryone, "--no-history"});
    EXPECT_EQ(result.exitCode, 0U) << result.errors;
    EXPECT_THAT(result.output, StartsWith("changed: 0, already so: 3, failed: 0"));
    EXPECT_THAT(result.errors, HasSubstr("S-1-5-21-1-2-3-1001 is nowhere"));
}

// Everyone is one of the few whom Wine keeps in a list, as bits of the mode. It keeps too little of what was
// written for an undo to know it again.
TEST(Cli, EveryoneIsReplacedInAWholeTree) {
    const TestFolder folder;
    const std::string file = folder.MakeFolder("sub") + "\\file";
    folder.MakeFile("sub\\file");
    ASSERT_EQ(RunCli({"grant", folder.Path("sub"), "--account", kEveryone, "--rights", "0x1200a9"}).exitCode,
              0U);
    ASSERT_NE(MaskOf(file, "Allow", kEveryone), "none");
    const CliResult result =
        RunCli({"replace", folder.Path(), "--account", kEveryone, "--by", "S-1-5-32-544"});
    EXPECT_EQ(result.exitCode, 0U) << result.errors;
    EXPECT_THAT(result.output, HasSubstr(", failed: 0"));
    EXPECT_EQ(MaskOf(file, "Allow", kEveryone), "none");
}

TEST(Cli, AnAccountIsReplacedInAWholeTree) {
    const TestFolder folder;
    const std::string file = folder.MakeFolder("sub") + "\\file";
    folder.MakeFile("sub\\file");
    const std::string old = "S-1-5-21-1-2-3-1001";
    ASSERT_EQ(RunCli({"grant", folder.Path("sub"), "--account", old, "--rights", "Delete"}).exitCode, 0U);
    EXPECT_NE(MaskOf(file, "Allow", old), "none");
    const CliResult result = RunCli({"replace", folder.Path(), "--account", old, "--by", "S-1-5-32-546"});
    EXPECT_EQ(result.exitCode, 0U) << result.errors;
    EXPECT_THAT(result.output, StartsWith("changed: 2, already so: 1, failed: 0"));
    EXPECT_EQ(MaskOf(file, "Allow", old), "none");
    EXPECT_NE(MaskOf(file, "Allow", "S-1-5-32-546"), "none");
    EXPECT_EQ(RunCli({"undo", "--yes"}).exitCode, 0U);
    EXPECT_NE(MaskOf(file, "Allow", old), "none");
}

}  // namespace
}  // namespace permora::test
