// The rights that an access list grants to one account.
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

// The rights that the list's allow and deny entries grant to the account through itself and its groups. An
// earlier entry wins over a later one, whatever their types. Inherit-only entries, entries of other types and
// generic rights do not count. Not considered: the implicit rights of an owner, privileges, and groups that
// depend on how the account logs on. A null list grants everything.
//
// Returns 0 or an error code; `*rights` is then untouched. ERROR_NONE_MAPPED: this machine does not know the
// groups of the account. ERROR_NO_SUCH_DOMAIN: its domain does not answer.
DWORD WINAPI GetEffectiveRightsFromAclA(PACL acl, PTRUSTEE_A trustee, PACCESS_MASK rights);

}  // extern "C"

#endif
