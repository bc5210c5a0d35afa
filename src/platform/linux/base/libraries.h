// What stands behind the handle of a system library.
#pragma once

#include <span>

#include "platform/api/libraries.h"
#include "platform/linux/base/message_table.h"

namespace permora::host {

// The message table of a library: empty when it has none, null when the handle is not that of a library.
const std::span<const Message>* MessagesOf(HMODULE library);

}  // namespace permora::host
