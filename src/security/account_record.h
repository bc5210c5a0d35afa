// One account of the system: its security identifier with the names that the account database gives it.
#pragma once

#include <optional>
#include <string>

#include "platform/api/security.h"
#include "platform/nt/sid.h"

namespace permora {

struct AccountRecord {
    std::optional<nt::Sid> sid;         // nothing: no account
    SID_NAME_USE use = SidTypeInvalid;  // SidTypeUnknown when the database has no account for the SID
    std::string name;                   // from the last successful Lookup
    std::string domain;                 // likewise; empty for accounts without a domain

    // Takes a copy of `newSid` and forgets everything known about the previous account; no names are looked
    // up. On false, `newSid` is null or no SID, and the record is unchanged.
    [[nodiscard]] bool SetSid(PSID newSid);
    // For the system's functions; lent by the record, null without a SID.
    PSID RawSid() const;

    // Fills name, domain and use from the account database of this machine. True too when the database knows
    // no such account: the names are then empty and `use` is SidTypeUnknown.
    bool Lookup();

    // "S-1-5-32-544"; empty without a SID.
    std::string GetSidText() const;

  private:
    // The look-up for names that do not fit a first, small buffer; sizes as the system reported them.
    bool LookupLongNames(DWORD nameSize, DWORD domainSize);
};

// Whether both hold a SID, and the same.
bool IsSameAccount(const AccountRecord& one, const AccountRecord& other);

// DOMAIN\name, or the bare name of an account without a domain.
std::string QualifiedAccountName(const std::string& domain, const std::string& name);

// How an account is shown everywhere: by its qualified name, or the SID's text when there is no name. Empty
// without a SID. Looks the names up in the account database.
std::string AccountDisplayName(AccountRecord& record);

// The same without waiting for a domain: the SID's text until the name is known (platform/accounts.h,
// AccountNews).
std::string AccountNameSoFar(AccountRecord& record);

}  // namespace permora
