#include "platform/linux/accounts/winbind_library.h"

#include <dlfcn.h>

#include <type_traits>

namespace permora::host {

namespace {

static_assert(sizeof(WinbindSid) == 68 && alignof(WinbindSid) == 4);
static_assert(sizeof(WinbindUnixId) == 8 && sizeof(WinbindSidAndAttributes) == 72);
// With pointers of eight bytes, as the library's own compiler lays them out.
static_assert(sizeof(void*) != 8 ||
              (sizeof(WinbindDomainInfo) == 104 && offsetof(WinbindLogon, ticket) == 40 &&
               offsetof(WinbindLogonResult, sidCount) == 168));

bool Load(WinbindLibrary& library) {
    void* const handle = dlopen("libwbclient.so.0", RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) return false;
    bool isComplete = true;
    const auto find = [&](auto& function, const char* name) {
        function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(dlsym(handle, name));
        isComplete = isComplete && function != nullptr;
    };
    find(library.createContext, "wbcCtxCreate");
    find(library.freeContext, "wbcCtxFree");
    find(library.freeMemory, "wbcFreeMemory");
    find(library.listTrusts, "wbcCtxListTrusts");
    find(library.lookupName, "wbcCtxLookupName");
    find(library.lookupSid, "wbcCtxLookupSid");
    find(library.lookupRids, "wbcCtxLookupRids");
    find(library.listUsers, "wbcCtxListUsers");
    find(library.listGroups, "wbcCtxListGroups");
    find(library.lookupUserSids, "wbcCtxLookupUserSids");
    find(library.getSidAliases, "wbcCtxGetSidAliases");
    find(library.sidsToUnixIds, "wbcCtxSidsToUnixIds");
    find(library.sidToUid, "wbcCtxSidToUid");
    find(library.uidToSid, "wbcCtxUidToSid");
    find(library.gidToSid, "wbcCtxGidToSid");
    find(library.pingDc, "wbcCtxPingDc");
    find(library.authenticate, "wbcCtxAuthenticateUserEx");
    return isComplete;
}

}  // namespace

const WinbindLibrary* TheWinbindLibrary() {
    static WinbindLibrary kLibrary{};
    static const bool kIsLoaded = Load(kLibrary);
    return kIsLoaded ? &kLibrary : nullptr;
}

}  // namespace permora::host
