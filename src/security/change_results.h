// What became of each object of one change, for people, and what of it can be tried again. Bounded, whatever
// the change is about.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "security/outcome.h"

namespace permora {

// What is to be changed of an object.
enum class ObjectPart : std::uint8_t {
    kObject,     // the object, as the user has asked for it
    kContents,   // everything below it, but not itself
    kInherited,  // what is inherited: by the object from its folder, and from it by everything below it
};

// An object of a change.
struct ObjectPlace {
    std::size_t item = 0;    // the place of its item among the selected ones
    std::string below = {};  // its path below the item, with backslashes between the names; empty: the item
    ObjectPart part = ObjectPart::kObject;
    // Below an item, what knows the object again that has failed there (ChangedTop::mark); empty: not known.
    std::vector<std::uint8_t> mark = {};
};

// An object below an item that is tried again, where a walk through the item's tree has failed.
inline bool IsSingleBelow(const ObjectPlace& place) {
    return place.part == ObjectPart::kObject && !place.below.empty();
}

enum class ResultState : std::uint8_t { kFailed, kLeftAlone, kDone };

struct ObjectResult {
    ObjectPlace place;
    Outcome outcome;  // `object` is its path for people, also when all was done

    ResultState State() const;
};

// The columns of the list.
inline constexpr std::array<const char*, 4> kResultTitles = {"Item", "Result", "Reason", "Path"};
// One line, without a break.
std::string ResultText(const ObjectResult& result, std::size_t column);
// The rows as a table: cells with tabs between them, each row with a line break at its end.
std::string ResultLine(const ObjectResult& result);

class ChangeResults {
  public:
    // Of each state the first ones are listed, and all are counted.
    static constexpr std::size_t kMostListed = 10'000;

    void Add(ObjectResult result);
    // What was not come to, since its item has failed: it is tried again with that.
    void Skip(ObjectPlace place) { skipped.push_back(std::move(place)); }
    // Failures that nobody has named.
    void CountFailures(std::size_t number) { counts.front() += number; }

    std::size_t Count(ResultState state) const { return counts.at(static_cast<std::size_t>(state)); }
    const std::vector<ObjectResult>& Listed(ResultState state) const {
        return lists.at(static_cast<std::size_t>(state));
    }
    // The rows: those that failed, those left alone, those that are done.
    std::size_t RowCount() const;
    const ObjectResult& Row(std::size_t row) const;

    // The one object that was not changed; null when all were, and when there are several.
    const Outcome* Single() const;
    // Why the change was stopped before its end (Step::kRecord); null when it was not.
    const Outcome* Stop() const;

    // The listed failures, which are no longer among these results, and what was skipped for them: for
    // another try.
    std::vector<ObjectPlace> TakeFailed();

    // "2 objects failed, 1 was left alone, 3 are done.", and how many are not listed.
    std::string Summary() const;

  private:
    static constexpr std::size_t kStates = 3;

    std::array<std::vector<ObjectResult>, kStates> lists;
    std::array<std::size_t, kStates> counts{};
    std::vector<ObjectPlace> skipped;
};

}  // namespace permora
