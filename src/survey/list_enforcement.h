// Who obeys an object's access list: that depends on where it is kept, on the shares that hold the object,
// and on the host's mode bits, which may stand in its way.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "platform/held_object.h"
#include "platform/host_permissions.h"
#include "platform/list_place.h"
#include "platform/served_folders.h"
#include "security/access_rows.h"
#include "survey/mode_accounts.h"

namespace permora {

struct ListEnforcement {
    struct Share {
        ServedFolder served;
        // Whom the mode bits of the object let in, or keep out, otherwise than the list. Those of the folders
        // above it count as well, and are not looked at.
        std::vector<ModeFinding> findings;

        friend bool operator==(const Share&, const Share&) = default;
    };

    ListPlace place = ListPlace::kNowhere;
    std::vector<Share> shares;                   // of this machine, that hold the object; asked for where
    DWORD sharesError = ERROR_SUCCESS;           // a server may obey the list. Why they are not known
    std::optional<HostPermissions> permissions;  // where they count beside the list or in its place
    DWORD permissionsError = ERROR_SUCCESS;      // why they are not known

    friend bool operator==(const ListEnforcement&, const ListEnforcement&) = default;
};

// Asks the file server and the accounts once. May take as long as a domain does, where mode bits keep some
// out. One thread at a time.
class EnforcementFinder {
  public:
    // A system error code for the object itself; `found` is then untouched.
    DWORD Find(const HeldObject& object, ListEnforcement& found);

  private:
    void FindShares(const HeldObject& object, ListEnforcement& found);

    std::optional<std::pair<DWORD, std::vector<ServedFolder>>> served;
    SystemModeAccounts accounts{kMostOfGroup};

    static constexpr std::size_t kMostOfGroup = 200;
};

// The names in the JSON of the terminal program.
const char* PlaceName(ListPlace place);
const char* ServedByName(ServedBy by);

// What follows "Kept ": "for Samba; the share Projects obeys it beside the mode bits".
std::string KeptText(const ListEnforcement& enforcement);
// "rwxr-x---", "rwxrwx--- with a POSIX access list", or that they are not known; empty where they do not
// count.
std::string ModeBitsText(const ListEnforcement& enforcement);
// Where the mode bits defeat the list, or where that is not known: half a sentence for each share and kind.
std::vector<std::string> DefeatTexts(const ListEnforcement& enforcement, NameAccount* nameOf);

// What follows "Kept " for the lists of shares.
std::string KeptText(ShareServer server);

// The lists of several objects in a few sentences: what holds for all of them, and in what they differ.
class CommonEnforcement {
  public:
    // `nameOf` is for this call.
    void Add(const ListEnforcement& enforcement, NameAccount* nameOf);
    void AddUnknown(DWORD error);
    // Empty before the first object.
    std::string Text() const;

  private:
    // The text of the first object; nothing once others have another one.
    struct Common {
        std::optional<std::string> text;
        void Add(const std::string& next, bool isFirst);
    };

    Common kept;
    Common bits;
    Common defeats;
    std::size_t objects = 0;
    std::size_t defeated = 0;
    std::size_t unknown = 0;
    DWORD firstError = ERROR_SUCCESS;
};

}  // namespace permora
