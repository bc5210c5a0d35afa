// The history in words, for the window and the terminal.
#pragma once

#include <cstdint>
#include <string>

#include "history/history.h"
#include "platform/grouped_number.h"

namespace permora {

// What the change was about: "permissions of C:\data\letter", "permissions of 3 items, the first C:\data\a",
// "undo of change 12".
std::string ChangeText(const ChangeFacts& change);
// The same for a menu, without paths: "permissions of letter", "permissions of 3 items".
std::string ShortChangeText(const ChangeFacts& change);

// "2026-11-26 08:05:12", in the machine's time zone; `time` in seconds since 1970, UTC.
std::string ChangeTimeText(std::int64_t time);
// "done", "cut off", "undone".
const char* ChangeStateText(ChangeState state);

// Why the history cannot be read or written, in sentences: one of the codes of History.
std::string HistoryFailureText(DWORD error);

}  // namespace permora
