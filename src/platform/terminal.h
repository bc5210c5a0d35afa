// Standard streams and whoever sits in front of them. Texts are UTF-8.
#pragma once

#include <cstdio>
#include <string_view>

namespace permora {

// The number of columns of the terminal that `stream` leads to; 80 when the terminal does not say, 0 when it
// leads to a file, a pipe or nowhere.
unsigned TerminalColumns(std::FILE* stream);

// Writes the text; what fails is kept as the stream's error (std::ferror).
void WriteText(std::FILE* stream, std::string_view text);
// For a program with windows: writes what it says instead of showing one. On Windows such a program has no
// standard streams but those that were redirected; the text goes to the console then from which the program
// was started, and without one to a message box. False: it is not written.
[[nodiscard]] bool WriteInsteadOfWindow(std::FILE* stream, std::string_view text);
// Writes `text`, which fits into the terminal's line, over the line where the cursor of a terminal stands,
// and clears the rest of that line.
void OverwriteLine(std::FILE* stream, std::string_view text);

// The columns that a character takes in a terminal: 0 when it stands on the one before it, -1 when it has no
// picture (control characters, what is no character). On Linux the C library's locale must be UTF-8.
int ColumnsOfCharacter(char32_t character);

}  // namespace permora
