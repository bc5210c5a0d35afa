// What a search has found, as JSON for programs and as a table for spreadsheets.
#pragma once

#include <memory>
#include <string>

#include "platform/tree_reading.h"
#include "survey/entry_search.h"

namespace permora {

struct FoundObject {
    std::string path;  // as the user would type it
    TreeObjectKind kind = TreeObjectKind::kFile;
    const FoundEntries* found = nullptr;  // of an EntrySearch that outlives the form
};

// One part of the text after the other: Begin, each object, End. What is the same for all objects with one
// descriptor is made once.
class FoundForm {
  public:
    virtual ~FoundForm() = default;
    virtual std::string Begin() { return {}; }
    virtual std::string Add(const FoundObject& object) = 0;
    virtual std::string End() { return {}; }
};

// docs/json.md describes it.
std::unique_ptr<FoundForm> MakeFoundJson();
// RFC 4180, in UTF-8: a line for each entry that fits, or for an owner.
std::unique_ptr<FoundForm> MakeFoundTable();

}  // namespace permora
