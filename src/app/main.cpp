// The windowed program.
#include <cstdio>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "app/administrator_start.h"
#include "app/command_line.h"
#include "app/main_app.h"
#include "app/object_app.h"
#include "framework/program_icon.h"
#include "platform/administrator.h"
#include "platform/presenters.h"
#include "platform/process_start.h"
#include "platform/terminal.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;

int Print(const CommandLineAnswer& answer) {
    std::FILE* const stream = answer.exitCode == kDone ? stdout : stderr;
    return WriteInsteadOfWindow(stream, answer.text) ? answer.exitCode : kFailed;
}

// What the toolkit gets: the program's name and the toolkit's options alone.
class ToolkitArguments {
  public:
    ToolkitArguments(const char* program, const std::vector<std::string>& options) : texts{program} {
        texts.insert(texts.end(), options.begin(), options.end());
        for (std::string& text : texts)
            words.push_back(text.data());
        words.push_back(nullptr);
    }
    int Run(CWinApp& application) { return application.Run(static_cast<int>(texts.size()), words.data()); }

  private:
    std::vector<std::string> texts;
    std::vector<char*> words;
};

// The program that only says why there is no other.
class CFailureApp : public CWinApp {
  public:
    explicit CFailureApp(std::string failure) : text(std::move(failure)) {}
    bool InitInstance() override {
        SetProgramIcon(CIcon::Load(IDR_MAIN_FRAME));
        ShowErrorBox(nullptr, text.c_str());
        return false;
    }

  private:
    const std::string text;
};

int RunAsAdministrator(const CommandLine& commandLine, ToolkitArguments& toolkit) {
    int exitCode = kFailed;
    const AdministratorStart start = StartAsAdministrator(commandLine, AdministratorWait::kForEnd, exitCode);
    if (start == AdministratorStart::kStarted) return exitCode;
    CFailureApp application(FailureText(start));
    toolkit.Run(application);
    return kFailed;
}

// Arguments that another user has handed to the administrator.
bool AreHarmless(const CommandLine& commandLine) {
    return commandLine.toolkitOptions.empty() &&
           (commandLine.waylandDisplay.empty() || UseDisplayOfUser(commandLine.waylandDisplay));
}

int RunMainWindow(const CommandLine& commandLine, ToolkitArguments& toolkit) {
    CMainApp application(commandLine);
    thePresenters.shareWizard = [] { static_cast<CMainApp*>(GetApp())->ShareFolder(); };
    return toolkit.Run(application);
}

int RunProgram(const char* program, std::span<const char* const> arguments) {
    CommandLine commandLine;
    if (const auto answer = ReadCommandLine(arguments, commandLine)) return Print(*answer);
    if (IsStartedForUser() ? !AreHarmless(commandLine) : !commandLine.waylandDisplay.empty())
        return Print({kUsage, "permora: another user's display or toolkit options are not taken\n"});
    ToolkitArguments toolkit(program, commandLine.toolkitOptions);
    if (commandLine.startAs == StartAs::kAdministrator && !IsAdministrator())
        return RunAsAdministrator(commandLine, toolkit);
    if (commandLine.window == StartWindow::kMain) return RunMainWindow(commandLine, toolkit);
    CObjectApp application(commandLine);
    toolkit.Run(application);
    return application.HasOpenedAll() ? kDone : kFailed;
}

}  // namespace
}  // namespace permora

int main(int argumentCount, char** argumentTexts) {
    permora::PrepareProcess();
    permora::ReportLackOfMemory();
    const std::span<const char* const> arguments(argumentTexts, static_cast<std::size_t>(argumentCount));
    if (arguments.empty()) return permora::RunProgram("permora", {});
    return permora::RunProgram(arguments.front(), arguments.subspan(1));
}
