// Where a command writes a text that others read: a file, or standard output.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "cli/messages.h"
#include "platform/sequential_file.h"
#include "saved/saved_list_writer.h"

namespace permora {

// The name of standard output.
inline constexpr const char* kStandardOutput = "-";

// A file appears when all is in it, and takes the place of an older one. The text goes to standard output as
// it is, so whoever writes it leaves nothing in it that could steer a terminal.
class TextTarget : public SavedOutput {
  public:
    // `name` as typed; "-" is standard output. Null: the reason was printed.
    static std::unique_ptr<TextTarget> Open(const std::string& name, ConsoleMessages& messages);

    // ERROR_IO_DEVICE when standard output has not taken it, ERROR_OPERATION_ABORTED when the user has
    // interrupted.
    DWORD Write(std::string_view bytes) override;
    // Nothing stays of a file without it.
    DWORD Complete();

  private:
    explicit TextTarget(bool isStandardOutput) : isPrinted(isStandardOutput) {}

    const bool isPrinted;
    FileReplacement file;
};

}  // namespace permora
