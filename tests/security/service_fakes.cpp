#include "tests/security/service_fakes.h"

#include <algorithm>
#include <cstring>

#include "gtest/gtest.h"
#include "platform/nt/sid.h"

namespace permora::test {
namespace {

ServiceFakes* fakes = nullptr;

BOOL Fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

bool TakeAllocation() {
    if (fakes == nullptr || fakes->allocationsLeft-- > 0) return true;
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return false;
}

// Reports a text by the SDK's contract: the size needed with the NUL when it does not fit, the length when it
// does.
bool Report(const std::string& text, LPSTR buffer, LPDWORD size) {
    const auto needed = static_cast<DWORD>(text.size() + 1);
    const bool fits = *size >= needed;
    if (fits) std::memcpy(buffer, text.c_str(), needed);
    *size = fits ? needed - 1 : needed;
    return fits;
}

// Null with the last error set when there is no such account.
const FakeAccount* Find(const std::string& sidText) {
    SetLastError(fakes->accountError != ERROR_SUCCESS ? fakes->accountError : DWORD{ERROR_NONE_MAPPED});
    const auto& accounts = fakes->accounts;
    const auto found = std::find_if(accounts.begin(), accounts.end(),
                                    [&](const FakeAccount& account) { return account.sidText == sidText; });
    return fakes->accountError != ERROR_SUCCESS || found == accounts.end() ? nullptr : &*found;
}

}  // namespace

ServiceFakes::ServiceFakes() {
    fakes = this;
}

ServiceFakes::~ServiceFakes() {
    fakes = nullptr;
}

// NOLINTBEGIN(bugprone-reserved-identifier): the linker demands these names
extern "C" {

HLOCAL __real_LocalAlloc(UINT flags, SIZE_T bytes);
HLOCAL __wrap_LocalAlloc(UINT flags, SIZE_T bytes) {
    return TakeAllocation() ? __real_LocalAlloc(flags, bytes) : nullptr;
}

HANDLE __real_HeapCreate(DWORD options, SIZE_T initialSize, SIZE_T maximumSize);
HANDLE __wrap_HeapCreate(DWORD options, SIZE_T initialSize, SIZE_T maximumSize) {
    return TakeAllocation() ? __real_HeapCreate(options, initialSize, maximumSize) : nullptr;
}

LPVOID __real_HeapAlloc(HANDLE heap, DWORD flags, SIZE_T bytes);
LPVOID __wrap_HeapAlloc(HANDLE heap, DWORD flags, SIZE_T bytes) {
    return TakeAllocation() ? __real_HeapAlloc(heap, flags, bytes) : nullptr;
}

FARPROC __real_GetProcAddress(HMODULE library, LPCSTR name);
FARPROC __wrap_GetProcAddress(HMODULE library, LPCSTR name) {
    const bool missing = fakes != nullptr && fakes->missingFunction == name;
    return missing ? nullptr : __real_GetProcAddress(library, name);
}

HMODULE __real_LoadLibraryA(LPCSTR name);
HMODULE __wrap_LoadLibraryA(LPCSTR name) {
    const bool faked = fakes != nullptr && fakes->loadLibrary;
    return faked ? fakes->loadLibrary(name) : __real_LoadLibraryA(name);
}

HMODULE __real_LoadLibraryExA(LPCSTR name, HANDLE reserved, DWORD flags);
HMODULE __wrap_LoadLibraryExA(LPCSTR name, HANDLE reserved, DWORD flags) {
    const bool faked = fakes != nullptr && fakes->loadLibrary;
    return faked ? fakes->loadLibrary(name) : __real_LoadLibraryExA(name, reserved, flags);
}

BOOL __wrap_LookupAccountSidA(LPCSTR /*system*/, PSID sid, LPSTR name, LPDWORD nameSize, LPSTR domain,
                              LPDWORD domainSize, PSID_NAME_USE use) {
    const auto value = nt::Sid::FromBytes({static_cast<const BYTE*>(sid), GetLengthSid(sid)});
    const FakeAccount* account = Find(value->ToText());
    if (account == nullptr) return FALSE;
    const bool nameFits = Report(account->name, name, nameSize);
    const bool domainFits = Report(account->domain, domain, domainSize);
    if (!nameFits || !domainFits) return Fail(ERROR_INSUFFICIENT_BUFFER);
    *use = account->use;
    return TRUE;
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)

}  // namespace permora::test
