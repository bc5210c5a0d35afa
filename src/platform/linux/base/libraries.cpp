#include "platform/linux/base/libraries.h"

#include <string_view>

#include "platform/api/account_enumeration.h"
#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/api/security.h"
#include "platform/ascii.h"
#include "platform/linux/base/failure.h"

namespace {

using permora::EqualsIgnoringCase;
using permora::host::Fail;
using permora::host::Message;
using permora::host::NetworkMessages;

// Converts a function of any type to the type that GetProcAddress returns. The caller converts it back.
template <typename Service>
FARPROC AddressOf(Service* service) {
    // Through void(), to and from which the compiler lets every function type be cast.
    return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(service));
}

}  // namespace

// One system library. It is part of the program and always loaded; its handle is its address. The SDK chose
// the tag.
struct HINSTANCE__ {  // NOLINT(bugprone-reserved-identifier)
    struct Function {
        std::string_view name;
        FARPROC address;
    };

    std::string_view name;  // without ".dll"
    std::span<const Function> functions;
    std::span<const Message> messages;
};

namespace {

using Library = HINSTANCE__;
using Function = Library::Function;

std::span<const Library> Libraries() {
    static const Function kSecurityFunctions[] = {
        {"AddAccessAllowedAceEx", AddressOf(AddAccessAllowedAceEx)},
        {"AddAccessDeniedAceEx", AddressOf(AddAccessDeniedAceEx)},
        {"CreateWellKnownSid", AddressOf(CreateWellKnownSid)},
    };
    static const Function kKernelFunctions[] = {
        {"GetFileSizeEx", AddressOf(GetFileSizeEx)},
    };
    static const Library kLibraries[] = {
        {"advapi32", kSecurityFunctions, {}},
        {"kernel32", kKernelFunctions, {}},
        {"netmsg", {}, NetworkMessages()},
    };
    return kLibraries;
}

HMODULE FindByName(std::string_view name) {
    constexpr std::string_view extension = ".dll";
    if (name.size() > extension.size() &&
        EqualsIgnoringCase(name.substr(name.size() - extension.size()), extension)) {
        name.remove_suffix(extension.size());
    }
    for (const Library& library : Libraries())
        if (EqualsIgnoringCase(name, library.name)) return const_cast<HMODULE>(&library);  // the SDK's type
    return nullptr;
}

// Null unless `handle` is a handle of a library.
const Library* FindByHandle(HMODULE handle) {
    for (const Library& library : Libraries())
        if (&library == handle) return &library;
    return nullptr;
}

}  // namespace

namespace permora::host {

const std::span<const Message>* MessagesOf(HMODULE library) {
    const Library* found = FindByHandle(library);
    return found != nullptr ? &found->messages : nullptr;
}

}  // namespace permora::host

HMODULE WINAPI LoadLibraryA(LPCSTR name) {
    return LoadLibraryExA(name, nullptr, 0);
}

HMODULE WINAPI LoadLibraryExA(LPCSTR name, HANDLE reserved, DWORD flags) {
    if (name == nullptr || reserved != nullptr || (flags & ~LOAD_LIBRARY_AS_DATAFILE) != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    HMODULE library = FindByName(name);
    if (library == nullptr) SetLastError(ERROR_MOD_NOT_FOUND);
    return library;
}

BOOL WINAPI FreeLibrary(HMODULE library) {
    return FindByHandle(library) != nullptr ? TRUE : Fail(ERROR_INVALID_HANDLE);
}

FARPROC WINAPI GetProcAddress(HMODULE library, LPCSTR name) {
    const Library* found = FindByHandle(library);
    if (found == nullptr) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    if (name != nullptr) {
        for (const Function& function : found->functions)
            if (function.name == name) return function.address;
    }
    SetLastError(ERROR_PROC_NOT_FOUND);
    return nullptr;
}
