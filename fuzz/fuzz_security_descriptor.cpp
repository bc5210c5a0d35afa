// Descriptors from disks that anyone may have written: read, written, handed down and put into words.
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "fuzz/require.h"
#include "platform/nt/inheritance.h"
#include "platform/nt/sddl.h"
#include "platform/nt/security_descriptor.h"

namespace permora::nt {
namespace {

constexpr std::uint32_t kAllParts = 15;

void CheckBytes(const SecurityDescriptor& descriptor) {
    std::vector<std::uint8_t> bytes;
    Require(descriptor.AppendTo(bytes), "what was read can be written");
    Require(SecurityDescriptor::FromBytes(bytes) == descriptor, "what was written reads the same");
}

void CheckInheritance(const SecurityDescriptor& descriptor, ObjectKind kind) {
    const Sid owner(5, {18});
    const Sid group(5, {32, 544});
    const Acl child = MapGenericRights(descriptor.dacl, {});
    const Acl merged = MergeInherited(child, descriptor.dacl, kind, owner, group);
    Require(MergeInherited(merged, descriptor.dacl, kind, owner, group) == merged,
            "inheriting twice changes nothing");
    std::vector<std::uint8_t> bytes;
    if (merged.AppendTo(bytes)) Require(Acl::FromBytes(bytes) == merged, "an inherited list reads the same");
    for (const Ace& ace : InheritedEntries(descriptor.dacl, kind, owner, group).entries) {
        Require((ace.flags & 0x10) != 0, "what is inherited says so");
        Require(kind == ObjectKind::kFolder || (ace.flags & 0x0F) == 0, "a file hands nothing on");
    }
}

// The entries of a system list; none for a list that is not there.
std::vector<Ace> EntriesOf(std::span<const std::uint8_t> saclBytes) {
    auto acl = Acl::FromBytes(saclBytes);
    return acl ? std::move(acl->entries) : std::vector<Ace>();
}

void CheckText(const SecurityDescriptor& descriptor) {
    const auto text = ToSddl(descriptor, kAllParts);
    if (!text) return;
    const auto read = FromSddl(*text);
    Require(read.has_value(), "text that was written can be read");
    Require(read->owner == descriptor.owner && read->group == descriptor.group &&
                read->daclState == descriptor.daclState && read->dacl.entries == descriptor.dacl.entries &&
                EntriesOf(read->saclBytes) == EntriesOf(descriptor.saclBytes),
            "text loses no entry and no account");
    Require(ToSddl(*read, kAllParts) == text, "text that was written is written the same again");
}

}  // namespace
}  // namespace permora::nt

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace permora::nt;
    const auto descriptor = SecurityDescriptor::FromBytes(std::span(data, size));
    if (!descriptor) return 0;
    CheckBytes(*descriptor);
    CheckInheritance(*descriptor, ObjectKind::kFile);
    CheckInheritance(*descriptor, ObjectKind::kFolder);
    CheckText(*descriptor);
    return 0;
}
