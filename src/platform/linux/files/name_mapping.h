// Host names as the program shows them, and back.
#pragma once

#include <string>
#include <string_view>

namespace permora::host {

// One component of a host path as the program shows it. Bytes that a Windows name cannot hold (control
// characters, \ : * ? " < > |, a trailing dot or blank, bytes that are not UTF-8) become private-use code
// points from U+F001 to U+F0FF, one to one: EncodeName never gives two host names the same text, and
// DecodeName undoes it. Host names that hold such code points themselves have those escaped byte by byte.
std::string EncodeName(std::string_view hostName);

// The host name of a shown component. False for texts that no host name shows as (an empty one, "." and "..",
// a separator or NUL in disguise, a code point that EncodeName would not have produced); `hostName` is then
// unchanged.
bool DecodeName(std::string_view name, std::string& hostName);

}  // namespace permora::host
