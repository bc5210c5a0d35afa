// Paths and other texts as they stand in a line of saved lists.
//
// A line holds one text, whatever characters it has: what would end the line, cannot be seen, turns the
// writing direction, or stands in the private-use area (where the platform layer puts what no Windows name
// holds) is written as \u{202e}; so is a blank at either end. Between names stands a slash. Neither it nor
// the backslash can be in a name, so every text has one written form and is read back from no other.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace permora {

// A path below a top has names with backslashes between them; "." is written for an empty one.
void AppendWrittenPath(std::string_view path, std::string& line);
// Nothing when `written` is not what AppendWrittenPath writes for a path with possible names.
std::optional<std::string> PathFromWritten(std::string_view written);

// An absolute path of files.h: "C:\srv\data" is written as C:/srv/data.
void AppendWrittenTop(std::string_view path, std::string& line);
std::optional<std::string> TopFromWritten(std::string_view written);

// Any other text. Bytes that are no UTF-8 become U+FFFD.
void AppendWrittenText(std::string_view text, std::string& line);
std::optional<std::string> TextFromWritten(std::string_view written);

// Whether `path` is nothing but possible names with backslashes between them: no empty one, not "." or "..",
// none with a separator, a control character, or one of : * ? " < > |, all of it UTF-8.
bool IsPathBelow(std::string_view path);

// Whether `one` comes before `other` in the order of saved objects: name by name, byte by byte, a folder
// before what is in it.
bool ComesBefore(std::string_view one, std::string_view other);

// Whether `path` is something below the folder at `folder`, at any depth.
bool IsBelow(std::string_view path, std::string_view folder);

}  // namespace permora
