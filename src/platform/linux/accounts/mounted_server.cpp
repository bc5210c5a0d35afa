#include "platform/linux/accounts/mounted_server.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <span>
#include <utility>

#include "platform/ascii.h"
#include "platform/linux/accounts/account_directory.h"
#include "platform/linux/accounts/account_names.h"
#include "platform/linux/accounts/domain_accounts.h"
#include "platform/linux/accounts/samba_accounts.h"
#include "platform/linux/accounts/unix_accounts.h"
#include "platform/server_accounts.h"

namespace permora::host {
namespace {

constexpr std::chrono::minutes kServerNameLifetime{5};
constexpr std::chrono::seconds kServerNobodyLifetime{15};
// The pause after a failure doubles with each further one: with a wrong password each is a failed logon, and
// too many of them lock the account.
constexpr std::chrono::seconds kFirstPause{30};
constexpr std::chrono::seconds kLongestPause{600};
// SIDs come from disks that anyone may have written: their number must not fill the memory.
constexpr std::size_t kMostServerNames = 100'000;
// Of one question.
constexpr std::size_t kMostOfQuestion = 100;
constexpr ToolLimits kQuestionLimits{std::chrono::seconds(20), std::size_t{4} << 20};

// Whether a server may not show accounts below this name: it means others here.
bool IsTakenName(std::string_view domain) {
    constexpr std::array<std::string_view, 4> kOfEveryMachine = {"BUILTIN", "NT AUTHORITY", "Unix User",
                                                                 "Unix Group"};
    const auto isSame = [&](std::string_view name) { return EqualsIgnoringCase(name, domain); };
    const auto isOfDomain = [&](const WinbindDomain& known) {
        return isSame(known.name) || (!known.dnsName.empty() && isSame(known.dnsName));
    };
    return IsThisMachine(domain) || isSame(StateOfDomain().domain) ||
           std::ranges::any_of(kOfEveryMachine, isSame) ||
           std::ranges::any_of(TheDomainAccounts().Link().Domains(), isOfDomain);
}

std::string WordsOf(std::span<const nt::Sid> sids) {
    std::string words;
    for (const nt::Sid& sid : sids)
        words += ' ' + sid.ToText();
    return words;
}

void AddBelow(const nt::Sid& domain, const std::vector<std::uint32_t>& ids, std::vector<nt::Sid>& sids) {
    for (const std::uint32_t id : ids) {
        const std::optional<nt::Sid> sid = domain.Append(id);
        if (sid && std::ranges::find(sids, *sid) == sids.end()) sids.push_back(*sid);
    }
}

std::atomic<bool>& IsWaitingLonger() {
    static std::atomic<bool> isSet = false;
    return isSet;
}

}  // namespace

std::chrono::milliseconds ServerTime(std::chrono::milliseconds wait) {
    return wait >= kLookupTime && IsWaitingLonger() ? kGroupsTime : wait;
}

bool IsAccountOfDomain(const nt::Sid& sid) {
    return sid.Authority() == 5 && sid.SubAuthorityCount() == 5 && sid.SubAuthority(0) == 21;
}

void MountedServer::SetMounts(std::vector<MountEntry> entries) {
    const std::lock_guard lock(mutex);
    mounts = std::move(entries);
}

std::optional<ServerIdentity> MountedServer::Identity() {
    const std::lock_guard lock(mutex);
    return identity;
}

// --- Questions.

DWORD MountedServer::WhyNotAsked() {
    return SteadyClock::now() < failureEnd ? failure : ERROR_SUCCESS;
}

void MountedServer::Note(DWORD error) {
    const std::lock_guard lock(mutex);
    failure = error;
    if (error == ERROR_SUCCESS) pause = {};
    if (error == kNameNotYet) pause = std::clamp(2 * pause, kFirstPause, kLongestPause);
    failureEnd = SteadyClock::now() + std::max(pause, error == ERROR_SUCCESS ? pause : kFirstPause);
}

// Each begins with who the server is.
DWORD MountedServer::Ask(const std::string& question, std::string& answer) {
    std::vector<MountEntry> asked;
    {
        const std::lock_guard lock(mutex);
        if (const DWORD error = WhyNotAsked(); error != ERROR_SUCCESS) return error;
        asked = mounts;
    }
    for (const MountEntry& mount : asked) {
        std::optional<ServerLogon> logon = FindLogon(mount, LogonPlaces::OfThisProcess());
        if (!logon) continue;
        std::vector<std::string>& arguments = logon->arguments;
        // The address that the kernel has found, which no other name service may give otherwise.
        if (const auto address = OptionOf(mount, "addr")) arguments.push_back("--dest-ip=" + *address);
        arguments.insert(arguments.end(), {"--command=lsaquery 5;" + question, name});
        std::string text;
        const DWORD error =
            RunTool("rpcclient", arguments, kQuestionLimits, text, FailedOutput::kKept, logon->input);
        if (error == ERROR_FILE_NOT_FOUND) break;
        std::string_view rest = text;
        std::optional<ServerIdentity> told = TakeIdentity(rest);
        if (!told) return Failed();
        // Behind a tunnel the address leads back here.
        const nt::Sid* const machine = MachineSid();
        if (machine != nullptr && told->sid == *machine) break;
        answer = rest;
        Note(ERROR_SUCCESS);
        std::string shown = IsTakenName(told->name) ? name : told->name;
        const std::lock_guard lock(mutex);
        identity = std::move(told);
        shownName = std::move(shown);
        return ERROR_SUCCESS;
    }
    Note(ERROR_NONE_MAPPED);
    return ERROR_NONE_MAPPED;
}

DWORD MountedServer::AskUntil(const Patience& patience, const std::string& question, std::string& answer) {
    struct Result {
        DWORD error = kNameNotYet;
        std::string answer;
    };
    const auto result = CallWithin<Result>(patience, [this, question] {
        Result made;
        made.error = Ask(question, made.answer);
        return made;
    });
    if (!result) return Failed();
    if (result->error == ERROR_SUCCESS) answer = result->answer;
    return result->error;
}

DWORD MountedServer::Failed() {
    Note(kNameNotYet);
    return kNameNotYet;
}

DWORD MountedServer::Identify(const Patience& patience) {
    std::string nothing;
    return Identity() ? ERROR_SUCCESS : AskUntil(patience, {}, nothing);
}

DWORD MountedServer::Identify(const Patience& patience, ServerIdentity& self) {
    const DWORD error = Identify(patience);
    if (error != ERROR_SUCCESS) return error;
    self = Identity().value_or(ServerIdentity{});
    return ERROR_SUCCESS;
}

// --- Names of SIDs.

DWORD MountedServer::Take(const KnownName& known, AccountName& account) {
    if (!known.account) return kNameNotYet;
    account = *known.account;
    return account.name.empty() ? ERROR_NONE_MAPPED : ERROR_SUCCESS;
}

DWORD MountedServer::FindName(const nt::Sid& sid, std::chrono::milliseconds wait, AccountName& account) {
    if (!IsAccountOfDomain(sid)) return ERROR_NONE_MAPPED;
    const Patience patience = Patience::For(ServerTime(wait));
    std::unique_lock lock(mutex);
    if (const auto found = names.find(sid); found != names.end() && found->second.IsFresh())
        return Take(found->second, account);
    const DWORD silent = WhyNotAsked();
    if (silent != ERROR_SUCCESS) {
        // A name that was right a while ago is better than none.
        const auto found = names.find(sid);
        return found != names.end() && found->second.account ? Take(found->second, account) : silent;
    }
    if (names.size() >= kMostServerNames)
        std::erase_if(names, [](const auto& row) { return !row.second.isAskedFor; });
    if (!std::exchange(names[sid].isAskedFor, true)) pending.push_back(sid);
    if (!isAsking) isAsking = RunInBackground([this] { AskForNames(); });
    while (isAsking && !isSlow && names[sid].isAskedFor && !patience.IsOver())
        hasNames.wait_until(lock, patience.until);
    const KnownName& known = names[sid];
    isSlow = isSlow || (known.isAskedFor && wait >= kLookupTime);
    if (!known.account && !known.isAskedFor && WhyNotAsked() != ERROR_SUCCESS) return WhyNotAsked();
    return Take(known, account);
}

void MountedServer::AskForNames() {
    std::unique_lock lock(mutex);
    while (!pending.empty()) {
        const std::size_t count = std::min(pending.size(), kMostOfQuestion);
        const std::vector<nt::Sid> asked(pending.begin(),
                                         pending.begin() + static_cast<std::ptrdiff_t>(count));
        pending.erase(pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(count));
        lock.unlock();
        std::string answer;
        std::optional<std::vector<AccountName>> found;
        if (Ask("lookupsids" + WordsOf(asked), answer) == ERROR_SUCCESS) {
            found = ParseServerNames(answer, asked);
            if (!found) (void)Failed();
        }
        lock.lock();
        for (std::size_t i = 0; i < asked.size(); ++i)
            Keep(asked[i], found ? &(*found)[i] : nullptr);
        isSlow = false;
        hasNames.notify_all();
        TheDomainAccounts().Link().Tell();
    }
    isAsking = false;
}

// What the server says of its own is believed; of others what could not be mistaken for someone's here. Null:
// it has not answered.
void MountedServer::Keep(const nt::Sid& sid, const AccountName* told) {
    KnownName& known = names[sid];
    known.isAskedFor = false;
    if (told == nullptr || !identity) return;
    known.account = *told;
    known.time = SteadyClock::now();
    if (sid.IsDirectlyBelow(identity->sid)) {
        known.account->domain = shownName;
        if (told->name.empty()) known.account->use = SidTypeDeletedAccount;
    } else if (told->name.empty() || IsTakenName(told->domain) ||
               EqualsIgnoringCase(told->domain, shownName)) {
        known.account = AccountName{};
    }
}

bool MountedServer::KnownName::IsFresh() const {
    if (!account) return false;
    return SteadyClock::now() - time <
           (account->name.empty() ? SteadyClock::duration(kServerNobodyLifetime) : kServerNameLifetime);
}

// --- SIDs of names.

bool MountedServer::IsCalled(std::string_view domain) {
    const std::lock_guard lock(mutex);
    return EqualsIgnoringCase(domain, name) || EqualsIgnoringCase(domain, shownName);
}

bool MountedServer::IsSameAs(MountedServer& other) {
    const std::optional<ServerIdentity> own = Identity();
    const std::optional<ServerIdentity> its = other.Identity();
    return this == &other || (own && its && own->sid == its->sid);
}

DWORD MountedServer::FindSid(const NameText& text, nt::Sid& sid) {
    if (!CanBeAskedFor(text.name) || (text.isQualified && !CanBeAskedFor(text.domain)))
        return ERROR_NONE_MAPPED;
    const Patience patience = Patience::For(ServerTime(kLookupTime));
    ServerIdentity self;
    if (const DWORD error = Identify(patience, self); error != ERROR_SUCCESS) return error;
    const bool isOwn = text.isQualified && IsCalled(text.domain);
    if (text.isQualified && !isOwn && IsTakenName(text.domain)) return ERROR_NONE_MAPPED;
    std::string asked(text.name);
    if (text.isQualified) asked.insert(0, (isOwn ? self.name : std::string(text.domain)) + '\\');
    std::string answer;
    if (const DWORD error = AskUntil(patience, "lookupnames \"" + asked + '"', answer);
        error != ERROR_SUCCESS)
        return error;
    const std::optional<nt::Sid> found = ParseServerSid(answer, asked);
    if (!found) return kNameNotYet;
    // Those of the system, and the server's numbers of users, have names here as well.
    if (!IsAccountOfDomain(*found) || (isOwn && !found->IsDirectlyBelow(self.sid))) return ERROR_NONE_MAPPED;
    sid = *found;
    return ERROR_SUCCESS;
}

// --- Groups.

bool MountedServer::Owns(const nt::Sid& sid) {
    const std::lock_guard lock(mutex);
    return identity && sid.IsDirectlyBelow(identity->sid);
}

DWORD MountedServer::FindGroups(const Patience& patience, const nt::Sid& account,
                                std::vector<nt::Sid>& sids) {
    ServerIdentity self;
    if (const DWORD error = Identify(patience, self); error != ERROR_SUCCESS) return error;
    const std::uint32_t relativeId = account.SubAuthority(account.SubAuthorityCount() - 1);
    // A server gives its guest other groups than it lists.
    if (relativeId == kGuestId) return ERROR_NONE_MAPPED;
    const std::string id = std::to_string(relativeId);
    const std::array asked = {account};
    std::string text;
    const DWORD error = AskUntil(patience,
                                 "lsaquery;lookupsids" + WordsOf(asked) + ";lsaquery 5;queryuser " + id +
                                     ";lsaquery 5;queryusergroups " + id,
                                 text);
    if (error != ERROR_SUCCESS) return error;
    std::string_view rest = text;
    const std::optional<ServerRole> role = TakeRole(rest, self);
    // Its groups have groups in them, which are not all told.
    if (role == ServerRole::kDomainController) return ERROR_NONE_MAPPED;
    const auto answers = role ? SplitAnswers(rest, self, 3) : std::nullopt;
    const auto told = answers ? ParseServerNames((*answers)[0], asked) : std::nullopt;
    if (!told) return ERROR_NONE_MAPPED;
    const SID_NAME_USE use = told->front().use;
    if (use != SidTypeUser && use != SidTypeGroup && use != SidTypeAlias) return ERROR_NONE_MAPPED;
    std::vector<nt::Sid> found = {account, nt::Sid(1, {0})};  // Everyone
    if (use == SidTypeUser) {
        const std::optional<std::uint32_t> first = ParsePrimaryGroup((*answers)[1]);
        const auto groups = ParseGroupIds((*answers)[2]);
        if (!first || !groups) return ERROR_NONE_MAPPED;
        AddBelow(self.sid, {*first}, found);
        AddBelow(self.sid, *groups, found);
        found.insert(found.end(), {nt::Sid(5, {2}), nt::Sid(5, {11})});  // NETWORK, Authenticated Users
    }
    sids = std::move(found);
    return ERROR_SUCCESS;
}

DWORD MountedServer::AddAliases(const Patience& patience, const char* where, const nt::Sid& domain,
                                std::vector<nt::Sid>& sids) {
    const std::vector<nt::Sid> members = sids;
    for (std::size_t begin = 0; begin < members.size(); begin += kMostOfQuestion) {
        const std::string words =
            WordsOf(std::span(members).subspan(begin, std::min(kMostOfQuestion, members.size() - begin)));
        std::string text;
        const DWORD error = AskUntil(patience, std::string("queryuseraliases ") + where + words, text);
        if (error != ERROR_SUCCESS) return error;
        const auto ids = ParseGroupIds(text);
        if (!ids) return ERROR_NONE_MAPPED;
        AddBelow(domain, *ids, sids);
    }
    return ERROR_SUCCESS;
}

// Those of the system may have the server's own in them.
DWORD MountedServer::AddLocalGroups(const Patience& patience, std::vector<nt::Sid>& sids) {
    ServerIdentity self;
    DWORD error = Identify(patience, self);
    if (error == ERROR_SUCCESS) error = AddAliases(patience, "domain", self.sid, sids);
    return error == ERROR_SUCCESS ? AddAliases(patience, "builtin", nt::Sid(5, {32}), sids) : error;
}

}  // namespace permora::host

void permora::WaitLongerForServers() {
    permora::host::IsWaitingLonger() = true;
}
