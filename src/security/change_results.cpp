#include "security/change_results.h"

#include <algorithm>
#include <set>
#include <utility>

#include "platform/grouped_number.h"

namespace permora {
namespace {

enum Column : std::size_t { kItem, kState, kReason, kPath };

const char* StateText(ResultState state) {
    switch (state) {
        case ResultState::kFailed:
            return "Failed";
        case ResultState::kLeftAlone:
            return "Left alone";
        case ResultState::kDone:
            return "Done";
    }
    return "";
}

// Texts of the system have line breaks, and so may names.
std::string InOneLine(std::string text) {
    const auto isBreak = [](char c) { return c == '\n' || c == '\r' || c == '\t'; };
    while (!text.empty() && isBreak(text.back()))
        text.pop_back();
    std::ranges::replace_if(text, isBreak, ' ');
    return text;
}

// Of the root of a drive, the whole path.
std::string NameOf(const std::string& path) {
    const std::size_t separator = path.rfind('\\');
    return separator == path.npos || separator + 1 == path.size() ? path : path.substr(separator + 1);
}

}  // namespace

ResultState ObjectResult::State() const {
    if (outcome.IsDone()) return ResultState::kDone;
    const bool isLeftAlone = outcome.step == Step::kPassOverMounted || outcome.step == Step::kPassOverLinked;
    return isLeftAlone ? ResultState::kLeftAlone : ResultState::kFailed;
}

std::string ResultText(const ObjectResult& result, std::size_t column) {
    switch (column) {
        case kItem:
            return InOneLine(NameOf(result.outcome.object));
        case kState:
            return StateText(result.State());
        case kReason:
            return result.outcome.IsDone() ? std::string() : InOneLine(LineText(result.outcome));
        case kPath:
            return InOneLine(result.outcome.object);
        default:
            return {};
    }
}

std::string ResultLine(const ObjectResult& result) {
    std::string line = ResultText(result, 0);
    for (std::size_t column = 1; column < kResultTitles.size(); ++column)
        line += '\t' + ResultText(result, column);
    return line + '\n';
}

void ChangeResults::Add(ObjectResult result) {
    const auto state = static_cast<std::size_t>(result.State());
    ++counts.at(state);
    std::vector<ObjectResult>& list = lists.at(state);
    // Why a change was stopped is never left out.
    if (list.size() < kMostListed || result.outcome.step == Step::kRecord) list.push_back(std::move(result));
}

std::size_t ChangeResults::RowCount() const {
    std::size_t count = 0;
    for (const auto& list : lists)
        count += list.size();
    return count;
}

const ObjectResult& ChangeResults::Row(std::size_t row) const {
    std::size_t state = 0;
    for (; row >= lists.at(state).size(); ++state)
        row -= lists.at(state).size();
    return lists.at(state)[row];
}

const Outcome* ChangeResults::Single() const {
    if (Count(ResultState::kFailed) + Count(ResultState::kLeftAlone) != 1) return nullptr;
    return RowCount() > 0 && !Row(0).outcome.IsDone() ? &Row(0).outcome : nullptr;
}

const Outcome* ChangeResults::Stop() const {
    const std::vector<ObjectResult>& failed = Listed(ResultState::kFailed);
    const auto isStop = [](const ObjectResult& each) { return each.outcome.step == Step::kRecord; };
    const auto found = std::ranges::find_if(failed, isStop);
    return found == failed.end() ? nullptr : &found->outcome;
}

std::vector<ObjectPlace> ChangeResults::TakeFailed() {
    std::vector<ObjectPlace> places;
    std::vector<ObjectResult> failed = std::exchange(lists.front(), {});
    counts.front() -= failed.size();
    places.reserve(failed.size());
    std::set<std::size_t> items;
    for (ObjectResult& each : failed) {
        items.insert(each.place.item);
        places.push_back(std::move(each.place));
    }
    for (ObjectPlace& each : std::exchange(skipped, {}))
        if (items.contains(each.item)) places.push_back(std::move(each));
    return places;
}

std::string ChangeResults::Summary() const {
    const std::size_t failed = Count(ResultState::kFailed);
    const std::size_t left = Count(ResultState::kLeftAlone);
    const std::size_t done = Count(ResultState::kDone);
    std::string text = ObjectsText(failed) + " failed";
    if (left > 0) text += ", " + GroupedNumber(left) + (left == 1 ? " was left alone" : " were left alone");
    if (done > 0) text += ", " + GroupedNumber(done) + (done == 1 ? " is done" : " are done");
    text += '.';
    if (const std::size_t listed = Listed(ResultState::kFailed).size(); listed < failed)
        text += " Of the failures, " + GroupedNumber(listed) +
                " are listed and can be tried again; for the others, make the whole change again.";
    else if (RowCount() < left + done + failed)
        text += " Of each kind, the first " + GroupedNumber(kMostListed) + " are listed.";
    return text;
}

}  // namespace permora
