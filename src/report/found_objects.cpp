#include "report/found_objects.h"

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "report/json_text.h"
#include "report/report_json.h"
#include "report/visible_text.h"
#include "security/access_rights.h"
#include "security/entry_details.h"

namespace permora {
namespace {

AccountRecord RecordOf(const nt::Sid& sid) {
    AccountRecord record;
    record.sid = sid;
    return record;
}

class FoundJson : public FoundForm {
  public:
    std::string Add(const FoundObject& object) override {
        auto known = texts.find(object.found);
        if (known == texts.end()) known = texts.emplace(object.found, JsonOf(*object.found)).first;
        Json json = {{"path", object.path}, {"kind", KindWord(object.kind)}};
        json.update(known->second);
        return document.Add(json);
    }
    std::string End() override { return document.End(); }

  private:
    static Json JsonOf(const FoundEntries& found) {
        Json json = Json::object();
        if (found.owner) {
            AccountRecord owner = RecordOf(*found.owner);
            json["owner"] = AccountDisplayName(owner);
            json["ownerSid"] = owner.GetSidText();
            return json;
        }
        std::vector<std::uint8_t> bytes;
        json["entries"] = Json::array();
        if (!found.entries.AppendTo(bytes)) return json;
        auto* const list = reinterpret_cast<PACL>(bytes.data());
        json["entries"] = EntriesJson(list, AccessEntryList(found.entries.entries));
        return json;
    }

    JsonDocumentText document{"find"};
    std::unordered_map<const FoundEntries*, Json> texts;
};

class FoundTable : public FoundForm {
  public:
    std::string Begin() override {
        return CsvLine({"Object", "Kind", "Owner", "Type", "Name", "SID", "Permission", "Mask", "Inheritance",
                        "Apply To"});
    }
    std::string Add(const FoundObject& object) override {
        auto known = ends.find(object.found);
        if (known == ends.end()) known = ends.emplace(object.found, EndsOf(*object.found)).first;
        const std::string start = CsvCell(object.path) + "," + KindWord(object.kind) + ",";
        std::string lines;
        for (const std::string& end : known->second)
            lines += start + end;
        return lines;
    }

  private:
    // What comes behind path and kind in each line.
    static std::vector<std::string> EndsOf(const FoundEntries& found) {
        if (found.owner) {
            AccountRecord owner = RecordOf(*found.owner);
            return {CsvLine({AccountDisplayName(owner), "", "", owner.GetSidText(), "", "", "", ""})};
        }
        std::vector<std::string> lines;
        for (const nt::Ace& entry : found.entries.entries) {
            AccountRecord account = RecordOf(*entry.sid);
            const char* const limit = IsForDirectChildrenOnly(entry.flags) ? "; direct children only" : "";
            lines.push_back(
                CsvLine({"", EntryTypeName(entry.type), AccountDisplayName(account), account.GetSidText(),
                         PermissionText(entry.mask), MaskDigits(entry.mask), InheritanceText(entry.flags),
                         std::string(ScopeTextFromFlags(entry.flags)) + limit}));
        }
        return lines;
    }

    std::unordered_map<const FoundEntries*, std::vector<std::string>> ends;
};

}  // namespace

std::unique_ptr<FoundForm> MakeFoundJson() {
    return std::make_unique<FoundJson>();
}

std::unique_ptr<FoundForm> MakeFoundTable() {
    return std::make_unique<FoundTable>();
}

}  // namespace permora
