#include "app/help_commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/shell_fakes.h"
#include "tests/support/recording_presenter.h"

namespace permora {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Boxes = std::vector<test::RecordedBox>;

constexpr const char* kFolder = R"(C:\Tools)";
constexpr const char* kChm = R"(open C:\Tools\ZELHELP.chm)";
constexpr const char* kSupport = R"(hh C:\Tools\ZELHELP.chm::/support.html)";
constexpr const char* kFirstPage = R"(open C:\Tools\help\index.html)";
constexpr const char* kSupportPage = R"(open C:\Tools\help\support.html)";
const std::string kSite = std::string("open ") + kWebSite;

struct OpeningCase {
    const char* name;
    std::function<void()> command;
    std::vector<std::string> refused;
    std::vector<std::string> requests;
    std::string message;  // empty: none
};

TEST(HelpCommands, OpenWhatThereIsAndSayWhatCannotBeOpened) {
    bool hasOwnWindow = false;
    const auto help = [&] { OpenHelp(nullptr, kFolder, [&] { return hasOwnWindow; }); };
    const auto helpWithOwnWindow = [&] {
        hasOwnWindow = true;
        help();
        hasOwnWindow = false;
    };
    const auto support = [] { OpenSupportPage(nullptr, kFolder); };
    const auto site = [] { OpenWebSite(nullptr); };
    for (const OpeningCase& each : {
             OpeningCase{"help", help, {}, {kChm}, ""},
             {"help without a viewer", help, {kChm}, {kChm, kFirstPage}, ""},
             {"help without any viewer", helpWithOwnWindow, {"open"}, {kChm, kFirstPage}, ""},
             {"no help", help, {"open"}, {kChm, kFirstPage}, "Cannot open help file"},
             {"support", support, {}, {kSupport}, ""},
             {"support without a viewer", support, {"hh"}, {kSupport, kSupportPage}, ""},
             {"no support",
              support,
              {"hh", "open"},
              {kSupport, kSupportPage},
              "Cannot open technical support help page"},
             {"web site", site, {}, {kSite}, ""},
             {"no web site", site, {"open"}, {kSite}, std::string("Error: cannot open \"") + kWebSite + "\""},
         }) {
        SCOPED_TRACE(each.name);
        test::ShellFakes shell;
        test::RecordingPresenter presenter;
        shell.refused = each.refused;
        each.command();
        EXPECT_EQ(shell.requests, each.requests);
        Boxes expected;
        if (!each.message.empty()) expected.push_back({"Permora Error", each.message, MB_ICONERROR});
        EXPECT_EQ(presenter.TakeBoxes(), expected);
    }
}

}  // namespace
}  // namespace permora
