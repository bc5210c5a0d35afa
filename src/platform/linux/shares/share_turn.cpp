#include "platform/share_turn.h"

#include "platform/linux/base/letter_case.h"
#include "platform/linux/security/object_turn.h"

namespace permora {

DWORD ShareTurn::Take(const std::string& name) {
    auto turn = std::make_shared<host::ObjectTurn>();
    const DWORD error = turn->Take("share " + host::InSmallLetters(name));
    if (error == ERROR_SUCCESS) lock = std::move(turn);
    return error;
}

}  // namespace permora
