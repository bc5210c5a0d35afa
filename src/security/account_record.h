// One account of the system: its security identifier with the names that the account database gives it.
#pragma once

#include <string>

#include "platform/api/security.h"
#include "platform/resources.h"

namespace permora {

struct AccountRecord {
    UniqueLocal<void> sid;              // own copy, GetLengthSid bytes; null: no account
    SID_NAME_USE use = SidTypeInvalid;  // SidTypeUnknown when the database has no account for the SID
    std::string name;                   // from the last successful Lookup
    std::string domain;                 // likewise; empty for accounts without a domain
    std::string sidText;                // from the last GetSidText
    std::string machine;                // where names are looked up; empty: this machine

    AccountRecord() = default;
    // A copy whose SID cannot be copied (no memory) is left cleared.
    AccountRecord(const AccountRecord& other);
    AccountRecord& operator=(const AccountRecord& other);
    AccountRecord(AccountRecord&& other) noexcept = default;
    AccountRecord& operator=(AccountRecord&& other) noexcept = default;
    ~AccountRecord() = default;

    void Clear();

    // Takes a copy of `newSid`, which must be readable for its whole length, and forgets everything known
    // about the account before; no names are looked up. False for a null SID or without memory: the record is
    // as it was.
    [[nodiscard]] bool SetSid(PSID newSid, std::string newMachine);
    // The same with the record's present machine.
    [[nodiscard]] bool SetSid(PSID newSid);

    // Fills name, domain and use from the account database. True too when the database knows no such account:
    // the names are then empty and `use` is SidTypeUnknown.
    bool Lookup();

    // Each asks the database afresh; empty without a SID or when the lookup fails.
    std::string GetName();
    std::string GetDomain();
    // "S-1-5-32-544"; empty without a SID.
    std::string GetSidText();

  private:
    // The look-up for names that do not fit a first, small buffer; sizes as the system reported them.
    bool LookupLongNames(DWORD nameSize, DWORD domainSize);
};

// Whether both hold a SID, and the same.
bool IsSameAccount(const AccountRecord& one, const AccountRecord& other);

// DOMAIN\name, or the bare name of an account without a domain.
std::string QualifiedAccountName(const std::string& domain, const std::string& name);

// How an account is shown everywhere: by its qualified name, or the SID's text when there is no name. Empty
// without a valid SID. Looks the names up in the account database.
std::string AccountDisplayName(AccountRecord& record);

}  // namespace permora
