// The vocabulary of access rights and inheritance scopes: every word that the program uses for the bits of an
// access mask, the type and the flags of an access control entry. Pure data and lookups.
// Bits: [MS-DTYP] 2.4.3 (ACCESS_MASK) with the file meanings of the SDK's "File Access Rights Constants".
#pragma once

#include <array>
#include <string_view>

#include "platform/api/security.h"

namespace permora {

// The bits that name a mask; the others are kept but not shown.
inline constexpr DWORD RIGHTS_DISPLAY_MASK = 0x1F03FF;
// The thirteen single rights together, without SYNCHRONIZE.
inline constexpr DWORD FULL_CONTROL_RIGHTS = 0xF01FF;

// They mean several rights, which are determined when an entry is set or handed down.
inline constexpr DWORD GENERIC_RIGHTS = GENERIC_ALL | GENERIC_EXECUTE | GENERIC_WRITE | GENERIC_READ;

// SYNCHRONIZE has no box of its own. Network clients request it with every open: an account needs it to use
// any other right, and is locked out when it is denied.

constexpr DWORD WithoutSynchronize(DWORD mask) {
    return mask & ~DWORD{SYNCHRONIZE};
}

// The mask of an entry that someone made or changed: with SYNCHRONIZE in one that allows, and in a denial of
// all thirteen rights. A smaller denial keeps what `mask` says.
DWORD MaskOfChangedEntry(BYTE aceType, DWORD mask);

// One right in the wordings of the places that show it. The box ids are the controls of the permission entry
// dialog (dialog 159).
struct AccessRight {
    const char* dialogLabel;  // beside its check boxes in the permission entry dialog
    const char* listName;     // in the rights lists of the effective permissions and wizard pages
    const char* rowName;      // in the "Permission" column of an entry that holds this right alone
    DWORD bits;
    int allowBox;
    int denyBox;
    const char* constants;  // the system's names of the bits
};

// In the order in which dialogs and lists show them. Row 0 stands for all thirteen others.
// clang-format off
inline constexpr std::array<AccessRight, 14> kAccessRights = {{
    {"Full control",                 "Full control",                   "Full control",                 FULL_CONTROL_RIGHTS,   1050, 1060, "FILE_ALL_ACCESS"},
    {"Traverse folder / Execute",    "Traverse folder / Execute file", "Traverse folder/Execute file", FILE_EXECUTE,          1062, 1061, "FILE_EXECUTE, FILE_TRAVERSE"},
    {"List folder / Read data",      "List folder / Read data",        "List directory/Read data",     FILE_READ_DATA,        1064, 1063, "FILE_READ_DATA, FILE_LIST_DIRECTORY"},
    {"Read attributes",              "Read attributes",                "Read attributes",              FILE_READ_ATTRIBUTES,  1067, 1066, "FILE_READ_ATTRIBUTES"},
    {"Read extended attributes",     "Read extended attributes",       "Read extended attributes",     FILE_READ_EA,          1065, 1068, "FILE_READ_EA"},
    {"Create file / Write data",     "Create files / Write data",      "Write file/Create file",       FILE_WRITE_DATA,       1070, 1071, "FILE_WRITE_DATA, FILE_ADD_FILE"},
    {"Create folders / Append data", "Create folders / Append data",   "Add subdirectory/Append data", FILE_APPEND_DATA,      1069, 1072, "FILE_APPEND_DATA, FILE_ADD_SUBDIRECTORY"},
    {"Write attributes",             "Write attributes",               "Write attributes",             FILE_WRITE_ATTRIBUTES, 1073, 1074, "FILE_WRITE_ATTRIBUTES"},
    {"Write extended attributes",    "Write extended attributes",      "Write extended attributes",    FILE_WRITE_EA,         1075, 1076, "FILE_WRITE_EA"},
    {"Delete subfolders and files",  "Delete subfolders and files",    "Delete subfolders and files",  FILE_DELETE_CHILD,     1078, 1082, "FILE_DELETE_CHILD"},
    {"Delete",                       "Delete",                         "Delete",                       DELETE,                1080, 1077, "DELETE"},
    {"Read permissions",             "Read permissions",               "Read permissions",             READ_CONTROL,          1079, 1081, "READ_CONTROL"},
    {"Change permissions",           "Change permissions",             "Write permissions",            WRITE_DAC,             1083, 1084, "WRITE_DAC"},
    {"Take ownership",               "Take ownership",                 "Change owner",                 WRITE_OWNER,           1086, 1085, "WRITE_OWNER"},
}};
// clang-format on

// The scopes of an entry: the choices of "Apply onto:", in the order of the combo box.
struct InheritanceScope {
    const char* text;
    BYTE flags;
};

// The ACE flags that make up a scope. NO_PROPAGATE_INHERIT_ACE and INHERITED_ACE are no part of it.
inline constexpr BYTE kScopeFlagsMask = OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE | INHERIT_ONLY_ACE;

// clang-format off
inline constexpr std::array<InheritanceScope, 7> kInheritanceScopes = {{
    {"This folder only",                  0},
    {"This folder, subfolders and files", CONTAINER_INHERIT_ACE | OBJECT_INHERIT_ACE},
    {"This folder and subfolders",        CONTAINER_INHERIT_ACE},
    {"This folder and files",             OBJECT_INHERIT_ACE},
    {"Subfolders and files only",         INHERIT_ONLY_ACE | CONTAINER_INHERIT_ACE | OBJECT_INHERIT_ACE},
    {"Subfolders only",                   INHERIT_ONLY_ACE | CONTAINER_INHERIT_ACE},
    {"Files only",                        INHERIT_ONLY_ACE | OBJECT_INHERIT_ACE},
}};
// clang-format on

// All texts below are constants; an empty text says that the value has no name.

// "Allow" or "Deny"; entries of other types have no name and are not shown.
const char* AceTypeText(BYTE aceType);
// "Inherited" or "Not inherited".
const char* InheritanceText(BYTE aceFlags);
// The "Permission" text of a mask: "None", the row name of a single right, "Synchronize", "Full control" for
// exactly the thirteen rights, else "Special".
const char* MaskDisplayName(DWORD mask);
// The same without SYNCHRONIZE, which is not shown.
const char* PermissionText(DWORD mask);

// The ACE flags of a scope by its place in the table; 0 for a place that is not in it.
BYTE ScopeFlagsFromIndex(int index);
// The "Apply To" text of an entry. Empty for INHERIT_ONLY_ACE alone, which applies to nothing.
const char* ScopeTextFromFlags(BYTE aceFlags);
// The place of exactly this text in the table; 0 ("This folder only") for any other text.
int ScopeIndexFromText(std::string_view text);

}  // namespace permora
