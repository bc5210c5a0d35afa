#include "cli/commands.h"

#include <array>

namespace permora {
namespace {

constexpr std::array<MakeCommand*, 24> kCommands = {
    MakeShow,  MakeGrant, MakeDeny,    MakeRevoke,    MakeReplace,  MakeClone,  MakeInherit, MakeAssign,
    MakeReset, MakeShred, MakeOwner,   MakeEffective, MakeReport,   MakeFind,   MakeVerify,  MakeHistory,
    MakeUndo,  MakeSave,  MakeCompare, MakeRestore,   MakeAccounts, MakeShares, MakePolicy,  MakeSetup,
};

}  // namespace

std::span<MakeCommand* const> AllCommands() {
    return kCommands;
}

}  // namespace permora
