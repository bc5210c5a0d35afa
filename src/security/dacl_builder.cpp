#include "security/dacl_builder.h"

#include <cstddef>
#include <utility>

#include "platform/api/errors.h"
#include "platform/library_function.h"

namespace permora {
namespace {

// Bytes of a list of all entries. Entries that will not be written are counted as well and leave room at the
// end.
std::size_t DaclSize(std::span<const AccessEntry> entries) {
    std::size_t size = sizeof(ACL);
    for (const AccessEntry& entry : entries) {
        size += sizeof(ACE_HEADER) + sizeof(ACCESS_MASK);
        if (entry.account.sid) size += entry.account.sid->ByteSize();
    }
    return size;
}

// A list without entries yet, of `size` bytes.
Outcome MakeList(std::size_t size, UniqueLocal<ACL>& list) {
    UniqueLocal<ACL> made(static_cast<PACL>(LocalAlloc(LMEM_FIXED, size)));
    if (!made) return {ERROR_NOT_ENOUGH_MEMORY, Step::kTakeBuffer};
    if (InitializeAcl(made.get(), static_cast<DWORD>(size), ACL_REVISION) == FALSE)
        return {ERROR_INVALID_ACL, Step::kInitializeList};
    list = std::move(made);
    return {};
}

// The sizes of a descriptor's five blocks, in the order in which MakeAbsoluteSD takes them.
struct AbsoluteSizes {
    DWORD descriptor = 0;
    DWORD dacl = 0;
    DWORD sacl = 0;
    DWORD owner = 0;
    DWORD group = 0;
};

struct AbsoluteBlocks {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    void* dacl = nullptr;
    void* sacl = nullptr;
    void* owner = nullptr;
    void* group = nullptr;
};

bool MakeAbsolute(PSECURITY_DESCRIPTOR source, AbsoluteSizes& sizes, const AbsoluteBlocks& blocks) {
    return MakeAbsoluteSD(source, blocks.descriptor, &sizes.descriptor, static_cast<PACL>(blocks.dacl),
                          &sizes.dacl, static_cast<PACL>(blocks.sacl), &sizes.sacl, blocks.owner,
                          &sizes.owner, blocks.group, &sizes.group) != FALSE;
}

bool TakeBlocks(HANDLE heap, const AbsoluteSizes& sizes, AbsoluteBlocks& blocks) {
    const auto take = [heap](DWORD size, void*& block) {
        if (size != 0) block = HeapAlloc(heap, 0, size);
        return size == 0 || block != nullptr;
    };
    return sizes.descriptor != 0 && take(sizes.descriptor, blocks.descriptor) &&
           take(sizes.dacl, blocks.dacl) && take(sizes.sacl, blocks.sacl) &&
           take(sizes.owner, blocks.owner) && take(sizes.group, blocks.group);
}

}  // namespace

UniqueLibrary LoadAccessListLibrary() {
    return UniqueLibrary(LoadLibraryA("advapi32.dll"));
}

Outcome BuildDacl(HMODULE library, std::span<const AccessEntry> entries, UniqueLocal<ACL>& dacl) {
    using AddAceFunction = decltype(&AddAccessAllowedAceEx);
    const auto addDenied = FindFunction<AddAceFunction>(library, "AddAccessDeniedAceEx");
    const auto addAllowed = FindFunction<AddAceFunction>(library, "AddAccessAllowedAceEx");
    if (library == nullptr || addDenied == nullptr || addAllowed == nullptr)
        return {ERROR_PROC_NOT_FOUND, Step::kFindListFunctions};
    UniqueLocal<ACL> made;
    if (Outcome outcome = MakeList(DaclSize(entries), made); !outcome.IsDone()) return outcome;
    for (const AccessEntry& entry : entries) {
        if (entry.IsOfOtherType() || !entry.IsAcceptable()) continue;
        const AddAceFunction add = entry.IsAllow() ? addAllowed : addDenied;
        if (add(made.get(), ACL_REVISION, entry.aceFlags, entry.mask, entry.account.RawSid()) == FALSE)
            return {GetLastError()};
    }
    dacl = std::move(made);
    return {};
}

Outcome MakeEmptyList(UniqueLocal<ACL>& dacl) {
    return MakeList(sizeof(ACL), dacl);
}

SECURITY_INFORMATION DaclWriteInformation(std::optional<DaclInheritance> inheritance) {
    if (!inheritance) return DACL_SECURITY_INFORMATION;
    return DACL_SECURITY_INFORMATION |
           (inheritance == DaclInheritance::kFromParent ? UNPROTECTED_DACL_SECURITY_INFORMATION
                                                        : PROTECTED_DACL_SECURITY_INFORMATION);
}

bool MakeAbsoluteDescriptor(PSECURITY_DESCRIPTOR descriptor, PSECURITY_DESCRIPTOR& absolute,
                            UniqueHeap& heap) {
    UniqueHeap newHeap(HeapCreate(0, 0, 0));
    if (!newHeap) return false;
    // Without blocks, the call must fail and report the sizes.
    AbsoluteSizes sizes;
    if (MakeAbsolute(descriptor, sizes, {}) || GetLastError() == ERROR_SUCCESS) return false;
    AbsoluteBlocks blocks;
    if (!TakeBlocks(newHeap.get(), sizes, blocks) || !MakeAbsolute(descriptor, sizes, blocks)) return false;
    absolute = blocks.descriptor;
    heap = std::move(newHeap);
    return true;
}

}  // namespace permora
