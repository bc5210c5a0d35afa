// The terminal program: shows and changes access lists and owners of files, folders and drive roots and the
// lists of shares, and deletes files for good.
#include <exception>

#include "cli/commands.h"
#include "cli/program.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/process_start.h"

int main(int argumentCount, char** argumentTexts) {
    permora::PrepareProcess();
    permora::UseUtf8Terminal();
    try {
        return permora::RunProgram(permora::AllCommands(), argumentCount, argumentTexts);
    } catch (const std::exception& error) {  // no memory
        permora::PrintError("permora-cli: broken off: " + permora::PrintableText(error.what()) + '\n');
        return static_cast<int>(permora::ExitCode::kSomeFailed);
    }
}
