#include "platform/share_turn.h"

#include <utility>

#include "platform/fnv_hash.h"
#include "platform/windows/code_page.h"
#include "platform/windows/held_object_inside.h"

namespace permora {

DWORD ShareTurn::Take(const std::string& name) {
    std::wstring wide;
    if (const DWORD error = ToWide(name, wide); error != ERROR_SUCCESS) return error;
    CharLowerBuffW(wide.data(), static_cast<DWORD>(wide.size()));
    UniqueHandle turn;
    const DWORD error = TakeTurnAt(HashFnv(wide), turn);
    if (error == ERROR_SUCCESS) lock = std::make_shared<UniqueHandle>(std::move(turn));
    return error;
}

}  // namespace permora
