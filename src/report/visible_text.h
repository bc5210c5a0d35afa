// Texts from a disk or an account database, made fit for a page and for tables.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace permora {

// Visible text (platform/visible_text.h) of an HTML document, in an element or between double quotes in an
// attribute.
std::string HtmlText(std::string_view text);

// A JSON document of ASCII characters as the text of an HTML script element: without the characters that
// could end the element or begin a comment.
std::string ScriptText(std::string_view json);

// Visible text as a cell of a table with commas (RFC 4180). What a spreadsheet would take for a
// formula gets an apostrophe before it, which spreadsheets take for the sign of a text.
std::string CsvCell(std::string_view text);

// Cells as a line of such a table.
std::string CsvLine(std::initializer_list<std::string_view> cells);

bool IsWellFormedUtf8(std::string_view text);
// Two hexadecimal digits for each byte.
std::string HexOfBytes(std::string_view bytes);

}  // namespace permora
