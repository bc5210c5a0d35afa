#include "platform/linux/security/privileges.h"

#include <linux/capability.h>

#include "platform/ascii.h"

namespace permora::host {

std::span<const Privilege> Privileges() {
    // Taking ownership of others' objects needs the kernel's chown. Restoring puts any owner and list on
    // them, whatever they allow.
    static constexpr Privilege kPrivileges[] = {{"SeTakeOwnershipPrivilege", {9, 0}, CAP_CHOWN},
                                                {"SeRestorePrivilege", {18, 0}, CAP_DAC_OVERRIDE}};
    return kPrivileges;
}

const Privilege* FindPrivilege(std::string_view name) {
    for (const Privilege& privilege : Privileges())
        if (EqualsIgnoringCase(privilege.name, name)) return &privilege;
    return nullptr;
}

const Privilege* FindPrivilege(const LUID& id) {
    for (const Privilege& privilege : Privileges())
        if (privilege.id.LowPart == id.LowPart && privilege.id.HighPart == id.HighPart) return &privilege;
    return nullptr;
}

}  // namespace permora::host
