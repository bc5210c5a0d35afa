#include "app/help_commands.h"

#include "app/program_folder.h"
#include "browser/shell_items.h"
#include "platform/api/shell.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

// The pages beside the help file, for desktops without a viewer for it.
constexpr const char* kFirstPage = R"(\help\index.html)";
constexpr const char* kSupportPage = R"(\help\support.html)";

}  // namespace

void OpenHelp(HWND owner, const std::string& programFolder, const std::function<bool()>& showOwn) {
    if (OpenByShell(owner, HelpFileIn(programFolder)) || OpenByShell(owner, programFolder + kFirstPage) ||
        showOwn())
        return;
    ShowErrorBox(owner, "Cannot open help file");
}

void OpenSupportPage(HWND owner, const std::string& programFolder) {
    constexpr UINT kFirstSuccess = 32;
    const std::string command = "hh " + HelpFileIn(programFolder) + "::/support.html";
    if (WinExec(command.c_str(), SW_SHOW) >= kFirstSuccess ||
        OpenByShell(owner, programFolder + kSupportPage))
        return;
    ShowErrorBox(owner, "Cannot open technical support help page");
}

void OpenWebSite(HWND owner) {
    if (OpenByShell(nullptr, kWebSite)) return;
    ShowErrorBox(owner, (std::string("Error: cannot open \"") + kWebSite + "\"").c_str());
}

}  // namespace permora
