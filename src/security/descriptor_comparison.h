// Two descriptors of one object side by side, as rows for people: what was there before a change, and what is
// there after it.
#pragma once

#include <string>
#include <vector>

#include "platform/change_recorder.h"
#include "platform/nt/security_descriptor.h"
#include "security/access_rows.h"

namespace permora {

enum class RowChange { kNone, kChanged, kAdded, kRemoved };
// "", "Changed", "Added", "Removed".
const char* RowChangeText(RowChange change);

struct ComparedRow {
    RowChange change = RowChange::kNone;
    std::string what;    // "Owner", "Inherits", "Allow", "Audit"
    std::string name;    // the account of an entry; empty for other rows
    std::string before;  // empty: it was not there
    std::string after;   // the same

    friend bool operator==(const ComparedRow&, const ComparedRow&) = default;
};

// The rights of a mask for people: "None", "Read & execute", or each by its name, and bits without one as a
// number.
std::string RightsText(DWORD mask);

// The descriptors of files say nothing about what is below.
enum class ComparedObject { kFile, kFolder };

// What an entry gives or takes: "Full control (This folder, subfolders and files; inherited)".
std::string GrantText(const nt::Ace& ace, ComparedObject object);

// A whole entry in a line: "Allow HOST\\anna: Modify (This folder only)".
std::string EntryLine(const nt::Ace& ace, ComparedObject object, NameAccount* nameOf);

// The owner, whether the list inherits, then the entries in the order of the lists: an entry that both lists
// have, or that has other rights in one of them, has one row. The primary group and the system access list
// have rows where they differ, and a list where it is null, absent or empty. Null: there is no descriptor.
std::vector<ComparedRow> CompareDescriptors(const nt::SecurityDescriptor* before,
                                            const nt::SecurityDescriptor* after, ComparedObject object,
                                            NameAccount* nameOf);

// The same of security as it is kept, with rows for what is beside the descriptor: that none is stored, that
// it is damaged, the host's owner. Where the bytes differ and no row does, the first row says so.
std::vector<ComparedRow> CompareStored(const StoredSecurity& before, const StoredSecurity& after,
                                       ComparedObject object, NameAccount* nameOf);

}  // namespace permora
