#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/registry.h"
#include "platform/ascii.h"
#include "platform/linux/base/handle_table.h"
#include "platform/linux/registry/registry_layers.h"
#include "platform/linux/registry/registry_places.h"

namespace permora::host {
namespace {

struct OpenKey : HandleObject {
    OpenKey(LayeredKey opened, REGSAM granted) : key(std::move(opened)), access(granted) {}
    const LayeredKey key;
    const REGSAM access;
};

constexpr REGSAM kEveryAccess = KEY_READ | KEY_WRITE;

bool IsRoot(HKEY key) {
    return key == HKEY_CURRENT_USER || key == HKEY_LOCAL_MACHINE || key == HKEY_USERS ||
           key == HKEY_CLASSES_ROOT;
}

LayeredKey RootOf(HKEY key) {
    const RegistryStore user(UserRegistryFolder(), RegistryAudience::kOwner);
    const RegistryStore machine(MachineRegistryFolder(), RegistryAudience::kEveryone);
    if (key == HKEY_CURRENT_USER) {
        // The system's settings for new users.
        return LayeredKey({{user, "HKEY_CURRENT_USER"}, {machine, "HKEY_USERS\\.DEFAULT"}},
                          RegistryWrites::kToFirst);
    }
    if (key == HKEY_LOCAL_MACHINE)
        return LayeredKey({{machine, "HKEY_LOCAL_MACHINE"}}, RegistryWrites::kToFirst);
    if (key == HKEY_USERS) return LayeredKey({{machine, "HKEY_USERS"}}, RegistryWrites::kToFirst);
    // HKEY_CLASSES_ROOT
    return LayeredKey(
        {{user, "HKEY_CURRENT_USER\\Software\\Classes"}, {machine, "HKEY_LOCAL_MACHINE\\Software\\Classes"}},
        RegistryWrites::kWhereItLies);
}

// Null unless it is the handle of a key.
std::shared_ptr<const OpenKey> FindKey(HKEY key) {
    if (!IsRoot(key)) return OpenHandles().Find<OpenKey>(key);
    return std::make_shared<const OpenKey>(RootOf(key), kEveryAccess);
}

HKEY AddKey(LayeredKey key, REGSAM access) {
    return static_cast<HKEY>(OpenHandles().Add(std::make_shared<OpenKey>(std::move(key), access)));
}

bool HasControlCharacter(std::string_view text) {
    return std::any_of(text.begin(), text.end(), IsControl);
}

// A path of keys in the form of the files; null is the empty path.
DWORD ReadSubPath(const char* text, std::string& subPath) {
    constexpr std::size_t kLongestName = 255;
    std::string_view path = text != nullptr ? text : "";
    if (path.ends_with('\\')) path.remove_suffix(1);
    if (HasControlCharacter(path)) return ERROR_INVALID_PARAMETER;
    for (std::string_view rest = path; !rest.empty();) {
        const std::string_view name = rest.substr(0, rest.find('\\'));
        if (name.empty()) return ERROR_BAD_PATHNAME;
        if (name.size() > kLongestName) return ERROR_INVALID_PARAMETER;
        rest.remove_prefix(std::min(name.size() + 1, rest.size()));
    }
    subPath = path;
    return ERROR_SUCCESS;
}

// The key that a call names by a handle, which must allow `access`, and a path below it.
DWORD FindBelow(HKEY handle, const char* path, REGSAM access, std::optional<LayeredKey>& found) {
    const std::shared_ptr<const OpenKey> open = FindKey(handle);
    std::string subPath;
    if (!open) return ERROR_INVALID_HANDLE;
    if ((open->access & access) != access) return ERROR_ACCESS_DENIED;
    const DWORD error = ReadSubPath(path, subPath);
    if (error == ERROR_SUCCESS) found = open->key.Below(subPath);
    return error;
}

DWORD Open(HKEY handle, const char* path, REGSAM access, HKEY& result) {
    std::optional<LayeredKey> key;
    bool exists = false;
    DWORD error = FindBelow(handle, path, 0, key);
    if (error == ERROR_SUCCESS) error = key->Exists(exists);
    if (error == ERROR_SUCCESS && !exists) error = ERROR_FILE_NOT_FOUND;
    if (error == ERROR_SUCCESS) result = AddKey(*std::move(key), access);
    return error;
}

DWORD Create(HKEY handle, const char* path, REGSAM access, HKEY& result, DWORD& disposition) {
    std::optional<LayeredKey> key;
    bool exists = false;
    DWORD error = FindBelow(handle, path, 0, key);
    if (error == ERROR_SUCCESS) error = key->Exists(exists);
    if (error == ERROR_SUCCESS && !exists) {
        error = FindBelow(handle, path, KEY_CREATE_SUB_KEY, key);
        if (error == ERROR_SUCCESS) error = key->Create();
    }
    if (error != ERROR_SUCCESS) return error;
    result = AddKey(*std::move(key), access);
    disposition = exists ? REG_OPENED_EXISTING_KEY : REG_CREATED_NEW_KEY;
    return ERROR_SUCCESS;
}

DWORD HandOut(const RegistryValue& value, LPDWORD type, LPBYTE data, LPDWORD size) {
    const auto needed = static_cast<DWORD>(value.data.size());
    const bool fits = data == nullptr || needed <= *size;
    if (type != nullptr) *type = value.type;
    if (size != nullptr) *size = needed;
    if (!fits) return ERROR_MORE_DATA;
    if (data != nullptr && needed > 0) std::memcpy(data, value.data.data(), needed);
    return ERROR_SUCCESS;
}

LSTATUS Status(DWORD error) {
    return static_cast<LSTATUS>(error);
}

}  // namespace
}  // namespace permora::host

