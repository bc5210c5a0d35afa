// Whether someone sits in front of a standard stream.
#pragma once

#include <cstdio>

namespace permora {

// The number of columns of the terminal that `stream` leads to; 80 when the terminal does not say, 0 when it
// leads to a file, a pipe or nowhere.
unsigned TerminalColumns(std::FILE* stream);

}  // namespace permora
