// A command that edits the entries of access lists: grant, deny, revoke and inherit.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/change_foresight.h"
#include "cli/change_output.h"
#include "cli/list_change.h"
#include "cli/object_command.h"
#include "shares/share_security.h"

namespace permora {

enum class EditResult {
    kChanged,      // the list is to be written
    kNothingToDo,  // it already is as asked for; the reason was printed
    kRefused,      // the change cannot be made here, or would make no sense; the reason was printed
};

// The owner of a list. Only folders and drives have objects below them.
enum class EntryPlace { kDrive, kFolder, kFile, kShare };

struct EditedList {
    EntryPlace place;
    PACL dacl;  // as it was read
    AccessEntryList& entries;
    std::optional<DaclInheritance>& inheritance;  // nothing for a share, which inherits nothing
};

// Reads each list, edits it and writes it, or prints the result with --dry-run. An object that cannot be
// changed is left unchanged.
class ChangeCommand : public ObjectCommand {
  protected:
    using ObjectCommand::ObjectCommand;

    virtual EditResult Edit(EditedList& list) = 0;
    // Prints remarks about the object beside the result. They are not repeated when another program has
    // changed the list and the change is tried again.
    void SayOnce(const std::string& text);

    std::optional<PlannedChange> Plan() final;
    bool Do(const Target& target) override;
    bool DoShare(const std::string& name) final;
    bool End() override;

    ChangeOutput* Output() final { return &output; }

    ChangeOutput output{*this, messages, kDryRunOfEntries};
    ChangeOptions options{*this};
    Recording recording{*this};

  private:
    EditResult MakeList(EditedList list, UniqueLocal<ACL>& dacl);
    ChangeResult WriteShare(const std::string& name, const ShareSecurity& share, PACL dacl);

    std::string said;
    std::optional<ChangeForesight> foresight;  // of a dry run
};

}  // namespace permora
