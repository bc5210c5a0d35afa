// The privileges that this layer knows.
#pragma once

#include <span>
#include <string_view>

#include "platform/api/token.h"

namespace permora::host {

struct Privilege {
    std::string_view name;
    LUID id;         // on Windows the same on every machine: [MS-LSAD] 3.1.1.2.1
    int capability;  // of the kernel, CAP_ constant: who has it has the privilege
};

std::span<const Privilege> Privileges();

// Null when there is none.
const Privilege* FindPrivilege(std::string_view name);
const Privilege* FindPrivilege(const LUID& id);

}  // namespace permora::host
