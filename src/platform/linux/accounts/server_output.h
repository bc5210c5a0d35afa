// What Samba's `rpcclient` prints about the accounts of a server. Server and tool are foreign: what does not
// have exactly the expected form is no answer at all, never half of one.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/accounts.h"
#include "platform/nt/sid.h"

namespace permora::host {

// A server as the domain of its own accounts.
struct ServerIdentity {
    std::string name;  // "FILES"
    nt::Sid sid;       // S-1-5-21-a-b-c
};

// Takes the answer of `lsaquery 5` off the text; untouched without one.
std::optional<ServerIdentity> TakeIdentity(std::string_view& text);

// Takes the answer of `lsaquery` off the text. A domain controller has the domain's accounts for its own.
enum class ServerRole : std::uint8_t { kDomainController, kOther };
std::optional<ServerRole> TakeRole(std::string_view& text, const ServerIdentity& server);

// The answers of several commands with `lsaquery 5` between each two, which must have told the same each
// time. Views into `text`.
std::optional<std::vector<std::string_view>> SplitAnswers(std::string_view text, const ServerIdentity& server,
                                                          std::size_t count);

// The answer of `lookupsids` about these SIDs, of which none stands there twice: one for each, in their
// order. `use` is SidTypeUnknown where the server knows nobody.
std::optional<std::vector<AccountName>> ParseServerNames(std::string_view text,
                                                         std::span<const nt::Sid> asked);

// The answer of `lookupnames` about one name: S-1-0-0 where the server knows nobody of that name.
std::optional<nt::Sid> ParseServerSid(std::string_view text, std::string_view name);

// The group that `queryuser` tells as the user's first.
std::optional<std::uint32_t> ParsePrimaryGroup(std::string_view text);

// The relative ids of `queryusergroups` and `queryuseraliases`.
std::optional<std::vector<std::uint32_t>> ParseGroupIds(std::string_view text);

// Whether a name can stand in one of its commands. Those that cannot are no names of accounts on Windows
// either.
bool CanBeAskedFor(std::string_view name);

}  // namespace permora::host
