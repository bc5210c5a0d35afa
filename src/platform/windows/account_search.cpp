// SearchAccounts with the SDK's calls: NetQueryDisplayInformation lists the users, computers and groups of a
// server in pieces; local groups have a call of their own.
#include <dsgetdc.h>
#include <array>
#include <cstring>
#include <optional>
#include <string>

#include "platform/accounts.h"
#include "platform/api/network.h"
#include "platform/found_rows.h"
#include "platform/raw_security.h"
#include "platform/resources.h"
#include "platform/windows/code_page.h"
#include "platform/windows/domain.h"
#include "platform/windows/network_listing.h"

namespace permora {
namespace {

constexpr DWORD kRowsOfACall = 100;  // the most that the system gives

// A server's accounts and the SID that their relative ids are below.
struct Server {
    std::wstring name;  // empty: this machine
    std::string domain;
    nt::Sid sid;

    LPCWSTR Name() const { return name.empty() ? nullptr : name.c_str(); }
};

DWORD FindDomainOf(Server& server) {
    USER_MODALS_INFO_2* info = nullptr;
    const NET_API_STATUS error = NetUserModalsGet(server.Name(), 2, reinterpret_cast<LPBYTE*>(&info));
    if (error != NERR_Success) return error;
    const UniqueNetworkBuffer<USER_MODALS_INFO_2> buffer(info);
    const std::optional<nt::Sid> sid = SidOf(info->usrmod2_domain_id);
    if (!sid) return ERROR_INVALID_SID;
    server.sid = *sid;
    return ToAnsi(info->usrmod2_domain_name, server.domain);
}

class ServerSearch {
  public:
    ServerSearch(const Server& asked, const std::atomic<bool>& stopFlag, FoundRows& found)
        : server(asked), isStopped(stopFlag), rows(found) {}

    DWORD AddUsers() {
        return AddAll<NET_DISPLAY_USER>(1, SidTypeUser, [](const NET_DISPLAY_USER& user) {
            const bool hasFullName = user.usri1_full_name != nullptr && *user.usri1_full_name != L'\0';
            return Listed{user.usri1_name, hasFullName ? user.usri1_full_name : user.usri1_comment,
                          user.usri1_user_id, user.usri1_next_index};
        });
    }

    DWORD AddComputers() {
        return AddAll<NET_DISPLAY_MACHINE>(2, SidTypeComputer, [](const NET_DISPLAY_MACHINE& machine) {
            return Listed{machine.usri2_name, machine.usri2_comment, machine.usri2_user_id,
                          machine.usri2_next_index};
        });
    }

    DWORD AddGroups() {
        return AddAll<NET_DISPLAY_GROUP>(3, SidTypeGroup, [](const NET_DISPLAY_GROUP& group) {
            return Listed{group.grpi3_name, group.grpi3_comment, group.grpi3_group_id,
                          group.grpi3_next_index};
        });
    }

    // Their SIDs are not below the server's alone (BUILTIN has its own), so each is asked for by its name.
    DWORD AddLocalGroups() {
        return TakeListed<LOCALGROUP_INFO_1>(
            [&](LPBYTE* block, DWORD* count, DWORD* total, DWORD_PTR* resume) {
                return NetLocalGroupEnum(server.Name(), 1, block, MAX_PREFERRED_LENGTH, count, total, resume);
            },
            [&](std::span<const LOCALGROUP_INFO_1> groups) -> DWORD {
                if (isStopped) return ERROR_OPERATION_ABORTED;
                for (const LOCALGROUP_INFO_1& group : groups)
                    AddLocalGroup(group);
                rows.HandOut();
                return ERROR_SUCCESS;
            });
    }

  private:
    struct Listed {
        LPCWSTR name;
        LPCWSTR description;
        DWORD relativeId;
        DWORD next;
    };

    static std::string Text(LPCWSTR wide) {
        std::string text;
        if (wide != nullptr) ToAnsi(wide, text);
        return text;
    }

