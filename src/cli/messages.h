// The messages on standard error. Each line names its object.
#pragma once

#include <string>
#include <string_view>

#include "platform/api/base.h"
#include "security/outcome.h"

namespace permora {

// Prints lines "permora-cli: PATH: text". There is one object at a time.
class ConsoleMessages {
  public:
    ConsoleMessages() = default;
    ConsoleMessages(const ConsoleMessages&) = delete;
    ConsoleMessages& operator=(const ConsoleMessages&) = delete;

    // The object of the following messages, as the user typed it. Empty: the program's arguments as a whole.
    void SetSubject(std::string newSubject);

    // Writes one line, a line break at the end of `text` left out.
    void Say(std::string_view text);
    void Say(const Outcome& outcome);
    // The system's text for an error code, or its number when it has none: no failure is silent.
    void SaySystemError(DWORD code);
    // Whether all was done; else a line gives the reason.
    bool Check(const Outcome& outcome);

  private:
    std::string subject;
};

}  // namespace permora
