// The functions of winbind's client library that are called. The library is opened at run time: a machine
// without it starts as well, and its package is not needed for building.
//
// Source: the interface of libwbclient.so.0 as its header <wbclient.h> documents it, version 0.12 (Samba 4.2)
// and later. Its structures do not change while the library has this name, with one exception below. All
// functions return an error code and store results on success alone; results are freed with `freeMemory`, one
// call for each.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>

namespace permora::host {

// The codes that are distinguished.
inline constexpr int kWinbindSuccess = 0;
inline constexpr int kWinbindInvalidSid = 4;
inline constexpr int kWinbindInvalidParameter = 5;
inline constexpr int kWinbindDomainNotFound = 7;
inline constexpr int kWinbindUnknownUser = 11;
inline constexpr int kWinbindUnknownGroup = 12;
inline constexpr int kWinbindAuthenticationFailed = 10;

struct WinbindContext;  // the library's; of one thread at a time

struct WinbindSid {
    std::uint8_t revision;
    std::uint8_t count;  // of sub-authorities
    std::uint8_t authority[6];
    std::uint32_t subAuthorities[15];
};

struct WinbindDomainInfo {
    char* shortName;
    char* dnsName;
    WinbindSid sid;
    std::uint32_t domainFlags;
    std::uint32_t trustFlags;
    std::uint32_t trustType;
    char* trustRouting;  // missing from older libraries, whose elements are that much shorter
};

struct WinbindUnixId {
    int type;  // 1: user, 2: group, 3: both
    std::uint32_t id;
};

struct WinbindBlob {
    std::uint8_t* data;
    std::size_t length;
};

// A logon by what a ticket says of a user (level 4). The library's union of all kinds of passwords is larger
// than the blob: the rest is never read at this level.
struct WinbindLogon {
    const char* account;
    const char* domain;
    const char* workstation;
    std::uint32_t flags;
    std::uint32_t parameterControl;
    int level;
    union {
        WinbindBlob ticket;
        std::uint8_t room[64];
    };
};
inline constexpr int kLogonByTicket = 4;

struct WinbindSidAndAttributes {
    WinbindSid sid;
    std::uint32_t attributes;
};

// The result of a logon: the account's SID first, then its primary group's, then all others.
struct WinbindLogonResult {
    std::uint32_t userFlags;
    char* accountName;
    char* userPrincipal;
    char* fullName;
    char* domainName;
    char* dnsDomainName;
    std::uint32_t accountFlags;
    std::uint8_t userSessionKey[16];
    std::uint8_t otherSessionKey[8];
    std::uint16_t logonCount;
    std::uint16_t badPasswordCount;
    std::uint64_t times[6];
    char* logonServer;
    char* logonScript;
    char* profilePath;
    char* homeDirectory;
    char* homeDrive;
    std::uint32_t sidCount;
    WinbindSidAndAttributes* sids;
};

struct WinbindLibrary {
    WinbindContext* (*createContext)();
    void (*freeContext)(WinbindContext*);
    void (*freeMemory)(void*);
    int (*listTrusts)(WinbindContext*, WinbindDomainInfo** domains, std::size_t* count);
    int (*lookupName)(WinbindContext*, const char* domain, const char* name, WinbindSid*, int* type);
    int (*lookupSid)(WinbindContext*, const WinbindSid*, char** domain, char** name, int* type);
    int (*lookupRids)(WinbindContext*, WinbindSid* domain, int count, std::uint32_t* rids,
                      const char** domainName, const char*** names, int** types);
    int (*listUsers)(WinbindContext*, const char* domain, std::uint32_t* count, const char*** names);
    int (*listGroups)(WinbindContext*, const char* domain, std::uint32_t* count, const char*** names);
    int (*lookupUserSids)(WinbindContext*, const WinbindSid*, bool domainGroupsOnly, std::uint32_t* count,
                          WinbindSid**);
    int (*getSidAliases)(WinbindContext*, const WinbindSid* domain, WinbindSid* sids, std::uint32_t count,
                         std::uint32_t** rids, std::uint32_t* ridCount);
    int (*sidsToUnixIds)(WinbindContext*, const WinbindSid*, std::uint32_t count, WinbindUnixId*);
    int (*sidToUid)(WinbindContext*, const WinbindSid*, uid_t*);
    int (*uidToSid)(WinbindContext*, uid_t, WinbindSid*);
    int (*gidToSid)(WinbindContext*, gid_t, WinbindSid*);
    int (*pingDc)(WinbindContext*, const char* domain, void** authenticationError);
    int (*authenticate)(WinbindContext*, const WinbindLogon*, WinbindLogonResult**,
                        void** authenticationError);
};

// Null when the library is missing or older. Opened once; stays open as long as the process.
const WinbindLibrary* TheWinbindLibrary();

}  // namespace permora::host
