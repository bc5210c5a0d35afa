// What the program says on standard error: each line names the object that it is about.
#pragma once

#include <string>
#include <string_view>

#include "platform/message_presenter.h"
#include "security/outcome.h"

namespace permora {

// Shows message boxes as lines "permora-cli: PATH: text". There is one object at a time.
class ConsoleMessages : public MessagePresenter {
  public:
    // Sets itself as the process's presenter for its own life.
    ConsoleMessages();
    ~ConsoleMessages() override;
    ConsoleMessages(const ConsoleMessages&) = delete;
    ConsoleMessages& operator=(const ConsoleMessages&) = delete;

    // What the following messages are about, as the user typed it. Empty: the program's arguments as a whole.
    void SetSubject(std::string newSubject);

    // Writes one line, a line break at the end of `text` left out.
    void Say(std::string_view text);
    void Say(const Outcome& outcome);
    // The same unless something was said since the subject was set, as by a box that told the failure.
    void SayIfSilent(std::string_view text);
    // The system's text for an error code, or its number when it has none: no failure is silent.
    void SaySystemError(DWORD code);

    // A box's text as a line; the answer is the safest button.
    int Present(HWND owner, const char* text, const char* caption, UINT type) override;

  private:
    MessagePresenter* previous;
    std::string subject;
    bool hasSpoken = false;
};

}  // namespace permora
