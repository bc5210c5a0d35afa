// The resources that the linker has put into the program, found by the system.
#include "framework/resource_file.h"
#include "platform/api/base.h"

namespace permora {

std::span<const std::byte> FindProgramResource(ResourceType type, unsigned int id) {
    if (id == 0 || id > 0xFFFF) return {};
    HRSRC found =
        FindResourceW(nullptr, MAKEINTRESOURCEW(id), MAKEINTRESOURCEW(static_cast<std::uint16_t>(type)));
    HGLOBAL loaded = found != nullptr ? LoadResource(nullptr, found) : nullptr;
    const void* bytes = loaded != nullptr ? LockResource(loaded) : nullptr;
    if (bytes == nullptr) return {};
    return {static_cast<const std::byte*>(bytes), SizeofResource(nullptr, found)};
}

}  // namespace permora
