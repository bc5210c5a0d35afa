#include "platform/linux/accounts/name_service.h"

#include <grp.h>
#include <pwd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/linux/accounts/domain_accounts.h"
#include "platform/linux/base/host_errors.h"

namespace permora::host {

namespace {

// A group's record holds the names of all its members.
constexpr std::size_t kFirstBuffer = std::size_t{4} << 10;
constexpr std::size_t kLargestBuffer = std::size_t{16} << 20;

// Asks `call` (getpwuid_r and its like) for the record of `key`, with a larger buffer while it wants one, and
// has `take` look at the record before its texts go.
template <typename Record, typename Key, typename Take>
DWORD Ask(int (*call)(Key, Record*, char*, std::size_t, Record**), Key key, Take take) {
    std::vector<char> buffer(kFirstBuffer);
    for (;;) {
        Record record{};
        Record* found = nullptr;
        const int result = call(key, &record, buffer.data(), buffer.size(), &found);
        if (found != nullptr) return take(record);
        switch (result) {
            case 0:
            case ENOENT:
            case ESRCH:
            case EBADF:
            case EPERM:
                return ERROR_NONE_MAPPED;  // each of them means it, says getpwnam(3)
            case EINTR:
                break;
            case ERANGE:
                if (buffer.size() >= kLargestBuffer) return ERROR_INSUFFICIENT_BUFFER;
                buffer.resize(2 * buffer.size());
                break;
            default:
                return ErrorFromErrno(result);
        }
    }
}

DWORD TakeName(const char* found, std::string& name) {
    if (!IsPlainAccountName(found)) return ERROR_NONE_MAPPED;
    name = found;
    return ERROR_SUCCESS;
}

DWORD TakeGroups(const passwd& user, std::vector<gid_t>& groups) {
    int count = 32;
    std::vector<gid_t> found(static_cast<std::size_t>(count));
    while (getgrouplist(user.pw_name, user.pw_gid, found.data(), &count) < 0) {
        // The number needed, but the user may be joining groups meanwhile.
        if (static_cast<std::size_t>(count) <= found.size()) count = 2 * static_cast<int>(found.size());
        found.resize(static_cast<std::size_t>(count));
    }
    found.resize(static_cast<std::size_t>(count));
    groups = std::move(found);
    return ERROR_SUCCESS;
}

DWORD TakeId(id_t found, id_t& id) {
    id = found;
    return ERROR_SUCCESS;
}

// Calls `next` (getpwent_r and its like) until it has no more records, and has `take` look at each.
template <typename Record, typename Next, typename Take>
DWORD AskForAll(Next next, Take take) {
    std::vector<char> buffer(kFirstBuffer);
    for (;;) {
        Record record{};
        Record* found = nullptr;
        const int result = next(&record, buffer.data(), buffer.size(), &found);
        if (result == ERANGE && buffer.size() < kLargestBuffer) {
            buffer.resize(2 * buffer.size());  // the same record is handed out again
            continue;
        }
        if (result == ENOENT || (result == 0 && found == nullptr)) return ERROR_SUCCESS;
        if (result == ERANGE) return ERROR_INSUFFICIENT_BUFFER;
        if (result != 0) return ErrorFromErrno(result);
        take(record);
    }
}

// The accounts of one kind as they were listed a moment ago. Of several with the same name or number the
// first one counts, as for the name service itself.
class Listing {
  public:
    explicit Listing(std::vector<HostAccount> list) : accounts(std::move(list)) {
        for (std::size_t i = 0; i < accounts.size(); ++i) {
            byName.emplace(accounts[i].name, i);
            byId.emplace(accounts[i].id, i);
        }
    }

    const std::vector<HostAccount>& All() const { return accounts; }
    bool IsRecent() const { return Clock::now() - time < kLifetime; }
    const HostAccount* Find(const std::string& name) const { return At(byName, name); }
    const HostAccount* Find(id_t id) const { return At(byId, id); }

  private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::seconds kLifetime{5};

    template <typename Map, typename Key>
    const HostAccount* At(const Map& map, const Key& key) const {
        const auto found = map.find(key);
        return found != map.end() ? &accounts[found->second] : nullptr;
    }

