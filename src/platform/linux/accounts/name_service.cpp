#include "platform/linux/accounts/name_service.h"

#include <grp.h>
#include <pwd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

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

// The last listings. Enumerating has one state for the whole process, so only one thread does it at a time.
class Listings {
  public:
    // Null when there is none or it is too old.
    std::shared_ptr<const Listing> Recent(AccountKind kind) {
        const std::lock_guard lock(mutex);
        std::shared_ptr<const Listing>& last = Of(kind);
        if (last && !last->IsRecent()) last.reset();
        return last;
    }

    DWORD Make(AccountKind kind, std::shared_ptr<const Listing>& listing) {
        const std::lock_guard lock(mutex);
        std::vector<HostAccount> accounts;
        const DWORD error = Enumerate(kind, accounts);
        if (error != ERROR_SUCCESS) return error;
        listing = Of(kind) = std::make_shared<const Listing>(std::move(accounts));
        return ERROR_SUCCESS;
    }

  private:
    std::shared_ptr<const Listing>& Of(AccountKind kind) {
        return kind == AccountKind::kUser ? users : groups;
    }

    static DWORD Enumerate(AccountKind kind, std::vector<HostAccount>& accounts) {
        const auto take = [&](const char* name, id_t id) {
            if (IsPlainAccountName(name)) accounts.push_back({name, id});
        };
        DWORD error = ERROR_SUCCESS;
        if (kind == AccountKind::kUser) {
            setpwent();
            error =
                AskForAll<passwd>(getpwent_r, [&](const passwd& user) { take(user.pw_name, user.pw_uid); });
            endpwent();
        } else {
            setgrent();
            error =
                AskForAll<group>(getgrent_r, [&](const group& found) { take(found.gr_name, found.gr_gid); });
            endgrent();
        }
        return error;
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

}  // namespace

bool IsInHostFiles(AccountKind kind, id_t id) {
    const char* const path = kind == AccountKind::kUser ? "/etc/passwd" : "/etc/group";
    const std::unique_ptr<FILE, FileCloser> file(fopen(path, "re"));
    if (!file) return false;
    bool isFound = false;
    if (kind == AccountKind::kUser) {
        const auto next = [&](passwd* record, char* buffer, std::size_t size, passwd** found) {
            return fgetpwent_r(file.get(), record, buffer, size, found);
        };
        AskForAll<passwd>(next, [&](const passwd& user) { isFound |= user.pw_uid == id; });
    } else {
        const auto next = [&](group* record, char* buffer, std::size_t size, group** found) {
            return fgetgrent_r(file.get(), record, buffer, size, found);
        };
        AskForAll<group>(next, [&](const group& listed) { isFound |= listed.gr_gid == id; });
    }
    return isFound;
}

DWORD ListGroupsOf(uid_t user, std::vector<gid_t>& groups) {
    return Ask(getpwuid_r, user, [&](const passwd& found) { return TakeGroups(found, groups); });
}

DWORD ListHostAccounts(AccountKind kind, std::vector<HostAccount>& accounts) {
    std::shared_ptr<const Listing> listing;
    const DWORD error = LastListings().Make(kind, listing);
    if (error == ERROR_SUCCESS) accounts = listing->All();
    return error;
}

DWORD FindHostName(AccountKind kind, id_t id, std::string& name) {
    if (const auto listing = LastListings().Recent(kind)) {
        if (const HostAccount* account = listing->Find(id)) {
            name = account->name;
            return ERROR_SUCCESS;
        }
    }
    if (kind == AccountKind::kUser)
        return Ask(getpwuid_r, id, [&](const passwd& user) { return TakeName(user.pw_name, name); });
    return Ask(getgrgid_r, id, [&](const group& found) { return TakeName(found.gr_name, name); });
}

DWORD FindHostId(AccountKind kind, const std::string& name, id_t& id) {
    if (!IsPlainAccountName(name)) return ERROR_NONE_MAPPED;
    if (const auto listing = LastListings().Recent(kind)) {
        if (const HostAccount* account = listing->Find(name)) {
            id = account->id;
            return ERROR_SUCCESS;
        }
    }
    if (kind == AccountKind::kUser)
        return Ask(getpwnam_r, name.c_str(), [&](const passwd& user) { return TakeId(user.pw_uid, id); });
    return Ask(getgrnam_r, name.c_str(), [&](const group& found) { return TakeId(found.gr_gid, id); });
}

}  // namespace permora::host
