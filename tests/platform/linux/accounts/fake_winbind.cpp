#include "tests/platform/linux/accounts/fake_winbind.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <new>
#include <string>
#include <string_view>
#include <thread>

#include "platform/linux/accounts/winbind_library.h"

namespace permora::test {

FakeWinbind& TheFakeWinbind() {
    static FakeWinbind& fake = *new FakeWinbind;
    return fake;
}

namespace {

using host::WinbindSid;

constexpr int kGone = 6;
constexpr int kNotFound = host::kWinbindDomainNotFound;

struct Person {
    const char* name;
    std::uint32_t relativeId;
    int type;
};
constexpr Person kPeople[] = {
    {"anna", 1103, 1}, {"bert", 1104, 1}, {"Engineering", 1107, 2}, {"Payroll", 1109, 4}};

// Lets time pass, and says what the call is to return before it answers.
int Begin() {
    FakeWinbind& fake = TheFakeWinbind();
    ++fake.calls;
    std::this_thread::sleep_for(std::chrono::milliseconds(fake.milliseconds));
    while (fake.mood == FakeMood::kFrozen)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    if (fake.healthyCallsLeft > 0 && --fake.healthyCallsLeft == 0) fake.mood = FakeMood::kNoController;
    return fake.mood == FakeMood::kGone ? kGone : host::kWinbindSuccess;
}

bool Is(FakeMood mood) {
    return TheFakeWinbind().mood == mood;
}

template <class T>
T* Allocate(std::size_t count) {
    return static_cast<T*>(std::calloc(count, sizeof(T)));
}

WinbindSid MakeSid(std::initializer_list<std::uint32_t> parts) {
    WinbindSid sid{1, static_cast<std::uint8_t>(parts.size()), {0, 0, 0, 0, 0, 5}, {}};
    std::size_t index = 0;
    for (const std::uint32_t part : parts)
        sid.subAuthorities[index++] = part;
    if (Is(FakeMood::kDamagedSids)) sid.count = 200;
    return sid;
}

WinbindSid DomainSid() {
    return MakeSid({21, 1, 2, 3});
}

WinbindSid AccountSid(std::uint32_t relativeId) {
    return MakeSid({21, 1, 2, 3, relativeId});
}

const char* NameFor(const char* name) {
    return Is(FakeMood::kDamagedNames) ? "an\na\\x" : name;
}

int FakeNames(const char*** names, std::uint32_t* count, bool areUsers) {
    if (const int code = Begin(); code != 0) return code;
    *count = 0;
    *names = Allocate<const char*>(8);
    for (const Person& person : kPeople)
        if ((person.type == 1) == areUsers && !Is(FakeMood::kNoController))
            (*names)[(*count)++] = NameFor(person.name);
    if (Is(FakeMood::kNullAnswers)) {
        std::free(*names);
        *names = nullptr;
    }
    return 0;
}

}  // namespace
}  // namespace permora::test

using namespace permora::host;
using namespace permora::test;

#define FAKE extern "C" __attribute__((visibility("default")))

// NOLINTBEGIN(readability-identifier-naming): the names of the library
FAKE void* wbcCtxCreate() {
    return std::malloc(1);
}

FAKE void wbcCtxFree(void* context) {
    std::free(context);
}

FAKE void wbcFreeMemory(void* memory) {
    std::free(memory);
}

FAKE int wbcCtxListTrusts(void*, void** domains, std::size_t* count) {
    if (const int code = Begin(); code != 0) return code;
    *count = 2;
    if (Is(FakeMood::kNullAnswers)) return 0;
    const std::size_t bytes = sizeof(WinbindDomainInfo) - (TheFakeWinbind().isOld ? sizeof(char*) : 0);
    auto* const block = Allocate<char>(*count * bytes);
    static char builtin[] = "BUILTIN";
    static char name[] = "EXAMPLE";
    static char dnsName[] = "EXAMPLE.TEST";
    const WinbindDomainInfo infos[] = {{builtin, nullptr, MakeSid({32}), 0, 0, 4, nullptr},
                                       {name, dnsName, DomainSid(), 0, 5, 5, nullptr}};
    for (std::size_t i = 0; i < *count; ++i)
        std::memcpy(block + i * bytes, &infos[i], bytes);
    *domains = block;
    return 0;
}

FAKE int wbcCtxLookupName(void*, const char*, const char* name, WinbindSid* sid, int* type) {
    if (const int code = Begin(); code != 0) return code;
    for (const Person& person : kPeople) {
        if (std::strcmp(person.name, name) != 0 || Is(FakeMood::kNoController)) continue;
        *sid = AccountSid(person.relativeId);
        *type = person.type;
        return 0;
    }
    return kNotFound;
}