    Clock::time_point time = Clock::now();
    std::vector<HostAccount> accounts;
    std::unordered_map<std::string, std::size_t> byName;
    std::unordered_map<id_t, std::size_t> byId;
};

// Enumerating has one state for the whole process, so only one thread does it at a time.
std::unique_lock<std::mutex> LockEnumerating() {
    static std::mutex kEnumerating;
    return std::unique_lock(kEnumerating);
}

template <typename Take>
DWORD EnumerateUsers(Take take) {
    const auto lock = LockEnumerating();
    setpwent();
    const DWORD error = AskForAll<passwd>(getpwent_r, take);
    endpwent();
    return error;
}

template <typename Take>
DWORD EnumerateGroups(Take take) {
    const auto lock = LockEnumerating();
    setgrent();
    const DWORD error = AskForAll<group>(getgrent_r, take);
    endgrent();
    return error;
}

DWORD Enumerate(AccountKind kind, std::vector<HostAccount>& accounts) {
    const auto take = [&](const char* name, id_t id) {
        if (IsPlainAccountName(name)) accounts.push_back({name, id});
    };
    return kind == AccountKind::kUser
               ? EnumerateUsers([&](const passwd& user) { take(user.pw_name, user.pw_uid); })
               : EnumerateGroups([&](const group& found) { take(found.gr_name, found.gr_gid); });
}

DWORD TakeMembers(const group& record, std::vector<std::string>& names) {
    for (char** name = record.gr_mem; *name != nullptr; ++name)
        names.emplace_back(*name);
    return ERROR_SUCCESS;
}

// The last listings.
class Listings {
  public:
    // Null when there is none or it is too old.
    std::shared_ptr<const Listing> Recent(AccountKind kind) {
        const std::lock_guard lock(mutex);
        std::shared_ptr<const Listing>& last = Of(kind);
        if (last && !last->IsRecent()) last.reset();
        return last;
    }

    void Keep(AccountKind kind, const std::vector<HostAccount>& accounts) {
        auto listing = std::make_shared<const Listing>(accounts);
        const std::lock_guard lock(mutex);
        Of(kind) = std::move(listing);
    }

  private:
    std::shared_ptr<const Listing>& Of(AccountKind kind) {
        return kind == AccountKind::kUser ? users : groups;
    }

