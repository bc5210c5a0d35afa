// setup: tells the windowed program the folder that it is installed in.
#include <string>

#include "app/program_folder.h"
#include "app/settings_store.h"
#include "cli/commands.h"
#include "cli/object_command.h"
#include "cli/terminal_output.h"
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
    bool Do(const Target& target) override;

    Flag allUsers{*this, "--all-users", "For every user who was not told another folder"};
};

bool SetupCommand::Do(const Target& target) {
    const std::string folder = target.folder + target.name;
    if (!HoldsHelp(folder)) {
        messages.Say("this is not the program's folder: its help, ZELHELP.chm, is not in it");
        return false;
    }
    const SettingsOwner owner = allUsers ? SettingsOwner::kEveryUser : SettingsOwner::kUser;
    if (!messages.Check({StoreProgramFolder(owner, folder)})) return false;
    Print(std::string("Permora is set up for ") + (allUsers ? "all users" : "you") + " in " +
          PrintableText(folder) + '\n');
    return true;
}

}  // namespace

std::unique_ptr<Command> MakeSetup(const CommandParent& parent) {
    return std::make_unique<SetupCommand>(parent);
}

}  // namespace permora