FAKE int wbcCtxLookupSid(void*, const WinbindSid*, char**, char**, int*) {
    const int code = Begin();
    return code != 0 ? code : kNotFound;
}

FAKE int wbcCtxLookupRids(void*, WinbindSid*, int count, std::uint32_t* relativeIds, const char** domain,
                          const char*** names, int** types) {
    if (const int code = Begin(); code != 0) return code;
    const bool isNew = std::any_of(relativeIds, relativeIds + count,
                                   [](std::uint32_t relativeId) { return relativeId >= 0xC0000000; });
    if (Is(FakeMood::kNoController) || Is(isNew ? FakeMood::kKeptGaps : FakeMood::kKeptNobody))
        return kNotFound;
    if (Is(FakeMood::kNullAnswers)) return 0;
    *domain = strdup("EXAMPLE");
    *names = Allocate<const char*>(static_cast<std::size_t>(count));
    *types = Allocate<int>(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        (*types)[i] = 8;
        for (const Person& person : kPeople) {
            if (person.relativeId != relativeIds[i]) continue;
            (*names)[i] = NameFor(person.name);
            (*types)[i] = person.type;
        }
        if (relativeIds[i] == 500) (*names)[i] = NameFor("Administrator");
        if (relativeIds[i] == 500) (*types)[i] = 1;
        // A crowd whose relative ids lie apart.
        if (relativeIds[i] >= 5000 && relativeIds[i] < 5200) {
            (*names)[i] = "crowd";
            (*types)[i] = 1;
        }
    }
    return 0;
}

FAKE int wbcCtxListUsers(void*, const char*, std::uint32_t* count, const char*** names) {
    return FakeNames(names, count, true);
}

FAKE int wbcCtxListGroups(void*, const char*, std::uint32_t* count, const char*** names) {
    return FakeNames(names, count, false);
}

FAKE int wbcCtxLookupUserSids(void*, const WinbindSid* user, bool, std::uint32_t* count, WinbindSid** sids) {
    if (const int code = Begin(); code != 0) return code;
    *count = Is(FakeMood::kNoController) ? 2 : 4;
    if (Is(FakeMood::kNullAnswers)) return 0;
    *sids = Allocate<WinbindSid>(4);
    (*sids)[0] = Is(FakeMood::kForeignGroups) ? AccountSid(1104) : *user;
    (*sids)[1] = AccountSid(513);
    (*sids)[2] = AccountSid(1107);
    (*sids)[3] = AccountSid(1109);
    return 0;
}

FAKE int wbcCtxGetSidAliases(void*, const WinbindSid*, WinbindSid*, std::uint32_t,
                             std::uint32_t** relativeIds, std::uint32_t* count) {
    if (const int code = Begin(); code != 0) return code;
    *count = 1;
    if (Is(FakeMood::kNullAnswers)) return 0;
    *relativeIds = Allocate<std::uint32_t>(1);
    (*relativeIds)[0] = 545;
    return 0;
}

FAKE int wbcCtxSidsToUnixIds(void*, const WinbindSid* sids, std::uint32_t count, WinbindUnixId* ids) {
    if (const int code = Begin(); code != 0) return code;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint32_t number = 100000 + sids[i].subAuthorities[sids[i].count - 1];
        ids[i] = {3, Is(FakeMood::kUnmappedIds) ? 0xFFFFFFFFU : number};
    }
    return 0;
}

FAKE int wbcCtxSidToUid(void*, const WinbindSid* sid, uid_t* user) {
    if (const int code = Begin(); code != 0) return code;
    if (Is(FakeMood::kNoController)) return kNotFound;
    *user = Is(FakeMood::kUnmappedIds) ? 0xFFFFFFFFU : 100000 + sid->subAuthorities[4];
    return 0;
}

FAKE int wbcCtxUidToSid(void*, uid_t user, WinbindSid* sid) {
    if (const int code = Begin(); code != 0) return code;
    if (user < 100000) return kNotFound;
    *sid = AccountSid(user - 100000);
    return 0;
}

FAKE int wbcCtxGidToSid(void* context, gid_t group, WinbindSid* sid) {
    return wbcCtxUidToSid(context, group, sid);
}

FAKE int wbcCtxPingDc(void*, const char*, void**) {
    if (const int code = Begin(); code != 0) return code;
    return Is(FakeMood::kNoController) ? kNotFound : 0;
}

FAKE int wbcCtxAuthenticateUserEx(void*, const WinbindLogon*, WinbindLogonResult**, void**) {
    const int code = Begin();
    return code != 0 ? code : kWinbindAuthenticationFailed;
}
// NOLINTEND(readability-identifier-naming)