using namespace permora::host;

LSTATUS WINAPI RegOpenKeyExA(HKEY key, LPCSTR subKey, DWORD options, REGSAM access, PHKEY result) {
    if (options != 0 || result == nullptr) return Status(ERROR_INVALID_PARAMETER);
    return Status(Open(key, subKey, access, *result));
}

LSTATUS WINAPI RegCreateKeyExA(HKEY key, LPCSTR subKey, DWORD reserved, LPSTR /*keyClass*/, DWORD options,
                               REGSAM access, LPSECURITY_ATTRIBUTES security, PHKEY result,
                               LPDWORD disposition) {
    if (reserved != 0 || options != REG_OPTION_NON_VOLATILE || security != nullptr || result == nullptr)
        return Status(ERROR_INVALID_PARAMETER);
    DWORD happened = 0;
    const DWORD error = Create(key, subKey, access, *result, happened);
    if (error == ERROR_SUCCESS && disposition != nullptr) *disposition = happened;
    return Status(error);
}

LSTATUS WINAPI RegCloseKey(HKEY key) {
    return Status(IsRoot(key) || OpenHandles().Remove<OpenKey>(key) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE);
}

LSTATUS WINAPI RegQueryValueExA(HKEY key, LPCSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data,
                                LPDWORD size) {
    if (reserved != nullptr || (data != nullptr && size == nullptr)) return Status(ERROR_INVALID_PARAMETER);
    std::optional<LayeredKey> found;
    RegistryValue value;
    DWORD error = FindBelow(key, nullptr, KEY_QUERY_VALUE, found);
    if (error == ERROR_SUCCESS) error = found->Query(name != nullptr ? name : "", value);
    return Status(error == ERROR_SUCCESS ? HandOut(value, type, data, size) : error);
}

LSTATUS WINAPI RegSetValueExA(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data,
                              DWORD size) {
    RegistryValue value{name != nullptr ? name : "", type, {}};
    if (reserved != 0 || (data == nullptr && size != 0) || HasControlCharacter(value.name))
        return Status(ERROR_INVALID_PARAMETER);
    if (size != 0) value.data.assign(data, data + size);
    std::optional<LayeredKey> found;
    const DWORD error = FindBelow(key, nullptr, KEY_SET_VALUE, found);
    return Status(error == ERROR_SUCCESS ? found->Set(value) : error);
}

LSTATUS WINAPI RegEnumKeyExA(HKEY key, DWORD index, LPSTR name, LPDWORD nameSize, LPDWORD reserved,
                             LPSTR keyClass, LPDWORD classSize, FILETIME* lastWrite) {
    if (name == nullptr || nameSize == nullptr || reserved != nullptr || keyClass != nullptr ||
        classSize != nullptr || lastWrite != nullptr) {
        return Status(ERROR_INVALID_PARAMETER);
    }
    std::optional<LayeredKey> found;
    std::vector<std::string> names;
    DWORD error = FindBelow(key, nullptr, KEY_ENUMERATE_SUB_KEYS, found);
    if (error == ERROR_SUCCESS) error = found->Subkeys(names);
    if (error != ERROR_SUCCESS) return Status(error);
    if (index >= names.size()) return Status(ERROR_NO_MORE_ITEMS);
    const std::string& chosen = names[index];
    if (chosen.size() >= *nameSize) return Status(ERROR_MORE_DATA);
    std::memcpy(name, chosen.c_str(), chosen.size() + 1);
    *nameSize = static_cast<DWORD>(chosen.size());
    return Status(ERROR_SUCCESS);
}

LSTATUS WINAPI RegDeleteKeyA(HKEY key, LPCSTR subKey) {
    if (subKey == nullptr || *subKey == '\0') return Status(ERROR_INVALID_PARAMETER);
    std::optional<LayeredKey> found;
    const DWORD error = FindBelow(key, subKey, 0, found);
    return Status(error == ERROR_SUCCESS ? found->Remove() : error);
}
