// Removing changes from the history's database, and giving the room back to the disk.
#pragma once

#include <cstdint>

#include "history/database.h"

namespace permora {

// The change with all that only it refers to, in one transaction.
DWORD RemoveChange(Database& database, std::int64_t number);

// Without the room that removed changes have left.
DWORD AskUsedBytes(Database& database, std::uint64_t& bytes);
DWORD GiveBackRoom(Database& database);

}  // namespace permora
