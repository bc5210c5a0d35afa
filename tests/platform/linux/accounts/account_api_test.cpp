// The two look-ups under the system's names, on the accounts that every machine has.
#include <grp.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sched.h>
#include <sys/mount.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <set>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/linux/accounts/machine.h"
#include "platform/linux/accounts/unix_accounts.h"
#include "platform/nt/well_known_sids.h"
#include "tests/support/command.h"

namespace permora::host {
namespace {

struct Found {
    std::string sid;
    std::string domain;
    std::string name;
    int use = 0;
    DWORD error = ERROR_SUCCESS;

    friend bool operator==(const Found& one, const Found& other) = default;
    friend std::ostream& operator<<(std::ostream& stream, const Found& found) {
        return stream << found.sid << " = " << found.domain << "\\" << found.name << " (" << found.use
                      << "), error " << found.error;
    }
};

PSID Pointer(const nt::Sid& sid) {
    return const_cast<std::uint8_t*>(sid.Bytes().data());
}

Found FindBySid(const nt::Sid& sid) {
    Found found;
    std::array<char, 256> name{};
    std::array<char, 256> domain{};
    DWORD nameSize = name.size();
    DWORD domainSize = domain.size();
    SID_NAME_USE use{};
    if (LookupAccountSidA(nullptr, Pointer(sid), name.data(), &nameSize, domain.data(), &domainSize, &use) ==
        FALSE) {
        return {sid.ToText(), {}, {}, 0, GetLastError()};
    }
    EXPECT_EQ(nameSize, std::strlen(name.data()));
    EXPECT_EQ(domainSize, std::strlen(domain.data()));
    return {sid.ToText(), domain.data(), name.data(), use, ERROR_SUCCESS};
}

// The name is not part of what this look-up finds.
Found FindByName(const std::string& account) {
    std::array<std::uint8_t, SECURITY_MAX_SID_SIZE> sid{};
    std::array<char, 256> domain{};
    DWORD sidSize = sid.size();
    DWORD domainSize = domain.size();
    SID_NAME_USE use{};
    if (LookupAccountNameA(nullptr, account.c_str(), sid.data(), &sidSize, domain.data(), &domainSize,
                           &use) == FALSE) {
        return {{}, {}, {}, 0, GetLastError()};
    }
    EXPECT_EQ(domainSize, std::strlen(domain.data()));
    return {nt::Sid::FromBytes(sid).value().ToText(), domain.data(), {}, use, ERROR_SUCCESS};
}

std::string Qualified(const Found& found) {
    return found.domain.empty() ? found.name : found.domain + "\\" + found.name;
}

std::string Folded(std::string text) {
    for (char& letter : text)
        letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    return text;
}

TEST(AccountLookupTest, WellKnownAccountsAreFoundBothWaysInAnyLetterCase) {
    for (const nt::WellKnownSid& row : nt::WellKnownSids()) {
        const Found expected{row.sid.ToText(), std::string(row.domain), std::string(row.name),
                             static_cast<int>(row.use), ERROR_SUCCESS};
        EXPECT_EQ(FindBySid(row.sid), expected);
        Found byName = expected;
        byName.name.clear();
        EXPECT_EQ(FindByName(Qualified(expected)), byName) << Qualified(expected);
        EXPECT_EQ(FindByName(Folded(Qualified(expected))), byName) << Qualified(expected);
    }
}

// Every account of the host has a SID that nothing else has, and the text that it is shown by leads back.
TEST(AccountLookupTest, TheHostsAccountsAreFoundByTheTextTheyAreShownBy) {
    std::set<std::string> sids;
    std::set<std::string> texts;
    std::set<std::pair<bool, id_t>> ids;
    const auto check = [&](const nt::Sid& sid, const std::string& name) {
        const Found found = FindBySid(sid);
        EXPECT_EQ(found.error, ERROR_SUCCESS) << name;
        EXPECT_TRUE(sids.insert(sid.ToText()).second) << found;
        EXPECT_TRUE(texts.insert(Qualified(found)).second) << found;
        EXPECT_EQ(FindByName(Qualified(found)), (Found{sid.ToText(), found.domain, {}, found.use, 0}));
    };
    setpwent();
    while (const passwd* user = getpwent()) {
        if (!ids.emplace(true, user->pw_uid).second) continue;
        EXPECT_EQ(UserForSid(SidForUser(user->pw_uid)), user->pw_uid);
        check(SidForUser(user->pw_uid), user->pw_name);
        EXPECT_EQ(FindByName(user->pw_name).sid, SidForUser(user->pw_uid).ToText());
    }
    endpwent();
    setgrent();
    while (const group* entry = getgrent()) {
        if (!ids.emplace(false, entry->gr_gid).second) continue;
        EXPECT_EQ(GroupForSid(SidForGroup(entry->gr_gid)), entry->gr_gid);
        check(SidForGroup(entry->gr_gid), entry->gr_name);
    }
    endgrent();
    EXPECT_FALSE(sids.empty());
}

TEST(AccountLookupTest, NamesMeanWhatTheDocumentationSays) {
    if (ThisMachine().source != RelativeIdSource::kComputed)
        GTEST_SKIP() << "this machine has no id, or accounts of Samba's";
    const std::string machine = ThisMachine().name;
    const std::string root = SidForUser(0).ToText();
    const std::string rootGroup = SidForGroup(0).ToText();
    const std::string usersGroup = SidForGroup(getgrnam("users")->gr_gid).ToText();
    const struct {
        std::string account;
        std::string sid;
    } cases[] = {
        {"root", root},
        {"ROOT", root},
        {machine + "\\root", root},
        {Folded(machine) + "\\Root", root},
        {"unix user\\root", root},
        {"Unix Group\\root", rootGroup},
        {"unix group\\ROOT", rootGroup},
        // The exact name first, then any letter case.
        {"Users", "S-1-5-32-545"},
        {"users", usersGroup},
        {"USERS", "S-1-5-32-545"},
        {"builtin\\users", "S-1-5-32-545"},
        {machine + "\\users", usersGroup},
        {"sYsTeM", "S-1-5-18"},
        {machine, MachineSid()->ToText()},
        {machine + "\\" + machine, MachineSid()->ToText()},
        // A SID needs no account.
        {"S-1-5-18", "S-1-5-18"},
        {"S-1-5-21-1-2-3-4", "S-1-5-21-1-2-3-4"},
    };
    for (const auto& entry : cases)
        EXPECT_EQ(FindByName(entry.account).sid, entry.sid) << entry.account;

    for (const std::string& account :
         {std::string(), std::string("\\"), std::string("\\root"), std::string("root\\"),
          machine + "\\\\root", machine + "\\root\\", std::string("ELSEWHERE\\root"),
          std::string("BUILTIN\\root"), machine + "\\Administrators", std::string("root@") + machine,
          std::string("root\n"), std::string("ro\xC3ot"), std::string("S-1-"), std::string(100'000, 'a'),
          std::string("no such account"), std::string("Unix User\\0")}) {
        EXPECT_EQ(FindByName(account).error, ERROR_NONE_MAPPED) << account.substr(0, 50);
    }
}

// Sizes are in characters with the NUL going in and when too small, without it on success.
TEST(AccountLookupTest, TooSmallBuffersAreToldTheSizesNeededAndStay) {
    const nt::Sid administrators(5, {32, 544});
    constexpr DWORD kName = 14 + 1;  // "Administrators"
    constexpr DWORD kDomain = 7 + 1;
    constexpr DWORD kSid = 16;
    const struct {
        DWORD firstLess;
        DWORD domainLess;
    } cases[] = {{kSid, kDomain}, {1, 0}, {0, 1}, {0, kDomain}, {0, 0}};
    for (const auto& [firstLess, domainLess] : cases) {
        const bool fits = firstLess + domainLess == 0;
        const DWORD error = fits ? ERROR_SUCCESS : ERROR_INSUFFICIENT_BUFFER;
        SCOPED_TRACE(testing::Message() << firstLess << ' ' << domainLess);
        std::array<char, 64> name{'?'};
        std::array<char, 64> domain{'?'};
        DWORD nameSize = kName - std::min(firstLess, kName);
        DWORD domainSize = kDomain - domainLess;
        SID_NAME_USE use = SidTypeInvalid;
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(
            LookupAccountSidA("", Pointer(administrators), nameSize > 0 ? name.data() : nullptr, &nameSize,
                              domainSize > 0 ? domain.data() : nullptr, &domainSize, &use) != FALSE,
            fits);
        EXPECT_EQ(GetLastError(), error);
        EXPECT_EQ(nameSize, fits ? kName - 1 : kName);
        EXPECT_EQ(domainSize, fits ? kDomain - 1 : kDomain);
        EXPECT_EQ(std::string({name[0], domain[0]}), fits ? "AB" : "??");
        EXPECT_EQ(use, fits ? SidTypeAlias : SidTypeInvalid);

        std::array<std::uint8_t, SECURITY_MAX_SID_SIZE> sid{};
        DWORD sidSize = kSid - firstLess;
        domainSize = kDomain - domainLess;
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(LookupAccountNameA(nullptr, "Administrators", sidSize > 0 ? sid.data() : nullptr, &sidSize,
                                     domainSize > 0 ? domain.data() : nullptr, &domainSize, &use) != FALSE,
                  fits);
        EXPECT_EQ(GetLastError(), error);
        EXPECT_EQ(sidSize, kSid);
        EXPECT_EQ(domainSize, fits ? kDomain - 1 : kDomain);
        EXPECT_EQ(sid[0], fits ? SID_REVISION : 0);
    }
}

// The SID stands on disks: it must be the same in every process. Runs first in a child, so that neither has
// it from the other.
TEST(MachineSidTest, IsTheSameInEveryProcess) {
    const auto sidText = [] { return MachineSid() != nullptr ? MachineSid()->ToText() : "none"; };
    const auto elsewhere = test::InAnotherProcess(sidText);
    EXPECT_EQ(elsewhere, sidText());
}

// Samba's tools create databases when they are run, with a new SID.
TEST(MachineSidTest, AskingMakesNoSambaDatabase) {
    const char* const databases = "/var/lib/samba";
    if (!std::filesystem::exists(databases)) GTEST_SKIP() << "Samba is not installed";
    if (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("tmpfs", databases, "tmpfs", 0, nullptr) != 0) {
        GTEST_SKIP() << "this process may not mount";
    }
    EXPECT_NE(ThisMachine().source, RelativeIdSource::kSamba);
    EXPECT_EQ(FindBySid(SidForUser(0)).name, "root");
    EXPECT_TRUE(std::filesystem::is_empty(databases));
}

}  // namespace
}  // namespace permora::host
