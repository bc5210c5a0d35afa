// Texts from a disk or an account database, made fit for a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace permora {

// Must be called once before the functions below: the C library measures UTF-8 for them, whatever the user's
// own locale is.
void UseUtf8Terminal();

// `text` with everything that could steer the terminal or mislead the reader spelled out: control characters,
// marks that turn the writing direction or cannot be seen as \u{202e}, bytes that are no UTF-8 as \x9f.
std::string PrintableText(std::string_view text);

bool IsUtf8(std::string_view text);

// The number of columns that a printable text takes.
std::size_t DisplayWidth(std::string_view text);

// The longest beginning of a printable text that takes at most `columns` columns.
std::string CutToColumns(std::string text, std::size_t columns);

// The hexadecimal digits of a number.
std::string HexText(unsigned value);

// Lines of text in columns as wide as their widest cell, two blanks apart, each line begun with `indent`. The
// cells are made printable.
std::string AlignedTable(const std::vector<std::vector<std::string>>& lines, std::string_view indent);
// The next lines of a table that is printed in parts. `widths` are the columns' so far, none at the start,
// and grow where a cell needs more.
std::string AlignedTable(const std::vector<std::vector<std::string>>& lines, std::string_view indent,
                         std::vector<std::size_t>& widths);

}  // namespace permora
