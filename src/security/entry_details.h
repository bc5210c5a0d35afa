// Everything in an entry of any type, for listings with more than the rows of security/access_rows.h.
#pragma once

#include <string>
#include <vector>

#include "platform/api/security.h"
#include "security/account_record.h"

namespace permora {

struct EntryDetails {
    BYTE aceType = 0;
    BYTE aceFlags = 0;
    AccountRecord account;            // without a SID where the type is unknown or holds no valid one
    std::string objectType;           // the GUID of what an object entry is about; empty: of everything
    std::string inheritedObjectType;  // the GUID of the objects that inherit it; empty: all
    std::string text;                 // "(XA;;FX;;;WD;(a == 1))"; empty when no text says all that it holds
    std::string condition;            // "(a == 1)", or the attribute that it gives: the end of `text`

    bool IsInherited() const { return (aceFlags & INHERITED_ACE) != 0; }
};

// The entries of the list, as AcesOf (platform/raw_security.h) reads them.
std::vector<EntryDetails> DetailsOfEntries(PACL acl);

// Whether such an entry of a folder is handed down by exactly one level.
bool IsForDirectChildrenOnly(BYTE aceFlags);

// "0x1200a9", without SYNCHRONIZE.
std::string MaskDigits(DWORD mask);

// "Allow", "Callback allow", "Mandatory label"; "Type 200" for one that is not known.
std::string EntryTypeName(BYTE aceType);

}  // namespace permora
