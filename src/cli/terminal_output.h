// The one way out for every text of the terminal program. Nothing else in it writes to a standard stream.
//
// Names, remarks, arguments and error texts are chosen by others. So whatever a caller hands over, all but
// its line breaks leaves as PrintableText: nothing can steer the terminal. What comes from elsewhere must
// have become PrintableText before it was put into a line, as its own line breaks would forge lines.
#pragma once

#include <string_view>

namespace permora {

// Writes to standard output.
void Print(std::string_view text);
// Whether everything has reached the reader of standard output; waits for it.
bool IsAllPrinted();

// Writes to standard error.
void PrintError(std::string_view text);

// Writes a line over the one that the cursor of standard error is in, which must be a terminal.
void OverwriteErrorLine(std::string_view text);

}  // namespace permora
