#include "platform/linux/files/command_line.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

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

}  // namespace
}  // namespace permora::host
