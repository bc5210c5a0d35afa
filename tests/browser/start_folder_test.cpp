#include "browser/start_folder.h"

#include <gtest/gtest.h>

namespace permora {
namespace {

TEST(StartFolder, IsTheFirstQuotedArgumentAfterAQuotedProgram) {
    struct Case {
        const char* commandLine;
        const char* folder;
    };
    for (const Case& each : {Case{R"("C:\Tools\permora.exe" "C:\Data folder")", R"(C:\Data folder)"},
                             {R"("permora" "C:\a" "C:\b")", R"(C:\a)"},
                             {R"("permora" -x "C:\a)", R"(C:\a)"},
                             {R"("permora" C:\a)", ""},
                             {R"("permora" "")", ""},
                             {R"("permora")", ""},
                             {R"("permora" ")", ""},
                             {R"(permora "C:\a")", ""},
                             {"", ""},
                             {"\"", ""}}) {
        EXPECT_EQ(StartFolderOf(each.commandLine), each.folder) << each.commandLine;
    }
}

}  // namespace
}  // namespace permora