    std::mutex mutex;
    std::shared_ptr<const Listing> users;
    std::shared_ptr<const Listing> groups;
};

Listings& LastListings() {
    static Listings listings;
    return listings;
}

struct FileCloser {
    void operator()(FILE* file) const { fclose(file); }
};

// The host's own files, which never make anyone wait.
DWORD ListHostFiles(AccountKind kind, const std::function<void(const char* name, id_t id)>& take) {
    const char* const path = kind == AccountKind::kUser ? "/etc/passwd" : "/etc/group";
    const std::unique_ptr<FILE, FileCloser> file(fopen(path, "re"));
    if (!file) return ErrorFromErrno(errno);
    if (kind == AccountKind::kUser) {
        const auto next = [&](passwd* record, char* buffer, std::size_t size, passwd** found) {
            return fgetpwent_r(file.get(), record, buffer, size, found);
        };
        return AskForAll<passwd>(next, [&](const passwd& user) { take(user.pw_name, user.pw_uid); });
    }
    const auto next = [&](group* record, char* buffer, std::size_t size, group** found) {
        return fgetgrent_r(file.get(), record, buffer, size, found);
    };
    return AskForAll<group>(next, [&](const group& listed) { take(listed.gr_name, listed.gr_gid); });
}

template <class Matches>
std::optional<HostAccount> FindInHostFiles(AccountKind kind, Matches matches) {
    std::optional<HostAccount> account;
    ListHostFiles(kind, [&](const char* name, id_t id) {
        if (!account && matches(name, id)) account = {name, id};
    });
    return account;
}

// After the name service has found nobody, which it also says when it could not open these files, as without
// a free descriptor. Programs take the entries of accounts away that are no more.
DWORD ConfirmNobody(AccountKind kind, id_t id, std::string& name) {
    DWORD found = ERROR_NONE_MAPPED;
    const DWORD error = ListHostFiles(kind, [&](const char* listed, id_t listedId) {
        if (found != ERROR_SUCCESS && listedId == id) found = TakeName(listed, name);
    });
    return error == ERROR_SUCCESS ? found : error;
}

bool IsDomainThere() {
    DomainLink& link = TheDomainAccounts().Link();
    return link.Availability(Patience::For(kLookupTime)) != DomainAvailability::kNone;
}

// In a domain the name service may ask winbind, and wait for minutes as that does.
template <class Value>
DWORD AskWithin(std::chrono::milliseconds limit, Value& value, std::function<DWORD(Value&)> ask) {
    if (!IsDomainThere()) return ask(value);
    using Answer = std::pair<DWORD, Value>;
    const auto asked = TheDomainAccounts().Link().Ask<Answer>(
        Patience::For(limit), limit, [ask = std::move(ask)](Winbind& /*connection*/, Answer& answer) {
            answer.first = ask(answer.second);
            return WinbindAnswer::kFound;
        });
    if (asked.answer != WinbindAnswer::kFound) return kDomainOffline;
    if (asked.value.first == ERROR_SUCCESS) value = asked.value.second;
    return asked.value.first;
}

}  // namespace

bool IsInHostFiles(AccountKind kind, id_t id) {
    return FindInHostFiles(kind, [id](const char*, id_t listed) { return listed == id; }).has_value();
}

DWORD ListGroupsOf(uid_t user, std::vector<gid_t>& groups) {
    return AskWithin<std::vector<gid_t>>(kGroupsTime, groups, [user](std::vector<gid_t>& list) {
        return Ask(getpwuid_r, user, [&](const passwd& found) { return TakeGroups(found, list); });
    });
}

DWORD ListMembersOf(gid_t group, std::vector<std::string>& names) {
    return AskWithin<std::vector<std::string>>(kGroupsTime, names, [group](std::vector<std::string>& list) {
        const DWORD error =
            Ask(getgrgid_r, group, [&](const auto& found) { return TakeMembers(found, list); });
        if (error != ERROR_SUCCESS) return error;
        return EnumerateUsers([&](const passwd& user) {
            if (user.pw_gid == group) list.emplace_back(user.pw_name);
        });
    });
}

DWORD ListHostAccounts(AccountKind kind, std::vector<HostAccount>& accounts) {
    std::vector<HostAccount> list;
    DWORD error = AskWithin<std::vector<HostAccount>>(
        kGroupsTime, list, [kind](std::vector<HostAccount>& found) { return Enumerate(kind, found); });
    // The domain's accounts are listed elsewhere.
    if (error == kDomainOffline) {
        error = ListHostFiles(kind, [&](const char* name, id_t id) {
            if (IsPlainAccountName(name)) list.push_back({name, id});
        });
    }
    if (error != ERROR_SUCCESS) return error;
    LastListings().Keep(kind, list);
    accounts = std::move(list);
    return ERROR_SUCCESS;
}

DWORD FindHostName(AccountKind kind, id_t id, std::string& name) {
    if (const auto listing = LastListings().Recent(kind)) {
        if (const HostAccount* account = listing->Find(id)) {
            name = account->name;
            return ERROR_SUCCESS;
        }
    }
    if (IsDomainThere()) {
        const auto own = FindInHostFiles(kind, [id](const char*, id_t listed) { return listed == id; });
        if (own) return TakeName(own->name.c_str(), name);
    }
    const DWORD error = AskWithin<std::string>(kLookupTime, name, [kind, id](std::string& found) {
        if (kind == AccountKind::kUser)
            return Ask(getpwuid_r, id, [&](const passwd& user) { return TakeName(user.pw_name, found); });
        return Ask(getgrgid_r, id, [&](const group& listed) { return TakeName(listed.gr_name, found); });
    });
    return error == ERROR_NONE_MAPPED ? ConfirmNobody(kind, id, name) : error;
}

DWORD FindHostId(AccountKind kind, const std::string& name, id_t& id) {
    if (!IsPlainAccountName(name)) return ERROR_NONE_MAPPED;
    if (const auto listing = LastListings().Recent(kind)) {
        if (const HostAccount* account = listing->Find(name)) {
            id = account->id;
            return ERROR_SUCCESS;
        }
    }
    if (IsDomainThere()) {
        const auto own = FindInHostFiles(kind, [&](const char* listed, id_t) { return name == listed; });
        if (own) return TakeId(own->id, id);
    }
    return AskWithin<id_t>(kLookupTime, id, [kind, name](id_t& found) {
        if (kind == AccountKind::kUser)
            return Ask(getpwnam_r, name.c_str(),
                       [&](const passwd& user) { return TakeId(user.pw_uid, found); });
        return Ask(getgrnam_r, name.c_str(),
                   [&](const group& listed) { return TakeId(listed.gr_gid, found); });
    });
}

}  // namespace permora::host
