// One open key of the registry. All functions return 0 or a system error code.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "platform/api/registry.h"

namespace permora {

// A value to read: a buffer for its bytes, and the result.
struct ValueBuffer {
    std::span<std::byte> room;
    DWORD type = 0;  // REG_ constant
    DWORD size = 0;  // in bytes
};

class RegistryKey {
  public:
    RegistryKey() = default;
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;
    ~RegistryKey() { Close(); }

    // The key must be closed. `path` has single backslashes.
    DWORD Open(HKEY parent, const char* path, DWORD rights);
    DWORD Create(HKEY parent, const char* path);  // or open it; for writing
    DWORD Close();

    // ERROR_MORE_DATA when the value does not fit.
    DWORD Read(const char* name, ValueBuffer& value) const;
    // `name` null: the key's default value. The text is stored with its NUL.
    DWORD WriteText(const char* name, const std::string& text) const;
    DWORD WriteNumber(const char* name, std::uint32_t number) const;
    DWORD WriteBytes(const char* name, std::span<const std::uint8_t> bytes) const;
    // Deletes a key below this one with everything in it. A missing key is not a failure.
    DWORD DeleteTree(const char* name) const;

  private:
    HKEY handle = nullptr;
};

}  // namespace permora
