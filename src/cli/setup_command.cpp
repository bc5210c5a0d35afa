// setup: tells the windowed program the folder that it is installed in.
#include <string>

#include "app/program_folder.h"
#include "app/settings_store.h"
#include "cli/change_output.h"
#include "cli/commands.h"
#include "cli/object_command.h"
#include "cli/terminal_text.h"

namespace permora {
namespace {

class SetupCommand : public ObjectCommand {
  public:
    explicit SetupCommand(const CommandParent& parent)
        : ObjectCommand(parent, "setup",
                        "Tell the windowed program the folder that it is installed in, where its\n"
                        "help is; the installation does this",
                        Objects::kPaths, "The folder that holds permora") {}

    std::string Interpret() override {
        const std::string problem = ObjectCommand::Interpret();
        return problem.empty() && ObjectCount() > 1 ? "setup takes one folder" : problem;
    }

  private:
    ChangeOutput* Output() override { return &output; }
    bool Do(const Target& target) override;

    ChangeOutput output{*this, messages, "Write nothing"};
    Flag allUsers{*this, "--all-users", "For every user who was not told another folder"};
};

bool SetupCommand::Do(const Target& target) {
    const std::string folder = target.folder + target.name;
    if (!HoldsHelp(folder)) {
        messages.Say("this is not the program's folder: its help, ZELHELP.chm, is not in it");
        return false;
    }
    const SettingsOwner owner = allUsers ? SettingsOwner::kEveryUser : SettingsOwner::kUser;
    const bool isSo = LoadStoredProgramFolder(owner) == folder;
    if (!isSo) output.SetChanged();
    if (!isSo && !output.IsDryRun() && !messages.Check({StoreProgramFolder(owner, folder)})) return false;
    messages.PrintForPeople(
        std::string(output.IsDryRun() && !isSo ? "Permora would be set up for " : "Permora is set up for ") +
        (allUsers ? "all users" : "you") + " in " + PrintableText(folder) + '\n');
    return true;
}

}  // namespace

std::unique_ptr<Command> MakeSetup(const CommandParent& parent) {
    return std::make_unique<SetupCommand>(parent);
}

}  // namespace permora
