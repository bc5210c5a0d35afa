#include "cli/text_target.h"

#include <cstdio>

#include "cli/interrupts.h"
#include "cli/terminal_output.h"
#include "platform/api/errors.h"
#include "platform/host_path.h"
#include "platform/terminal.h"

namespace permora {

std::unique_ptr<TextTarget> TextTarget::Open(const std::string& name, ConsoleMessages& messages) {
    const bool isStandardOutput = name == kStandardOutput;
    std::unique_ptr<TextTarget> target(new TextTarget(isStandardOutput));
    if (isStandardOutput) return target;
    messages.SetSubject(name);
    if (IsAmbiguousArgument(name.c_str())) {
        messages.Say("a file here is called so: write ./ before its name, or the path as /folder/file");
        return nullptr;
    }
    if (!messages.Check({FileReplacement::Begin(PathFromArgument(name.c_str()), target->file)}))
        return nullptr;
    return target;
}

DWORD TextTarget::Write(std::string_view bytes) {
    if (IsInterrupted()) return ERROR_OPERATION_ABORTED;
    if (!isPrinted) return file.Write(bytes);
    WriteText(stdout, bytes);
    return std::ferror(stdout) == 0 ? DWORD{ERROR_SUCCESS} : DWORD{ERROR_IO_DEVICE};
}

DWORD TextTarget::Complete() {
    if (!isPrinted) return file.Complete();
    return IsAllPrinted() ? DWORD{ERROR_SUCCESS} : DWORD{ERROR_IO_DEVICE};
}

}  // namespace permora
