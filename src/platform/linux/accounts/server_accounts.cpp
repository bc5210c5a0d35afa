#include "platform/linux/accounts/server_accounts.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/accounts/domain_accounts.h"
#include "platform/linux/base/letter_case.h"
#include "platform/linux/files/file_system_types.h"

namespace permora::host {
namespace {

// How long the table of mounts is believed.
constexpr std::chrono::seconds kTableLifetime{1};

class Servers {
  public:
    std::vector<MountedServer*> Mounted() {
        const std::lock_guard lock(mutex);
        if (!readAt || SteadyClock::now() - *readAt > kTableLifetime) Read();
        return mounted;
    }

  private:
    void Read() {
        readAt = SteadyClock::now();
        mounted.clear();
        std::map<std::string, std::vector<MountEntry>> found;
        for (MountEntry& mount : ParseMountTable(ReadMountTable()))
            if (std::string server = IsSmbMount(mount) ? ServerOf(mount) : std::string(); !server.empty())
                found[std::move(server)].push_back(std::move(mount));
        for (auto& [name, mounts] : found) {
            std::unique_ptr<MountedServer>& server = all[name];
            if (!server) server = std::make_unique<MountedServer>(name);
            server->SetMounts(std::move(mounts));
            mounted.push_back(server.get());
        }
    }

    std::mutex mutex;
    std::optional<SteadyClock::time_point> readAt;
    std::map<std::string, std::unique_ptr<MountedServer>> all;
    std::vector<MountedServer*> mounted;
};

// Never destroyed: questions may outlive everything else.
std::vector<MountedServer*> MountedNow() {
    static Servers& servers = *new Servers;
    return servers.Mounted();
}

}  // namespace

ServerAccounts& TheServerAccounts() {
    static ServerAccounts kSource;
    return kSource;
}

MountedServer* FindMountedServer(std::string_view system) {
    if (system.starts_with("\\\\")) system.remove_prefix(2);
    const std::string name = InSmallLetters(system);
    for (MountedServer* const server : MountedNow())
        if (server->Name() == name) return server;
    return nullptr;
}

bool ServerAccounts::Owns(const nt::Sid& sid) {
    const std::vector<MountedServer*> servers = MountedNow();
    if (std::ranges::none_of(servers, [&](MountedServer* each) { return each->Owns(sid); })) return false;
    // The machine's domain speaks for itself.
    const std::vector<WinbindDomain> domains = TheDomainAccounts().Link().Domains();
    return std::ranges::none_of(domains,
                                [&](const WinbindDomain& domain) { return sid.IsDirectlyBelow(domain.sid); });
}

DWORD ServerAccounts::FindName(const nt::Sid& sid, std::chrono::milliseconds wait, AccountName& account) {
    DWORD silent = ERROR_NONE_MAPPED;
    const std::vector<MountedServer*> servers = MountedNow();
    for (MountedServer* const server : servers)
        if (server->Owns(sid)) return server->FindName(sid, wait, account);
    for (MountedServer* const server : servers) {
        const DWORD error = server->FindName(sid, wait, account);
        const bool isDeleted = error == ERROR_NONE_MAPPED && account.use == SidTypeDeletedAccount;
        if (error == ERROR_SUCCESS || isDeleted) return error;
        if (error != ERROR_NONE_MAPPED) silent = error;
    }
    return silent;
}

DWORD ServerAccounts::FindSid(const NameText& text, LetterCase letterCase, nt::Sid& sid) {
    if (letterCase == LetterCase::kSignificant || !text.isQualified) return ERROR_NONE_MAPPED;
    // The name under which a server knows itself may still be unknown here.
    DWORD silent = ERROR_NONE_MAPPED;
    MountedServer* called = nullptr;
    for (MountedServer* const server : MountedNow()) {
        const DWORD error = server->Identify(Patience::For(ServerTime(kLookupTime)));
        if (error != ERROR_SUCCESS && error != ERROR_NONE_MAPPED) silent = error;
        if (!server->IsCalled(text.domain)) continue;
        if (called != nullptr && !server->IsSameAs(*called)) return kAmbiguousName;
        called = server;
    }
    return called != nullptr ? called->FindSid(text, sid) : silent;
}

DWORD ServerAccounts::FindGroups(const nt::Sid& /*account*/, GroupsRequest /*request*/,
                                 AccountGroups& /*groups*/) {
    return ERROR_NONE_MAPPED;
}

DWORD ServerAccounts::Search(const std::atomic<bool>& /*isStopped*/, FoundRows& /*rows*/) {
    return ERROR_SUCCESS;
}

}  // namespace permora::host
