#include "cli/nested_targets.h"

#include "cli/terminal_text.h"
#include "platform/path_below.h"

namespace permora {

// What holds an object has a path with which the path of that begins.
const NestedTargets::Known* NestedTargets::Around(const std::string& path) const {
    for (std::size_t end = path.find('\\'); end != path.npos; end = path.find('\\', end + 1))
        for (const std::size_t length : {end, end + 1})  // a drive's path ends with the separator
            if (const auto found = known.find(path.substr(0, length)); found != known.end()) return &*found;
    const auto same = known.find(path);
    return same != known.end() ? &*same : nullptr;
}

const NestedTargets::Known* NestedTargets::Within(const std::string& path) const {
    const auto first = known.lower_bound(path.ends_with('\\') ? path : path + '\\');
    return first != known.end() && IsAtOrBelow(first->first, path) ? &*first : nullptr;
}

void NestedTargets::Add(const Target& target, const HeldObject& object, ConsoleMessages& messages) {
    ChangedTop top;
    if (isSaid || object.FindTop(top) != ERROR_SUCCESS) return;
    const Known* const around = Around(top.path);
    const Known* const other = around != nullptr ? around : Within(top.path);
    if (other == nullptr) {
        known.emplace(std::move(top.path), target.argument);
        return;
    }
    isSaid = true;
    messages.SetSubject(around != nullptr ? target.argument : other->second);
    messages.Say((other->first == top.path ? "is " : "is in ") +
                 PrintableText(around != nullptr ? other->second : target.argument) +
                 ", which is named, too: this dry run judges and counts each of them by what is there now, "
                 "and not by what the other would leave");
    messages.SetSubject(target.argument);
}

}  // namespace permora
