// What the user asked for on the command line.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/api/base.h"

namespace permora {

enum class Command {
    kShow,
    kGrant,
    kDeny,
    kRevoke,
    kInherit,
    kAssign,
    kReset,
    kShred,
    kOwner,
    kEffective,
    kAccounts,
    kShares,
    kSetup
};

enum class ShowFormat { kTable, kJson, kSddl };

// What becomes of an object's inheritance.
enum class InheritanceChange {
    kOn,      // inherit from the parent again
    kCopy,    // stop; what was inherited stays as explicit entries
    kRemove,  // stop; what was inherited goes
};

struct Arguments {
    Command command = Command::kShow;
    std::vector<std::string> paths;  // as typed; at least one but for kAccounts, kShares and with shares
    // show, grant, deny and revoke: names of shares in the place of paths, as typed
    std::vector<std::string> shares;
    ShowFormat format = ShowFormat::kTable;
    bool audit = false;  // with kSddl: the system access list too

    // grant, deny, revoke, assign, owner and effective: as typed; owner: empty to show it
    std::string account;
    // grant and deny: never 0, never with SYNCHRONIZE. assign: all that the account is to
    // have; kFullControlAsOne for full control as a whole, as the wizard ticks it.
    DWORD rights = 0;
    // grant and deny:
    std::optional<int> scopeIndex;  // place in kInheritanceScopes; nothing: what suits a file or a folder
    bool childrenOnly = false;

    InheritanceChange inheritance = InheritanceChange::kOn;

    // Every command that changes something:
    bool dryRun = false;
    bool dropOtherEntries = false;
    bool replaceNullList = false;

    // owner:
    bool tree = false;    // everything below too
    bool linked = false;  // of that also files with further names

    // accounts:
    std::string find;  // what to look for, as typed; empty: everything

    // reset and shred:
    bool yes = false;
    bool quiet = false;

    // reset:
    bool emptyLists = false;
    bool verbose = false;  // always so for owner

    // shred:
    bool force = false;  // also what cannot be overwritten in place, or not for certain

    // setup:
    bool allUsers = false;
};

// The arguments, or nothing when there is nothing left to do: help or the version was printed (exitCode 0),
// or they were wrong, which standard error says (exitCode 2).
std::optional<Arguments> ParseArguments(int argumentCount, const char* const* argumentTexts, int& exitCode);

}  // namespace permora
