// The terminal program: shows and changes access lists and owners of files, folders and drive roots and the
// lists of shares, and deletes files for good.
#include <array>
#include <exception>

#include "cli/commands.h"
#include "cli/program.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/process_start.h"

namespace {

// In the order of the help.
constexpr std::array<permora::MakeCommand*, 23> kCommands = {
    permora::MakeShow,     permora::MakeGrant,  permora::MakeDeny,    permora::MakeRevoke,
    permora::MakeReplace,  permora::MakeClone,  permora::MakeInherit, permora::MakeAssign,
    permora::MakeReset,    permora::MakeShred,  permora::MakeOwner,   permora::MakeEffective,
    permora::MakeReport,   permora::MakeFind,   permora::MakeVerify,  permora::MakeHistory,
    permora::MakeUndo,     permora::MakeSave,   permora::MakeCompare, permora::MakeRestore,
    permora::MakeAccounts, permora::MakeShares, permora::MakeSetup,
};

}  // namespace

int main(int argumentCount, char** argumentTexts) {
    permora::PrepareProcess();
    permora::UseUtf8Terminal();
    try {
        return permora::RunProgram(kCommands, argumentCount, argumentTexts);
    } catch (const std::exception& error) {  // no memory
        permora::PrintError("permora-cli: broken off: " + permora::PrintableText(error.what()) + '\n');
        return static_cast<int>(permora::ExitCode::kSomeFailed);
    }
}
