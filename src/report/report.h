// What a report holds, whatever form it is written in: the summary of a survey, and the objects that differ
// from what their folder hands down.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/nt/security_descriptor.h"
#include "security/access_rows.h"
#include "survey/group_people.h"
#include "survey/survey.h"
#include "survey/survey_rows.h"

namespace permora {

// Where a walk began.
struct ReportTop {
    std::string typed;     // as the user named it
    std::string fullPath;  // absolute, as files.h takes it
};

// Which of the objects are listed. The summary counts all of them.
struct ReportSelection {
    std::optional<std::size_t> depth;  // levels below the top; 0: the top alone
    RemarkSet only;                    // with one of these; empty: all
    // What this account owns, is named in, or may read or write with its groups.
    std::optional<AccountGroups> account;
    // On another server, whose lists may name groups that nobody tells of (NamesUntold): objects with such a
    // list are listed too.
    bool isOfServer = false;

    bool IsAll() const { return !depth && !account && only.IsEmpty(); }
};

// Chooses rows. One thread at a time.
class RowChoice {
  public:
    explicit RowChoice(ReportSelection chosen) : selection(std::move(chosen)) {}

    // Whether it is what the report is about, however deep it is.
    bool Fits(const SurveyRow& row);
    bool IsDeepEnough(const SurveyRow& row) const;

  private:
    bool ConcernsAccount(const SurveyRow& row);

    ReportSelection selection;
    std::unordered_map<const DistinctSecurity*, bool> known;  // many rows have few lists
};

// Whether a report lists everything below its tops that differs.
enum class ReportExtent : std::uint8_t {
    kWhole,
    kPart,     // it was made with a selection, or without a top that was not found
    kStopped,  // the user has stopped it: what comes later is missing, and so is what accounts may do
};

// An account that a list or an owner names, or one that is in such a group.
struct ReportAccount {
    AccountSummary summary;
    std::string name;                   // as it is shown everywhere
    std::optional<GroupPeople> people;  // of a group, when members were asked for
};

struct ReportRow {
    std::string path;  // below its top, with backslashes; empty: the top
    std::size_t top = 0;
    TreeObjectKind kind = TreeObjectKind::kFile;
    RemarkSet remarks;
    std::optional<std::size_t> list;  // nothing: it could not be read
    DWORD error = ERROR_SUCCESS;
};

// A list as a person reads it.
struct ReportList {
    nt::SecurityDescriptor descriptor;
    std::vector<std::uint8_t> bytes;
    bool isStored = true;  // false: made from the host's owner, group and mode
    std::string owner;     // its name; "none"
    std::vector<AccessRow> rows;
    std::vector<nt::Ace> entries;    // what AccessRow::entryIndex counts
    std::vector<std::string> notes;  // what no row shows, a sentence each
    std::string handsDown;           // what it gives to what is made in a folder that has it
};

// How an account is shown: its name, or the text of its SID. Waits for its domain when the survey has not
// come to it.
std::string ShownAccountName(Survey& survey, const nt::Sid& sid);

// The report of one survey. One thread at a time.
class Report {
  public:
    // Everything is borrowed and must outlive this.
    Report(Survey& survey, const SurveyRows& rows, const SurveySummary& summary);

    std::vector<ReportTop> tops;
    std::string time;  // of the start: "2026-11-26T08:02:11Z"
    ReportExtent extent = ReportExtent::kWhole;
    std::vector<ReportAccount> accounts;

    const SurveySummary& Summary() const { return totals; }

    // Chooses the rows. How many are left out is `LeftOut`.
    void Select(RowChoice choice);
    std::size_t RowCount() const { return chosen.size(); }
    std::size_t LeftOut() const { return allRows.Count() - chosen.size(); }
    ReportRow Row(std::size_t index) const;
    // The row's path as the user would type it.
    std::string TypedPath(const ReportRow& row) const;

    // The lists of the chosen rows, in the order in which they come. There may be as many as objects, so no
    // more than some hundred are kept.
    std::size_t ListCount() const { return lists.size(); }
    std::shared_ptr<const ReportList> List(std::size_t index) const;

    std::string NameOf(const nt::Sid& sid) const { return ShownAccountName(survey, sid); }
    // The place of an account in `accounts`.
    std::optional<std::size_t> PlaceOf(const nt::Sid& sid) const;
    // Which accounts have one of these rights by the list, by themselves or their groups; ascending. Those
    // whose groups are not known are missing.
    std::vector<std::size_t> WhoHas(const nt::SecurityDescriptor& descriptor, std::uint32_t rights) const;

  private:
    std::shared_ptr<const ReportList> MakeList(const DistinctSecurity& own) const;

    Survey& survey;
    const SurveyRows& allRows;
    const SurveySummary& totals;
    std::vector<std::size_t> chosen;
    std::vector<const DistinctSecurity*> lists;
    std::unordered_map<const DistinctSecurity*, std::size_t> listPlaces;
    std::unordered_map<std::string, std::size_t> accountPlaces;
    mutable std::unordered_map<std::size_t, std::shared_ptr<const ReportList>> recentLists;
};

// The rights that a list gives to whoever has these SIDs: all of them without a list.
std::uint32_t RightsIn(const nt::SecurityDescriptor& descriptor, std::span<const nt::Sid> sids);

// What a list hands down, for people: "3 entries to folders, 2 to files", "nothing".
std::string HandsDownText(const nt::SecurityDescriptor& descriptor);

}  // namespace permora
