#include "platform/linux/files/command_line.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/system.h"
#include "tests/platform/linux/files/files_fixture.h"

namespace permora::host {
namespace {

using CommandLine = OnDriveT;

TEST_F(CommandLine, HasEveryPathWithItsDriveAndInQuotes) {
    const std::string program = folder.Path("a program");
    const struct {
        std::vector<std::string> arguments;
        const char* rest;
    } cases[] = {
        {{}, ""},
        {{"."}, R"( "T:\")"},
        {{"two words", "-v"}, R"( "T:\two words" "-v")"},
        {{folder.Path("x/../y") + "/"}, R"( "T:\y\")"},
        {{"/"}, R"( "C:\")"},
        {{R"(C:\Users)"}, R"( "C:\Users")"},
        {{"a\"b"},
         " \"T:\\a\xEF\x80\xA2"
         "b\""},  // no quote that could end the argument
        {{"", "--name=\"x\""}, R"( "" "--name=\"x\"")"},
    };
    for (const auto& [arguments, rest] : cases)
        EXPECT_EQ(CommandLineOf(program, arguments), R"("T:\a program")" + std::string(rest));
}

TEST(ModuleFileName, IsCutWhereItDoesNotFit) {
    std::array<char, 4096> path{};
    const DWORD length = GetModuleFileNameA(nullptr, path.data(), path.size());
    const std::string whole = path.data();
    EXPECT_EQ(length, whole.size());
    EXPECT_TRUE(std::string(GetCommandLineA()).starts_with('"' + whole + '"'));
    EXPECT_EQ(GetModuleFileNameA(nullptr, path.data(), 4), 4U);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(path.data(), whole.substr(0, 3));
    EXPECT_EQ(GetModuleFileNameA(nullptr, path.data(), 0), 0U);
}

}  // namespace
}  // namespace permora::host
