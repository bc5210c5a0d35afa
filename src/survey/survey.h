// A look at whole trees at once: where their lists depart from what is handed down, and what is odd in them.
//
// A tree of a million objects mostly has a few hundred different descriptors. Each is read, judged and named
// once, and what an object costs beside its reading is a hash and a look-up.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <span>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/held_object.h"
#include "platform/tree_reading.h"
#include "survey/account_standing.h"
#include "survey/judgement.h"
#include "survey/remark.h"

namespace permora {

// An object that departs from its folder or has a remark; the top of a walk in any case.
struct SurveyRow {
    std::string_view path;  // below its top, with backslashes; empty: the top. Lives for the call
    std::size_t top = 0;    // which walk, from 0
    TreeObjectKind kind = TreeObjectKind::kFile;
    RemarkSet remarks = {};
    const JudgedSecurity* security = nullptr;  // lives as long as the survey; null: it could not be read
    DWORD error = ERROR_SUCCESS;               // why it could not be read or listed
};

class SurveyObserver {
  public:
    virtual ~SurveyObserver() = default;
    // Before each object, with its path below the top; false ends the walk.
    virtual bool Begin(std::string_view path) = 0;
    // In the order of the walk: sorted, a folder before what is in it, each object once.
    virtual void Take(const SurveyRow& row) = 0;
};

// Who has one of these can read, or write, what is in an object.
inline constexpr std::uint32_t kReadingRights = FILE_READ_DATA;
inline constexpr std::uint32_t kWritingRights = FILE_WRITE_DATA | FILE_APPEND_DATA;

// What an account has in the trees of a survey.
struct AccountSummary {
    nt::Sid sid;
    SurveyedAccounts::Account account = {};
    std::size_t owned = 0;   // objects
    std::size_t listed = 0;  // objects in whose list it has an entry
    // Of FindAccountGroups: the two figures that follow are known with 0 alone.
    DWORD groupsError = ERROR_SUCCESS;
    std::vector<nt::Sid> groups;  // the account first, then what stands for it in lists; with 0 alone
    GroupsOrigin origin = GroupsOrigin::kThisMachine;
    // Objects that the lists let it read and write, by itself or by a group.
    std::size_t readable = 0;
    std::size_t writable = 0;
};

struct SurveySummary {
    std::size_t objects = 0;
    std::size_t folders = 0;
    std::size_t distinctLists = 0;
    std::size_t unread = 0;    // objects whose descriptor is damaged or could not be read
    std::size_t unlisted = 0;  // folders
    std::size_t mounted = 0;   // folders and files on which something is mounted, which was not entered
    std::array<std::size_t, kRemarkCount> rows{};  // with each remark
    std::vector<AccountSummary> accounts;          // as the walks came to them
};

// Walks over several trees, which count together: an object that is in two of them counts twice. One thread
// at a time.
class Survey {
  public:
    Survey() = default;
    Survey(const Survey&) = delete;
    Survey& operator=(const Survey&) = delete;

    // Looks at the top and everything below it, never through a link and at nothing that is mounted below.
    // An object that vanishes meanwhile is left out. 0, or ERROR_OPERATION_ABORTED when the observer has
    // ended it; the row of the object at which it ended may be missing then.
    DWORD Walk(const HeldObject& top, SurveyObserver& observer);

    // After the walks. The accounts' groups are asked for here, of each domain that does not answer once.
    // ERROR_OPERATION_ABORTED, with what was counted so far, when `isStopped` is set meanwhile.
    DWORD Summarise(const std::atomic<bool>& isStopped, SurveySummary& summary) {
        return Summarise(isStopped, summary, nullptr);
    }
    // The same with accounts beside those that lists and owners name: `further`, which may be empty, is given
    // these and returns the others, which may be among them.
    using FurtherAccounts = std::function<std::vector<nt::Sid>(std::span<const AccountSummary> found)>;
    DWORD Summarise(const std::atomic<bool>& isStopped, SurveySummary& summary,
                    const FurtherAccounts& further);

    // Their names, which are known for all that rows name.
    SurveyedAccounts& Accounts() { return accounts; }

  private:
    friend class SurveyWalk;

    struct SecurityKey {
        std::span<const std::uint8_t> bytes;
        bool isStored;
    };
    struct SecurityHash {
        using is_transparent = void;
        std::size_t operator()(const SecurityKey& key) const;
        std::size_t operator()(const DistinctSecurity* security) const;
    };
    struct SecurityEqual {
        using is_transparent = void;
        bool operator()(const SecurityKey& one, const DistinctSecurity* other) const;
        bool operator()(const DistinctSecurity* one, const SecurityKey& other) const {
            return (*this)(other, one);
        }
        bool operator()(const DistinctSecurity* one, const DistinctSecurity* other) const {
            return one == other;
        }
    };

    const DistinctSecurity* FolderOf(const HeldObject& top);
    DistinctSecurity& Intern(std::span<const std::uint8_t> bytes, bool isStored);
    const JudgedSecurity& Judge(const DistinctSecurity& own, const DistinctSecurity* above,
                                TreeObjectKind kind, SurveyPlace place);

    std::deque<DistinctSecurity> distinct;
    std::unordered_set<DistinctSecurity*, SecurityHash, SecurityEqual> byBytes;
    std::deque<JudgedSecurity> judged;
    std::unordered_map<std::uint64_t, const JudgedSecurity*> byPlace;
    SurveyedAccounts accounts;
    SurveySummary counts;
    std::size_t tops = 0;
    bool isAnyOfServer = false;  // whose accounts belong to other groups there than here
};

}  // namespace permora
