// The file of a history: opened with the checks that it needs.
#pragma once

#include <string>

#include "history/database.h"

namespace permora {

// Opens the database at `path`; the codes are those of History::Open and History::OpenToRead.
DWORD OpenHistoryFile(const std::string& path, Database::Access access, Database& database);

}  // namespace permora
