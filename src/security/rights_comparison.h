// What several accounts may do with several objects: a table of accounts by rights.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "platform/accounts.h"
#include "platform/nt/acl.h"
#include "security/access_rights.h"
#include "security/account_record.h"

namespace permora {

// On how many of the objects an account has a right.
enum class Holding : std::uint8_t {
    kOnAll,
    kOnSome,  // on one at least, but not on all; or whether on all is not known
    kOnNone,
    kUnknown,
};

struct RightsHolder {
    AccountRecord account;
    DWORD error = ERROR_SUCCESS;  // of FindAccountGroups: why nothing is known about it
    AccountGroups groups;
    DWORD onAll = 0xFFFFFFFF;  // of the objects whose lists are known
    DWORD onSome = 0;          // on one of them at least
    // What else is to be known, in half sentences: why nothing is known, on what its groups rest, or that it
    // is a group itself.
    std::vector<std::string> remarks;
};

// Each account's groups are asked for once, however many objects there are. One thread at a time.
class RightsComparison {
  public:
    explicit RightsComparison(GroupsRequest howToAsk) : request(howToAsk) {}

    // Before accounts are added and objects are known.
    void BeOn(std::string itsServer) { server = std::move(itsServer); }
    std::string Server() const { return server.value_or(""); }

    // Counts one more object, with its list; a null list lets everyone do everything. A damaged list counts
    // as one that is not known, and so does one of which only a server knows what its list grants.
    //
    // All objects are of one server (ServerOfObject), the first one's; any other counts as not known.
    void AddObject(PACL dacl, const std::string& itsServer = {});
    void AddUnknownObject() { ++unknown; }
    // Asks for the groups and names of an account with a SID, which may take kGroupsTime. One that is there
    // stays alone.
    void AddAccount(AccountRecord account);
    void RemoveAccount(std::size_t place);

    // The same accounts, with the groups that are known of them, and no object.
    RightsComparison WithoutObjects() const;

    std::size_t ObjectCount() const { return known + unknown; }
    std::size_t UnknownCount() const { return unknown; }
    // Lent until one is added or removed.
    std::vector<RightsHolder>& Accounts() { return accounts; }
    const std::vector<RightsHolder>& Accounts() const { return accounts; }

    // Of one of the thirteen single rights.
    Holding Of(const RightsHolder& account, const AccessRight& right) const;
    // "yes" and "no" for a single object, else "all", "some" and "none"; "?" where nothing is known.
    const char* TextOf(const RightsHolder& account, const AccessRight& right) const;

  private:
    GroupsRequest request;
    std::optional<std::string> server;
    std::size_t known = 0;
    std::size_t unknown = 0;
    bool isAnyOpen = false;                // has a null list
    std::unordered_set<std::string> keys;  // the bytes of `lists`
    std::vector<nt::Acl> lists;            // each once
    std::vector<RightsHolder> accounts;
};

}  // namespace permora
