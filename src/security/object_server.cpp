#include "security/object_server.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/list_place.h"
#include "platform/network_path.h"
#include "platform/raw_security.h"

namespace permora {
namespace {

bool IsHostNumber(const nt::Ace& entry) {
    constexpr std::uint64_t kHostAuthority = 22;
    return entry.sid && entry.sid->Authority() == kHostAuthority;
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
    return std::ranges::any_of(list->entries, IsHostNumber) ? ERROR_NOT_SUPPORTED : ERROR_SUCCESS;
}

}  // namespace permora
