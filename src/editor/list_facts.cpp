#include "editor/list_facts.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "platform/system_message.h"
#include "security/object_security.h"
#include "survey/list_enforcement.h"

namespace permora {
namespace {

bool IsSameEntry(const AccessEntry& one, const AccessEntry& other) {
    return one.mask == other.mask && one.aceType == other.aceType && one.aceFlags == other.aceFlags &&
           IsSameAccount(one.account, other.account);
}

void FindSources(const HeldObject& object, ListFacts& facts) {
    ObjectSecurity security;
    facts.sourcesError = ReadObjectDacl(object, security).code;
    if (facts.sourcesError == ERROR_SUCCESS)
        facts.sourcesError = FindEntrySources(object, security.dacl, facts.sources);
    if (facts.sourcesError == ERROR_SUCCESS) facts.entries = std::move(security.entries);
}

}  // namespace

// What was edited since has kept the order of the inherited entries.
std::vector<std::string> ListFacts::SourceTexts(const AccessEntryList& shown) const {
    std::vector<std::string> texts;
    const std::vector<AccessEntry>& read = entries.Entries();
    auto next = read.begin();
    for (const AccessEntry& entry : shown.Entries()) {
        texts.emplace_back();
        if (!entry.IsInherited()) continue;
        const auto found =
            std::find_if(next, read.end(), [&](const AccessEntry& each) { return IsSameEntry(each, entry); });
        const auto place = static_cast<std::size_t>(found - read.begin());
        if (sourcesError != ERROR_SUCCESS) {
            texts.back() = "not known: " + SystemMessageLine(sourcesError);
        } else if (found == read.end() || place >= sources.size()) {
            texts.back() = "not known: the list has changed meanwhile";
        } else {
            texts.back() = SourceText(sources[place]);
            next = found + 1;
        }
    }
    return texts;
}

ListFacts FindListFacts(const std::vector<RememberedObject>& items, const std::atomic<bool>& isStopped) {
    ListFacts facts;
    EnforcementFinder finder;
    CommonEnforcement common;
    for (const RememberedObject& item : items) {
        if (isStopped) break;
        HeldObject object;
        ListEnforcement enforcement;
        DWORD error = item.Find(object);
        if (&item == &items.front()) {
            if (error == ERROR_SUCCESS)
                FindSources(object, facts);
            else
                facts.sourcesError = error;
        }
        if (error == ERROR_SUCCESS) error = finder.Find(object, enforcement);
        if (error == ERROR_SUCCESS)
            common.Add(enforcement, AccountDisplayName);
        else
            common.AddUnknown(error);
    }
    facts.kept = common.Text();
    return facts;
}

}  // namespace permora
