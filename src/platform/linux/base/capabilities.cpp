#include "platform/linux/base/capabilities.h"

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <optional>

namespace permora::host {

namespace {

using Sets = std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3>;

std::optional<Sets> ReadSets() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    Sets sets{};
    if (syscall(SYS_capget, &header, sets.data()) != 0) return std::nullopt;
    return sets;
}

bool WriteSets(const Sets& sets) {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    return syscall(SYS_capset, &header, sets.data()) == 0;
}

std::size_t WordOf(int capability) {
    return CAP_TO_INDEX(static_cast<unsigned>(capability));
}

unsigned BitOf(int capability) {
    return CAP_TO_MASK(static_cast<unsigned>(capability));
}

}  // namespace

bool HasCapability(CapabilitySet set, int capability) {
    const std::optional<Sets> sets = ReadSets();
    if (!sets) return false;
    const __user_cap_data_struct& word = sets->at(WordOf(capability));
    const unsigned bits = set == CapabilitySet::kPermitted ? word.permitted : word.effective;
    return (bits & BitOf(capability)) != 0;
}

bool RaiseCapability(int capability) {
    std::optional<Sets> sets = ReadSets();
    if (!sets) return false;
    sets->at(WordOf(capability)).effective |= BitOf(capability);
    return WriteSets(*sets);
}

bool LowerCapability(int capability) {
    std::optional<Sets> sets = ReadSets();
    if (!sets) return false;
    sets->at(WordOf(capability)).effective &= ~BitOf(capability);
    return WriteSets(*sets);
}

}  // namespace permora::host
