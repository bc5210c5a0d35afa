// What the permissions page shows beside an access list: who obeys it, and where its entries are inherited
// from. No window.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/remembered_object.h"
#include "security/access_entry_list.h"
#include "security/entry_source.h"

namespace permora {

struct ListFacts {
    std::string kept;  // sentences on all objects
    // Of the first object, as it was read for this.
    DWORD sourcesError = ERROR_SUCCESS;  // why the rest is not known
    AccessEntryList entries;
    std::vector<EntrySource> sources;  // one for each entry

    // A text for each entry of `shown`, which may have been edited since; empty for what is not inherited.
    std::vector<std::string> SourceTexts(const AccessEntryList& shown) const;
};

// One object at least. May take as long as the slowest volume or domain does. Once `isStopped`, the objects
// that remain are left out.
ListFacts FindListFacts(const std::vector<RememberedObject>& items, const std::atomic<bool>& isStopped);

}  // namespace permora
