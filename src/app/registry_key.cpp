#include "app/registry_key.h"

#include <array>
#include <utility>

#include "platform/api/errors.h"

namespace permora {
namespace {

bool MeansMissing(DWORD error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

DWORD Code(LONG result) {
    return static_cast<DWORD>(result);
}

}  // namespace

DWORD RegistryKey::Open(HKEY parent, const char* path, DWORD rights) {
    return Code(RegOpenKeyExA(parent, path, 0, rights, &handle));
}

DWORD RegistryKey::Create(HKEY parent, const char* path) {
    return Code(RegCreateKeyExA(parent, path, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_WRITE, nullptr,
                                &handle, nullptr));
}

DWORD RegistryKey::Close() {
    if (handle == nullptr) return ERROR_SUCCESS;
    return Code(RegCloseKey(std::exchange(handle, nullptr)));
}

DWORD RegistryKey::Read(const char* name, ValueBuffer& value) const {
    auto size = static_cast<DWORD>(value.room.size());
    DWORD type = 0;
    const LONG result =
        RegQueryValueExA(handle, name, nullptr, &type, reinterpret_cast<BYTE*>(value.room.data()), &size);
    if (Code(result) != ERROR_SUCCESS) return Code(result);
    value.type = type;
    value.size = size;
    return ERROR_SUCCESS;
}

DWORD RegistryKey::WriteText(const char* name, const std::string& text) const {
    const char* bytes = text.c_str();
    return Code(RegSetValueExA(handle, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(bytes),
                               static_cast<DWORD>(text.size() + 1)));
}

DWORD RegistryKey::WriteNumber(const char* name, std::uint32_t number) const {
    return Code(
        RegSetValueExA(handle, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof(number)));
}

DWORD RegistryKey::WriteBytes(const char* name, std::span<const std::uint8_t> bytes) const {
    return Code(RegSetValueExA(handle, name, 0, REG_BINARY, bytes.data(), static_cast<DWORD>(bytes.size())));
}

DWORD RegistryKey::DeleteTree(const char* name) const {
    RegistryKey tree;
    DWORD error = tree.Open(handle, name, KEY_READ | KEY_WRITE);
    constexpr DWORD kLongestName = 256;
    std::array<char, kLongestName + 1> child{};
    while (error == ERROR_SUCCESS) {
        DWORD length = child.size();
        error =
            Code(RegEnumKeyExA(tree.handle, 0, child.data(), &length, nullptr, nullptr, nullptr, nullptr));
        if (error == ERROR_SUCCESS) error = tree.DeleteTree(child.data());
    }
    if (error != ERROR_NO_MORE_ITEMS) return MeansMissing(error) ? ERROR_SUCCESS : error;
    error = tree.Close();
    if (error == ERROR_SUCCESS) error = Code(RegDeleteKeyA(handle, name));
    return MeansMissing(error) ? ERROR_SUCCESS : error;
}

}  // namespace permora
