// On which machine's accounts an object's access list is about.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/held_object.h"
#include "platform/nt/acl.h"

namespace permora {

// What is not known of rights on a server, half a sentence.
inline constexpr const char* kNotOfServer =
    "the object is on another server, and what its share, its settings and its own file system give or take "
    "away is not known here";

// The server that judges by the object's list, as FindAccountGroupsAt (platform/server_accounts.h) takes it;
// empty for this machine. The objects of a share that is mounted are another server's.
std::string ServerOfObject(const HeldObject& object);

// Of one that is remembered, if it can be found again; else empty.
std::string ServerOfItem(const RememberedObject& item);

// The server on which all that these paths lead to lies (ServerOfPath); empty where that is not one and the
// same.
std::string ServerOfPaths(const std::vector<std::string>& paths);

// The one server of several objects.
class CommonServer {
  public:
    void Add(const HeldObject& object);
    // As ServerOfObject. Where there is none, a server that nobody knows.
    std::string Name() const;
    bool IsOne() const { return isOne; }

  private:
    std::optional<std::string> server;
    bool isOne = true;
};

// Whether a list names whom a server does not tell to be among an account's groups: numbers of its own
// system, and what depends on how the account logs on there.
bool NamesUntold(const nt::Acl& list);
// Whether what a list grants can be known from the groups that a server tells of an account: 0, or
// kListNamesUntold. Always 0 for this machine and without a list.
inline constexpr DWORD kListNamesUntold = ERROR_SOME_NOT_MAPPED;
DWORD CheckListOfServer(const std::string& server, PACL dacl);

}  // namespace permora
