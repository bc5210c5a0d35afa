#include "platform/linux/base/libraries.h"

#include <atomic>
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

// A function of any type as the one type that GetProcAddress returns; the caller turns it back.
template <typename Service>
FARPROC AddressOf(Service* service) {
    // By way of void(), the type that the compiler lets every function type be cast to and from.
    return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(service));
}

}  // namespace

// One system library; a handle is its address. The tag is the SDK's.
struct HINSTANCE__ {  // NOLINT(bugprone-reserved-identifier)
    struct Function {
        std::string_view name;
        FARPROC address;
    };

    std::string_view name;  // without ".dll"
    std::span<const Function> functions;
    std::span<const Message> messages;
    std::atomic<unsigned> loads = 0;
};

namespace {

using Library = HINSTANCE__;
using Function = Library::Function;

std::span<Library> Libraries() {
    static const Function securityFunctions[] = {
        {"AddAccessAllowedAceEx", AddressOf(AddAccessAllowedAceEx)},
        {"AddAccessDeniedAceEx", AddressOf(AddAccessDeniedAceEx)},
        {"CreateWellKnownSid", AddressOf(CreateWellKnownSid)},
    };
    static const Function kernelFunctions[] = {
        {"GetFileSizeEx", AddressOf(GetFileSizeEx)},
    };
    static Library libraries[] = {
        {"advapi32", securityFunctions, {}},
        {"kernel32", kernelFunctions, {}},
        {"netmsg", {}, NetworkMessages()},
    };
    return libraries;
}

Library* FindByName(std::string_view name) {
    constexpr std::string_view extension = ".dll";
    if (name.size() > extension.size() &&
        EqualsIgnoringCase(name.substr(name.size() - extension.size()), extension)) {
        name.remove_suffix(extension.size());
    }
    for (Library& library : Libraries())
        if (EqualsIgnoringCase(name, library.name)) return &library;
    return nullptr;
}

// The library that `handle` stands for while it is loaded, else null.
Library* FindLoaded(HMODULE handle) {
    for (Library& library : Libraries())
        if (&library == handle && library.loads != 0) return &library;
    return nullptr;
}

}  // namespace

namespace permora::host {

const std::span<const Message>* MessagesOf(HMODULE library) {
    const Library* loaded = FindLoaded(library);
    return loaded != nullptr ? &loaded->messages : nullptr;
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
    Library* library = FindByName(name);
    if (library == nullptr) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    ++library->loads;
    return library;
}

BOOL WINAPI FreeLibrary(HMODULE library) {
    Library* loaded = FindLoaded(library);
    if (loaded == nullptr) return Fail(ERROR_INVALID_HANDLE);
    // Another thread may free the last load in this moment; the count must not fall below zero.
    unsigned loads = loaded->loads;
    while (loads != 0 && !loaded->loads.compare_exchange_weak(loads, loads - 1)) {
    }
    return loads != 0 ? TRUE : Fail(ERROR_INVALID_HANDLE);
}

FARPROC WINAPI GetProcAddress(HMODULE library, LPCSTR name) {
    const Library* loaded = FindLoaded(library);
    if (loaded == nullptr) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    if (name != nullptr) {
        for (const Function& function : loaded->functions)
            if (function.name == name) return function.address;
    }
    SetLastError(ERROR_PROC_NOT_FOUND);
    return nullptr;
}
