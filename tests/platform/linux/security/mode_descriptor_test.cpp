#include "platform/linux/security/mode_descriptor.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/api/security.h"
#include "platform/nt/sddl.h"

namespace permora::host {
namespace {

const nt::Sid kOwner(5, {21, 1, 2, 3, 1000});
const nt::Sid kGroup(5, {21, 1, 2, 3, 1001});
const nt::Sid kEveryone(1, {0});

// The rights that a list grants to these SIDs: for each right, the first entry with it decides.
std::uint32_t Granted(const nt::Acl& list, const std::vector<nt::Sid>& sids) {
    std::uint32_t granted = 0;
    std::uint32_t denied = 0;
    for (const nt::Ace& entry : list.entries) {
        if (std::find(sids.begin(), sids.end(), entry.sid) == sids.end()) continue;
        if (entry.type == ACCESS_DENIED_ACE_TYPE)
            denied |= entry.mask & ~granted;
        else
            granted |= entry.mask & ~denied;
    }
    return granted;
}

// The rights that the kernel grants for three mode bits.
std::uint32_t Expected(unsigned bits, bool mayEmpty) {
    std::uint32_t rights = 0;
    if ((bits & 4U) != 0) rights |= FILE_READ_DATA | FILE_READ_EA;
    if ((bits & 2U) != 0) rights |= FILE_WRITE_DATA | FILE_APPEND_DATA | FILE_WRITE_EA;
    if ((bits & 2U) != 0 && mayEmpty) rights |= FILE_DELETE_CHILD;
    if ((bits & 1U) != 0) rights |= FILE_EXECUTE;
    return rights;
}

TEST(ModeDescriptor, EveryModeGrantsWhatTheKernelGrants) {
    constexpr std::uint32_t kDecided = FILE_READ_DATA | FILE_READ_EA | FILE_WRITE_DATA | FILE_APPEND_DATA |
                                       FILE_WRITE_EA | FILE_EXECUTE | FILE_DELETE_CHILD;
    for (const nt::ObjectKind kind : {nt::ObjectKind::kFile, nt::ObjectKind::kFolder}) {
        for (unsigned mode = 0; mode < 02000; ++mode) {
            const bool mayEmpty = kind == nt::ObjectKind::kFolder && (mode & 01000U) == 0;
            const nt::Acl list = DescriptorFromMode(mode, kind, kOwner, kGroup).dacl;
            const std::uint32_t owner = Granted(list, {kOwner, kGroup, kEveryone});
            // An owner with all rights has full control, whatever the object is.
            const std::uint32_t decided = mayEmpty ? kDecided : kDecided & ~FILE_DELETE_CHILD;
            ASSERT_EQ(owner & decided, Expected(mode >> 6U & 7U, mayEmpty)) << std::oct << mode;
            ASSERT_EQ(Granted(list, {kGroup, kEveryone}) & kDecided, Expected(mode >> 3U & 7U, mayEmpty))
                << std::oct << mode;
            ASSERT_EQ(Granted(list, {kEveryone}) & kDecided, Expected(mode & 7U, mayEmpty))
                << std::oct << mode;
            ASSERT_EQ(owner & (WRITE_DAC | READ_CONTROL), WRITE_DAC | READ_CONTROL) << std::oct << mode;
        }
    }
}

TEST(ModeDescriptor, UsualModesAreShortListsOfAllowingEntries) {
    const std::string owner = kOwner.ToText();
    const std::string group = kGroup.ToText();
    EXPECT_EQ(nt::ToSddl(DescriptorFromMode(0755, nt::ObjectKind::kFolder, kOwner, kGroup), 15),
              "O:" + owner + "G:" + group + "D:AI(A;;FA;;;" + owner + ")(A;;0x1200a9;;;" + group +
                  ")(A;;0x1200a9;;;WD)");
}

}  // namespace
}  // namespace permora::host
