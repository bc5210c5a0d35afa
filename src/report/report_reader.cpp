#include "report/report_reader.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "report/report_json.h"
#include "saved/base64.h"
#include "saved/saved_path.h"

namespace permora {
namespace {

using ReadJson = nlohmann::json;

// Where the parser is among the members of the report.
enum class Member : std::uint8_t { kTops, kAccounts, kLists, kObjects, kOther };

Member MemberOf(const std::string& key) {
    if (key == "tops") return Member::kTops;
    if (key == "accounts") return Member::kAccounts;
    if (key == "lists") return Member::kLists;
    if (key == "objects") return Member::kObjects;
    return Member::kOther;
}

const ReadJson* Find(const ReadJson& object, const char* key) {
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &*found;
}

bool TakeText(const ReadJson& object, const char* key, std::string& text) {
    const ReadJson* const value = Find(object, key);
    if (value == nullptr || !value->is_string()) return false;
    text = value->get_ref<const std::string&>();
    return true;
}

bool TakeIndex(const ReadJson& object, const char* key, std::size_t below, std::uint32_t& index) {
    const ReadJson* const value = Find(object, key);
    if (value == nullptr || !value->is_number_unsigned() || value->get<std::uint64_t>() >= below)
        return false;
    index = value->get<std::uint32_t>();
    return true;
}

bool IsNull(const ReadJson& object, const char* key) {
    const ReadJson* const value = Find(object, key);
    return value != nullptr && value->is_null();
}

std::optional<nt::Sid> SidIn(const ReadJson& value) {
    return value.is_string() ? nt::Sid::FromText(value.get_ref<const std::string&>()) : std::nullopt;
}

// Takes the elements of the long arrays one by one and keeps nothing else of them.
class ReportParser {
  public:
    explicit ReportParser(ReadReport& result) : report(result) {}

    std::string Run(std::string_view text) {
        const auto take = [this](int depth, ReadJson::parse_event_t event, ReadJson& value) {
            return Take(depth, event, value);
        };
        const ReadJson whole = ReadJson::parse(text.begin(), text.end(), take, false);
        if (!fault.empty()) return fault;
        if (whole.is_discarded() || !whole.is_object()) return "it is no report, or not complete";
        std::string form;
        std::string extent;
        if (!TakeText(whole, "report", form) || form != kReportForm) return "it is no report of this form";
        if (!TakeText(whole, "time", report.time) || !TakeText(whole, "extent", extent) || !hasObjects)
            return "it is not complete";
        report.extent = extent == "whole" ? ReportExtent::kWhole : ReportExtent::kPart;
        return CheckTops();
    }

  private:
    // False drops the value.
    bool Take(int depth, ReadJson::parse_event_t event, ReadJson& value) {
        constexpr int kDeepest = 8;
        if (!fault.empty() || depth > kDeepest) return false;
        if (event == ReadJson::parse_event_t::key && depth == 1) {
            member = MemberOf(value.get_ref<const std::string&>());
            hasObjects = hasObjects || member == Member::kObjects;
        }
        if (event != ReadJson::parse_event_t::object_end || depth != 2 || member == Member::kOther)
            return true;
        if (!TakeElement(value)) fault = "it holds something that no report has: " + Place();
        return false;
    }

    std::string Place() const {
        switch (member) {
            case Member::kTops:
                return "top " + std::to_string(report.tops.size() + 1);
            case Member::kAccounts:
                return "account " + std::to_string(report.accounts.size() + 1);
            case Member::kLists:
                return "list " + std::to_string(report.lists.size() + 1);
            default:
                return "object " + std::to_string(report.rows.size() + 1);
        }
    }

    bool TakeElement(const ReadJson& value) {
        switch (member) {
            case Member::kTops:
                return TakeTop(value);
            case Member::kAccounts:
                return TakeAccount(value);
            case Member::kLists:
                return TakeList(value);
            default:
                return TakeRow(value);
        }
    }

    bool TakeTop(const ReadJson& value) {
        ReportTop top;
        if (!TakeText(value, "path", top.typed) || !TakeText(value, "fullPath", top.fullPath)) return false;
        report.tops.push_back(std::move(top));
        return true;
    }

    bool TakeAccount(const ReadJson& value) {
        ReadReport::Account account;
        const ReadJson* const sid = Find(value, "sid");
        const ReadJson* const groups = Find(value, "groups");
        if (sid == nullptr || groups == nullptr || !TakeText(value, "account", account.name)) return false;
        const std::optional<nt::Sid> own = SidIn(*sid);
        if (!own) return false;
        account.sid = *own;
        if (groups->is_array()) {
            account.groups.emplace();
            for (const ReadJson& group : *groups) {
                const std::optional<nt::Sid> each = SidIn(group);
                if (!each) return false;
                account.groups->push_back(*each);
            }
        } else if (!groups->is_null()) {
            return false;
        }
        report.accounts.push_back(std::move(account));
        return true;
    }

    bool TakeList(const ReadJson& value) {
        std::string text;
        const ReadJson* const isStored = Find(value, "stored");
        if (isStored == nullptr || !isStored->is_boolean() || !TakeText(value, "descriptor", text))
            return false;
        const std::optional<std::vector<std::uint8_t>> bytes = FromBase64(text);
        if (!bytes) return false;
        std::optional<nt::SecurityDescriptor> descriptor = nt::SecurityDescriptor::FromBytes(*bytes);
        if (!descriptor) return false;
        report.lists.push_back({*std::move(descriptor), isStored->get<bool>()});
        return true;
    }

    bool TakeRow(const ReadJson& value) {
        ReadReport::Row row;
        std::string kind;
        if (!TakeIndex(value, "top", report.tops.size(), row.top) || !TakeText(value, "below", row.path) ||
            !TakeText(value, "kind", kind))
            return false;
        const std::optional<TreeObjectKind> known = KindOfWord(kind);
        if (!known || !IsInOrder(row)) return false;
        row.kind = *known;
        if (!IsNull(value, "list")) {
            std::uint32_t list = 0;
            if (!TakeIndex(value, "list", report.lists.size(), list)) return false;
            row.list = list;
        }
        row.isUnlisted = row.list && Find(value, "error") != nullptr;
        report.rows.push_back(std::move(row));
        return true;
    }

    bool IsInOrder(const ReadReport::Row& row) const {
        if (report.rows.empty() || report.rows.back().top != row.top) {
            const std::uint32_t expected = report.rows.empty() ? 0 : report.rows.back().top + 1;
            return row.top == expected && row.path.empty();
        }
        return IsPathBelow(row.path) && ComesBefore(report.rows.back().path, row.path);
    }

    // Only a selection has tops without an object.
    std::string CheckTops() const {
        const std::size_t seen = report.rows.empty() ? 0 : report.rows.back().top + std::size_t{1};
        const bool isWhole = report.extent == ReportExtent::kWhole;
        return isWhole && seen != report.tops.size() ? "it is not complete" : "";
    }

    ReadReport& report;
    Member member = Member::kOther;
    bool hasObjects = false;
    std::string fault;
};

}  // namespace

std::string ParseReport(std::string_view text, ReadReport& report) {
    report = {};
    return ReportParser(report).Run(text);
}

}  // namespace permora
