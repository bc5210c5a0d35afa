#include "platform/linux/base/message_table.h"

#include <algorithm>

namespace permora::host {

const char* FindMessage(std::span<const Message> table, DWORD code) {
    const auto row =
        std::lower_bound(table.begin(), table.end(), code,
                         [](const Message& message, DWORD wanted) { return message.code < wanted; });
    return row != table.end() && row->code == code ? row->text : nullptr;
}

}  // namespace permora::host