    template <class Info, class Read>
    DWORD AddAll(DWORD level, SID_NAME_USE use, Read read) {
        DWORD index = 0;
        NET_API_STATUS error = ERROR_MORE_DATA;
        while (error == ERROR_MORE_DATA) {
            if (isStopped) return ERROR_OPERATION_ABORTED;
            void* block = nullptr;
            DWORD count = 0;
            error = NetQueryDisplayInformation(server.Name(), level, index, kRowsOfACall,
                                               MAX_PREFERRED_LENGTH, &count, &block);
            const UniqueNetworkBuffer<void> buffer(block);
            if (error != NERR_Success && error != ERROR_MORE_DATA) return error;
            const std::span infos(static_cast<const Info*>(block), block != nullptr ? count : 0);
            for (const Info& info : infos) {
                const Listed listed = read(info);
                index = listed.next;
                const std::optional<nt::Sid> sid = server.sid.Append(listed.relativeId);
                const std::string name = Text(listed.name);
                if (sid && !name.empty())
                    rows.Add({*sid, use, name, server.domain, Text(listed.description)});
            }
            rows.HandOut();
            if (infos.empty()) break;
        }
        return ERROR_SUCCESS;
    }

    void AddLocalGroup(const LOCALGROUP_INFO_1& group) {
        alignas(DWORD) std::array<BYTE, SECURITY_MAX_SID_SIZE> sid{};
        DWORD sidSize = sid.size();
        std::array<WCHAR, 256> domain{};
        DWORD domainSize = domain.size();
        SID_NAME_USE use = SidTypeAlias;
        if (LookupAccountNameW(server.Name(), group.lgrpi1_name, sid.data(), &sidSize, domain.data(),
                               &domainSize, &use) == FALSE)
            return;
        if (const std::optional<nt::Sid> value = SidOf(sid.data()))
            rows.Add({*value, use, Text(group.lgrpi1_name), Text(domain.data()), Text(group.lgrpi1_comment)});
    }

    const Server& server;
    const std::atomic<bool>& isStopped;
    FoundRows& rows;
};

DWORD SearchServer(Server& server, const std::atomic<bool>& isStopped, FoundRows& rows) {
    if (const DWORD error = FindDomainOf(server); error != ERROR_SUCCESS) return error;
    ServerSearch search(server, isStopped, rows);
    DWORD error = search.AddLocalGroups();
    // A machine without a domain has no groups and computers of this kind beyond what its users list.
    if (error == ERROR_SUCCESS && !server.name.empty()) error = search.AddGroups();
    if (error == ERROR_SUCCESS) error = search.AddUsers();
    if (error == ERROR_SUCCESS && !server.name.empty()) error = search.AddComputers();
    return error;
}

DWORD FindController(std::wstring& name) {
    DOMAIN_CONTROLLER_INFOW* info = nullptr;
    const DWORD error =
        DsGetDcNameW(nullptr, nullptr, nullptr, nullptr, DS_DIRECTORY_SERVICE_PREFERRED, &info);
    if (error != ERROR_SUCCESS) return error;
    const UniqueNetworkBuffer<DOMAIN_CONTROLLER_INFOW> buffer(info);
    name = info->DomainControllerName;
    return ERROR_SUCCESS;
}

void AddWellKnown(FoundRows& rows) {
    for (int type = WinWorldSid; type <= WinAccountRasAndIasServersSid; ++type) {
        alignas(DWORD) std::array<BYTE, SECURITY_MAX_SID_SIZE> bytes{};
        DWORD size = bytes.size();
        if (CreateWellKnownSid(static_cast<WELL_KNOWN_SID_TYPE>(type), nullptr, bytes.data(), &size) == FALSE)
            continue;  // types that need a domain's SID
        const std::optional<nt::Sid> sid = SidOf(bytes.data());
        AccountName name;
        if (sid && FindAccountName(*sid, {}, name) == NameAnswer::kKnown)
            rows.Add({*sid, name.use, name.name, name.domain, {}});
    }
}

}  // namespace

SearchOutcome SearchAccounts(const std::string& filter, const std::atomic<bool>& isStopped,
                             const std::function<void(std::vector<AccountRow> rows)>& take) {
    FoundRows rows(filter, take);
    AddWellKnown(rows);
    Server machine;
    DWORD error = SearchServer(machine, isStopped, rows);
    rows.HandOut();
    if (error == ERROR_OPERATION_ABORTED) return {error, {}};
    if (error != ERROR_SUCCESS) return {error, machine.domain};
    const DomainState state = StateOfDomain();
    if (state.availability == DomainAvailability::kNone) return {};
    Server domain;
    error = FindController(domain.name);
    if (error == ERROR_SUCCESS) error = SearchServer(domain, isStopped, rows);
    rows.HandOut();
    if (error == ERROR_OPERATION_ABORTED) return {error, {}};
    error = TheDomain().HasAnswered(error);
    return {error, error == ERROR_SUCCESS ? std::string() : state.domain};
}

}  // namespace permora
