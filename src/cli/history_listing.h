// What is printed of the history of changes.
#pragma once

#include <string>
#include <vector>

#include "cli/json_output.h"
#include "cli/messages.h"
#include "history/history.h"

namespace permora {

// The columns of the list of changes.
std::vector<std::string> ChangeTitles();
std::vector<std::string> ChangeColumns(const ChangeFacts& facts);
// One change in a sentence: "7: permissions of C:\mnt\a (3 objects), 2026-11-26 08:00:12 by anna".
std::string ChangeLine(const ChangeFacts& facts);
Json ChangeJson(const ChangeFacts& facts);

// "C:\mnt\a\b", or the name of a share.
std::string RecordedPath(const ChangedTop& top, const std::string& path);
// An object with what was there before and what was written, in rows.
std::string RecordedText(const RecordedObject& object);
Json RecordedJson(const RecordedObject& object);

// Names the history and why it cannot be used.
ExitCode SayHistoryFailure(DWORD error, ConsoleMessages& messages);

}  // namespace permora
