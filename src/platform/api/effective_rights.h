// What an access list grants one account.
// Layouts and numbers: the SDK's "Access Control" documentation.
#pragma once

#include "platform/api/base.h"
#include "platform/api/security.h"

#ifndef _WIN32

enum MULTIPLE_TRUSTEE_OPERATION { NO_MULTIPLE_TRUSTEE = 0 };
enum TRUSTEE_FORM { TRUSTEE_IS_SID = 0 };
enum TRUSTEE_TYPE { TRUSTEE_IS_UNKNOWN = 0 };

struct TRUSTEE_A {
    TRUSTEE_A* pMultipleTrustee;  // null
    MULTIPLE_TRUSTEE_OPERATION MultipleTrusteeOperation;
    TRUSTEE_FORM TrusteeForm;
    TRUSTEE_TYPE TrusteeType;
    LPSTR ptstrName;  // the SID
};
using PTRUSTEE_A = TRUSTEE_A*;
using PACCESS_MASK = ACCESS_MASK*;

extern "C" {

// Makes a trustee of a SID, which is borrowed.
void WINAPI BuildTrusteeWithSidA(PTRUSTEE_A trustee, PSID sid);

// The rights that the list's allow and deny entries leave to the account and the groups that it belongs to:
// an entry earlier in the list wins over a later one, whatever their types. Entries that are only handed down
// do not count, entries of other types and generic rights neither. Not considered: what an owner may do
// anyway, privileges, and groups that an account belongs to only by the way it logs on. 0 or an error code,
// then
// `*rights` is untouched: ERROR_NONE_MAPPED for an account whose groups this machine does not know. A null
// list grants everything.
DWORD WINAPI GetEffectiveRightsFromAclA(PACL acl, PTRUSTEE_A trustee, PACCESS_MASK rights);

}  // extern "C"

#endif
