// All commands of the terminal program. Each is made in a source of its own, which adds its name, its options
// and its help to the parser.
#pragma once

#include <memory>
#include <span>

#include "cli/command.h"

namespace permora {

std::unique_ptr<Command> MakeAccounts(const CommandParent& parent);
std::unique_ptr<Command> MakeAssign(const CommandParent& parent);
std::unique_ptr<Command> MakeClone(const CommandParent& parent);
std::unique_ptr<Command> MakeCompare(const CommandParent& parent);
std::unique_ptr<Command> MakeDeny(const CommandParent& parent);
std::unique_ptr<Command> MakeEffective(const CommandParent& parent);
std::unique_ptr<Command> MakeFind(const CommandParent& parent);
std::unique_ptr<Command> MakeGrant(const CommandParent& parent);
std::unique_ptr<Command> MakeHistory(const CommandParent& parent);
std::unique_ptr<Command> MakeInherit(const CommandParent& parent);
std::unique_ptr<Command> MakeOwner(const CommandParent& parent);
std::unique_ptr<Command> MakePolicy(const CommandParent& parent);
std::unique_ptr<Command> MakeReplace(const CommandParent& parent);
std::unique_ptr<Command> MakeReport(const CommandParent& parent);
std::unique_ptr<Command> MakeReset(const CommandParent& parent);
std::unique_ptr<Command> MakeRestore(const CommandParent& parent);
std::unique_ptr<Command> MakeRevoke(const CommandParent& parent);
std::unique_ptr<Command> MakeSave(const CommandParent& parent);
std::unique_ptr<Command> MakeSetup(const CommandParent& parent);
std::unique_ptr<Command> MakeShares(const CommandParent& parent);
std::unique_ptr<Command> MakeShow(const CommandParent& parent);
std::unique_ptr<Command> MakeShred(const CommandParent& parent);
std::unique_ptr<Command> MakeUndo(const CommandParent& parent);
std::unique_ptr<Command> MakeVerify(const CommandParent& parent);

// The functions that make them, in the order of the help.
std::span<MakeCommand* const> AllCommands();

}  // namespace permora
