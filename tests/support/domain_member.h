// The member server of a real Active Directory domain, on which a test program runs
// (tests/support/domain.sh).
#pragma once

#include <string>
#include <vector>

#include "tests/support/command.h"

namespace permora::test {

// "S-1-5-21-...-1103" of a relative id in the domain.
std::string DomainSid(unsigned relativeId);

// Accounts of the domain (tests/support/domain_accounts.py), by their relative ids.
inline constexpr unsigned kDomainUsers = 513;
inline constexpr unsigned kAnna = 1103;     // in Engineering
inline constexpr unsigned kBert = 1104;     // in Platform
inline constexpr unsigned kCarla = 1105;    // in FILES\Operators only
inline constexpr unsigned kDeleted = 1106;  // was a user
inline constexpr unsigned kEngineering = 1107;
inline constexpr unsigned kPlatform = 1108;  // in Engineering
inline constexpr unsigned kPayroll = 1109;   // domain local; has Engineering
inline constexpr unsigned kAuditors = 1110;  // universal; has Platform
inline constexpr unsigned kLeavers = 1111;
inline constexpr unsigned kComputer = 1112;  // WS1$
inline constexpr unsigned kDora = 1113;      // her primary group is Leavers, and Domain Users has her not

// A local group of the member, in which Auditors and carla are.
inline constexpr const char* kOperatorsSid = "S-1-5-21-4000000001-4000000002-4000000003-1000";

// The share "data" of the member keeps access lists as they are.
inline constexpr const char* kSharedFolder = "/srv/data";

// Why this program is not on the member of a domain; empty when it is.
std::string NotOnDomainMemberReason();

// A command of domain.sh, such as {"stop", "winbindd"}, and its result.
CommandResult ControlDomain(const std::vector<std::string>& command);

// smbclient and smbcacls as a user of the domain, on the share. `name` is relative to it.
CommandResult SmbclientAs(const std::string& user, const std::string& commands);
CommandResult SmbcaclsAs(const std::string& user, const std::string& name,
                         const std::vector<std::string>& options = {});

}  // namespace permora::test
