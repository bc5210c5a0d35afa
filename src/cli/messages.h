// The messages on standard error. Each line names its object.
#pragma once

#include <string>
#include <string_view>

#include "platform/api/base.h"
#include "platform/api/errors.h"
#include "security/outcome.h"

namespace permora {

// Hears what the user is told, for a document that is printed at the end.
class MessageListener {
  public:
    virtual ~MessageListener() = default;
    // `code` is that of the system, or 0 where a sentence says what is the matter.
    virtual void Hear(const std::string& subject, const std::string& text, DWORD code) = 0;
};

// Prints lines "permora-cli: PATH: text". There is one object at a time.
class ConsoleMessages {
  public:
    ConsoleMessages() = default;
    ConsoleMessages(const ConsoleMessages&) = delete;
    ConsoleMessages& operator=(const ConsoleMessages&) = delete;

    // The object of the following messages, as the user typed it. Empty: the program's arguments as a whole.
    void SetSubject(std::string newSubject);

    // Null: nobody listens. Borrowed.
    void SetListener(MessageListener* newListener) { listener = newListener; }

    // Writes one line, a line break at the end of `text` left out. `code` is the system's, if it has a part
    // in this.
    void Say(std::string_view text, DWORD code = ERROR_SUCCESS);
    void Say(const Outcome& outcome);
    // The system's text for an error code, or its number when it has none: no failure is silent.
    void SaySystemError(DWORD code);
    // Whether all was done; else a line gives the reason.
    bool Check(const Outcome& outcome);

    // Writes a line that people read on standard output; with a listener it is said.
    void Tell(const std::string& text);
    // Writes to standard output what people alone are to read: nothing while somebody listens.
    void PrintForPeople(std::string_view text) const;

  private:
    std::string subject;
    MessageListener* listener = nullptr;
};

}  // namespace permora
