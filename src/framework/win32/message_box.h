// The system's message boxes on the user-interface thread, as this program's boxes are: Enter and Escape on
// an unread box change nothing. By itself the system offers the first button to Enter, and a question with
// Yes and No ignores Escape.
#pragma once

#include "platform/api/base.h"

namespace permora::win32 {

// Holds for the thread that makes it.
class MessageBoxRules {
  public:
    MessageBoxRules();
    ~MessageBoxRules();
    MessageBoxRules(const MessageBoxRules&) = delete;
    MessageBoxRules& operator=(const MessageBoxRules&) = delete;

    int OpenBoxes() const { return openBoxes; }

  private:
    static LRESULT CALLBACK OnWindow(int code, WPARAM window, LPARAM details);
    static LRESULT CALLBACK OnBoxMessage(HWND box, UINT code, WPARAM wide, LPARAM wider, UINT_PTR id,
                                         DWORD_PTR self);

    HHOOK hook;
    int openBoxes = 0;
};

}  // namespace permora::win32
