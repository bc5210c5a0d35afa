// What Samba's tools print about accounts. All of it is text from outside: what does not have exactly the
// expected form is left out, never guessed.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/nt/sid.h"
#include "platform/nt/well_known_sids.h"

namespace permora::host {

// A user or group that Samba keeps.
struct SambaAccount {
    std::string name;
    nt::Sid sid;
    nt::SidUse use = nt::SidUse::kUser;
    std::optional<id_t> id;  // of the host's user or group behind it, where that is known
};

// The value of a global parameter in the listing of `testparm -s -v`; empty when it is not set.
std::string ParseGlobalParameter(std::string_view text, std::string_view parameter);

// The answer of `net getlocalsid`: the machine under the name below which its accounts are shown.
std::optional<SambaAccount> ParseLocalSid(std::string_view text);

// The listing of `pdbedit -L -v`: the users below `machine`, without ids. A name or a SID that is listed
// twice names nobody for certain, so every row with it is left out.
std::vector<SambaAccount> ParseUserList(std::string_view text, const nt::Sid& machine);

// The listing of `net groupmap list verbose`. Rows whose SID is listed twice are left out.
std::vector<SambaAccount> ParseGroupMap(std::string_view text);

// The answer of `net groupmap listmem`: a SID on each line.
std::vector<nt::Sid> ParseMembers(std::string_view text);

}  // namespace permora::host
