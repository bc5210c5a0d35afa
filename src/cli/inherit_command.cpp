// inherit: whether an object inherits from its parent.
#include "cli/change_command.h"
#include "cli/commands.h"

namespace permora {
namespace {

class InheritCommand : public ChangeCommand {
  public:
    explicit InheritCommand(const CommandParent& parent)
        : ChangeCommand(parent, "inherit", "Switch on or off that an object inherits from its parent") {}

  private:
    EditResult Edit(EditedList& list) override;

    Choice choice{*this};
    Flag on{choice, "--on", "Inherit from the parent, beside the object's own entries"};
    Flag copy{choice, "--copy", "Stop inheriting and keep copies of the inherited entries"};
    Flag remove{choice, "--remove", "Stop inheriting and remove the inherited entries"};
};

EditResult InheritCommand::Edit(EditedList& list) {
    if (list.place == EntryPlace::kDrive) {
        messages.Say("not changed: the root of a drive has no parent to inherit from");
        return EditResult::kRefused;
    }
    if (on) {
        // Entries that a protected list still marks as inherited are stale: the parent hands down new ones.
        if (list.inheritance == DaclInheritance::kProtected) list.entries.RemoveInheritedEntries();
        list.inheritance = DaclInheritance::kFromParent;
        return EditResult::kChanged;
    }
    if (copy) list.entries.CopyInheritedEntries();
    list.entries.RemoveInheritedEntries();
    list.inheritance = DaclInheritance::kProtected;
    return EditResult::kChanged;
}

}  // namespace

std::unique_ptr<Command> MakeInherit(const CommandParent& parent) {
    return std::make_unique<InheritCommand>(parent);
}

}  // namespace permora
