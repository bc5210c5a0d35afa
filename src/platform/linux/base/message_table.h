// The texts of the system's error codes.
#pragma once

#include <span>

#include "platform/api/base.h"

namespace permora::host {

// One row: a sentence without its full stop. It has no places for inserts.
struct Message {
    DWORD code;
    const char* text;
};

// Both tables are in ascending order of codes. Codes of the file system are in neither: their texts are the C
// library's (ErrnoForMessage).
std::span<const Message> SystemMessages();
// The network's own codes, 2100 to 2999: what the library netmsg.dll holds.
std::span<const Message> NetworkMessages();

// The text of `code`, or null when the table has none.
const char* FindMessage(std::span<const Message> table, DWORD code);

}  // namespace permora::host
