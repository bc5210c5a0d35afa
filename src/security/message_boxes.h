// The message boxes of the windowed program. `owner` may be null. Any thread may show one: it stands on the
// user-interface thread, as all windows do.
#pragma once

#include <span>
#include <string>

#include "framework/window.h"
#include "platform/api/base.h"
#include "security/outcome.h"

namespace permora {

inline constexpr const char* kErrorCaption = "Permora Error";              // string 147
inline constexpr const char* kInformationCaption = "Permora Information";  // string 149

// MessageBoxA, for workers too. The other boxes have one OK button.
int AskInBox(HWND owner, LPCSTR text, LPCSTR caption, UINT type);
void ShowErrorBox(HWND owner, LPCSTR text);
void ShowInfoBox(HWND owner, LPCSTR text);
// Ends the process once the box is closed; no clean-up runs.
[[noreturn]] void ShowFatalErrorBox(HWND owner, LPCSTR text);

// The system's text for an error code. A code that has no text shows no box.
void ShowSystemErrorBox(HWND owner, DWORD code);
void ShowLastErrorBox(HWND owner);
// Ends the process, also when there was no text to show.
[[noreturn]] void ShowFatalLastErrorBox(HWND owner);
// "text: system text". A code that has no text shows no box.
void ShowErrorWithSystemText(HWND owner, LPCSTR text, DWORD code);

// Shows the text of a failure; nothing when all was done. Ends the process after a failure that leaves no way
// to continue: a library or function of the system is missing, there is no memory, or a file cannot be
// closed.
void ShowOutcome(HWND owner, const Outcome& outcome);
// The same; the box names the object, also where the text does not.
void ShowNamedOutcome(HWND owner, const Outcome& outcome);
void ShowOutcomes(HWND owner, std::span<const Outcome> outcomes);

// Puts a text on the clipboard, or shows that this has failed.
void CopyTextOrTell(CWnd& owner, const std::string& text);

// From now on, memory that cannot be had (std::bad_alloc), on any thread, ends the process after a box.
void ReportLackOfMemory();

}  // namespace permora
