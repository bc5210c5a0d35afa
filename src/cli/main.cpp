// The terminal program: shows and changes access lists and owners of files, folders and drive roots and the
// lists of shares, and deletes files for good.
#include "cli/commands.h"
#include "cli/program.h"
#include "cli/terminal_text.h"
#include "platform/process_start.h"

int main(int argumentCount, char** argumentTexts) {
    permora::PrepareProcess();
    permora::UseUtf8Terminal();
    return permora::RunProgram(permora::AllCommands(), argumentCount, argumentTexts);
}
