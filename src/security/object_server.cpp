#include "security/object_server.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <utility>

#include "platform/list_place.h"
#include "platform/network_path.h"
#include "platform/raw_security.h"

namespace permora {
namespace {

// Numbers of the server's own system, and what a logon there gives or not: "This Organization", the ways of
// proving who one is, "Local account" with and without administrators' rights.
bool IsUntold(const nt::Ace& entry) {
    constexpr std::uint64_t kHostAuthority = 22;
    constexpr std::array<std::uint32_t, 4> kByLogon = {15, 64, 113, 114};
    if (!entry.sid || entry.sid->SubAuthorityCount() == 0) return false;
    return entry.sid->Authority() == kHostAuthority ||
           (entry.sid->Authority() == 5 &&
            std::ranges::find(kByLogon, entry.sid->SubAuthority(0)) != kByLogon.end());
}

// As FindAccountGroupsAt takes it: nothing has this name.
constexpr const char* kUnknownServer = "\\\\";

}  // namespace

std::string ServerOfObject(const HeldObject& object) {
    ChangedTop top;
    if (object.FindTop(top) == ERROR_SUCCESS)
        if (std::string server = ServerOfPath(top.path); !server.empty()) return server;
    // Of some server that no path tells, nothing that is known of accounts here holds.
    ListPlace place = ListPlace::kNowhere;
    return object.FindListPlace(place) == ERROR_SUCCESS && place == ListPlace::kSmb ? kUnknownServer : "";
}

std::string ServerOfPaths(const std::vector<std::string>& paths) {
    std::optional<std::string> server;
    for (const std::string& path : paths) {
        std::string its = ServerOfPath(path);
        if (server && *server != its) return {};
        server = std::move(its);
    }
    return server.value_or("");
}

std::string ServerOfItem(const RememberedObject& item) {
    HeldObject object;
    return item.Find(object) == ERROR_SUCCESS ? ServerOfObject(object) : std::string();
}

void CommonServer::Add(const HeldObject& object) {
    std::string its = ServerOfObject(object);
    isOne = isOne && (!server || *server == its);
    server = std::move(its);
}

std::string CommonServer::Name() const {
    return isOne ? server.value_or("") : kUnknownServer;
}

DWORD CheckListOfServer(const std::string& server, PACL dacl) {
    if (server.empty() || dacl == nullptr) return ERROR_SUCCESS;
    const std::optional<nt::Acl> list = AclOf(dacl);
    if (!list) return ERROR_INVALID_ACL;
    return NamesUntold(*list) ? kListNamesUntold : ERROR_SUCCESS;
}

bool NamesUntold(const nt::Acl& list) {
    return std::ranges::any_of(list.entries, IsUntold);
}

}  // namespace permora
