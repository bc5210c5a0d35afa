// Which names a share can have on the network.
//
// Source: Microsoft Learn, "Naming Files, Paths, and Namespaces" and the share names that [MS-SRVS] 2.2.4.23
// refuses.
#pragma once

#include <string_view>

#include "platform/api/base.h"

namespace permora {

enum class ShareNameFault {
    kNone,
    kEmpty,
    kTooLong,             // more than NNLEN units of UTF-16
    kForbiddenCharacter,  // a control character, one of "/\[]:|<>+=;,*? or half a character
    kOuterBlank,          // a blank at the beginning or the end, which servers drop
    kReserved,            // means something else on every machine: IPC$, ADMIN$, pipe, mailslot
};

// What is wrong with a name for a new share. That there is a share of this name already is for NetShareAdd to
// say.
ShareNameFault FindShareNameFault(std::basic_string_view<WCHAR> name);

}  // namespace permora
