#include "security/empty_list.h"

#include <utility>

#include "platform/api/errors.h"

namespace permora {

Outcome MakeEmptyList(UniqueLocal<ACL>& list) {
    constexpr DWORD kSize = sizeof(ACL);
    UniqueLocal<ACL> made(static_cast<PACL>(LocalAlloc(LMEM_FIXED, kSize)));
    if (!made) return {ERROR_NOT_ENOUGH_MEMORY, Step::kTakeBuffer};
    if (InitializeAcl(made.get(), kSize, ACL_REVISION) == FALSE)
        return {ERROR_INVALID_ACL, Step::kInitializeList};
    list = std::move(made);
    return {};
}

}  // namespace permora
