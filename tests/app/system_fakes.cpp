#include "tests/app/system_fakes.h"

#include <cstdlib>

#include "platform/api/registry.h"
#include "platform/api/system.h"

namespace {

permora::test::SystemFakes* systemFakes = nullptr;

}  // namespace

extern "C" {

LSTATUS __real_RegCreateKeyExA(HKEY key, LPCSTR subKey, DWORD reserved, LPSTR keyClass, DWORD options,
                               REGSAM access, LPSECURITY_ATTRIBUTES security, PHKEY result,
                               LPDWORD disposition);
LSTATUS __real_RegOpenKeyExA(HKEY key, LPCSTR subKey, DWORD options, REGSAM access, PHKEY result);
BOOL __real_GetVersionExA(OSVERSIONINFOA* version);
LPSTR __real_GetCommandLineA();
DWORD __real_GetModuleFileNameA(HMODULE module, LPSTR path, DWORD size);

LSTATUS __wrap_RegCreateKeyExA(HKEY key, LPCSTR subKey, DWORD reserved, LPSTR keyClass, DWORD options,
                               REGSAM access, LPSECURITY_ATTRIBUTES security, PHKEY result,
                               LPDWORD disposition) {
    if (systemFakes == nullptr || key != HKEY_CLASSES_ROOT) {
        if (systemFakes != nullptr && systemFakes->writeError != 0)
            return static_cast<LSTATUS>(systemFakes->writeError);
        return __real_RegCreateKeyExA(key, subKey, reserved, keyClass, options, access, security, result,
                                      disposition);
    }
    const std::string path = std::string("Classes\\") + subKey;
    return __wrap_RegCreateKeyExA(HKEY_CURRENT_USER, path.c_str(), reserved, keyClass, options, access,
                                  security, result, disposition);
}

LSTATUS __wrap_RegOpenKeyExA(HKEY key, LPCSTR subKey, DWORD options, REGSAM access, PHKEY result) {
    if (systemFakes == nullptr || key != HKEY_CLASSES_ROOT)
        return __real_RegOpenKeyExA(key, subKey, options, access, result);
    const std::string path = std::string("Classes\\") + subKey;
    return __real_RegOpenKeyExA(HKEY_CURRENT_USER, path.c_str(), options, access, result);
}

BOOL __wrap_GetVersionExA(OSVERSIONINFOA* version) {
    if (systemFakes == nullptr) return __real_GetVersionExA(version);
    version->dwMajorVersion = systemFakes->majorVersion;
    return TRUE;
}

LPSTR __wrap_GetCommandLineA() {
    return systemFakes != nullptr ? systemFakes->commandLine.data() : __real_GetCommandLineA();
}

DWORD __wrap_GetModuleFileNameA(HMODULE module, LPSTR path, DWORD size) {
    if (systemFakes == nullptr) return __real_GetModuleFileNameA(module, path, size);
    const std::size_t length = systemFakes->programPath.copy(path, size - 1);
    path[length] = '\0';
    return static_cast<DWORD>(length);
}

}  // extern "C"

namespace permora::test {

SystemFakes::SystemFakes() {
    setenv("XDG_CONFIG_HOME", folder.Path().c_str(), 1);
    systemFakes = this;
}

SystemFakes::~SystemFakes() {
    systemFakes = nullptr;
}

}  // namespace permora::test
