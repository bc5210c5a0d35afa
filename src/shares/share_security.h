// The access lists that the machine's server keeps for shares: reading one, and writing one to several
// shares.
#pragma once

#include <span>
#include <string>

#include "platform/api/shares.h"
#include "platform/change_recorder.h"
#include "platform/resources.h"
#include "security/access_entry_list.h"
#include "security/change_preview.h"
#include "security/outcome.h"

namespace permora {

// A share as it was read.
struct ShareSecurity {
    UniqueNetworkBuffer<SHARE_INFO_502> record;  // null: nothing was read
    bool hasDescriptor = false;                  // without a descriptor everyone may do everything
    PACL dacl = nullptr;                         // into `record`; null: no list, the same
    AccessEntryList entries;
};

// Names of shares are in the ANSI code page; shares are those of this machine.

// Reads the record of a share. On failure `share` is untouched.
Outcome LoadShareDacl(const std::string& name, ShareSecurity& share);

// Both of these read the share, change it and write it back whole: the caller has the turn on it (ShareTurn).

// Gives a share without a descriptor one with a null list, which lets everyone do everything as before. A
// share that has one by now keeps it.
Outcome GiveShareDescriptor(const std::string& name, ChangeRecorder& recorder);
// Puts `dacl` into the share's descriptor. `shown`, which may be null, is the share as it was read:
// ERROR_REVISION_MISMATCH, and nothing is written, when another program has changed the list since.
Outcome WriteShareDacl(const std::string& name, PACL dacl, const ShareSecurity* shown,
                       ChangeRecorder& recorder);

// The preview of WriteListToShares.
ChangePreview PreviewListOnShares(std::span<const std::string> names, PACL dacl, TreeObserver& observer);

// The descriptor of a share as its record holds it, for the history: SecurityForm::kShare with the
// self-relative bytes, or kNone. A system error code; on failure `security` is untouched.
DWORD ReadStoredShare(const std::string& name, StoredSecurity& security);
// Writes such a descriptor back, or takes it away. ERROR_REVISION_MISMATCH, and nothing is written, when the
// share has another one than `expected` by now. The caller has the turn on the share.
DWORD WriteStoredShare(const std::string& name, const StoredSecurity& expected, const StoredSecurity& wanted);
// Whether both let in the same accounts. A server may keep less of a descriptor than was written.
bool HaveSameList(const StoredSecurity& one, const StoredSecurity& other);

// Puts `dacl` into the descriptors of all shares, one after the other; the rest of their records is written
// back as it was read. Takes the turn on
// each. `shown`, which may be null, is the first share as WriteShareDacl takes it. Stops at the first
// failure: the shares before it have the new list, the others are unchanged. Once the first is written,
// `shown` has its new record.
Outcome WriteListToShares(std::span<const std::string> names, PACL dacl, ShareSecurity* shown,
                          ChangeRecorder& recorder);

}  // namespace permora
