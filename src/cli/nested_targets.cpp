#include "cli/nested_targets.h"

#include "cli/terminal_text.h"
#include "platform/path_below.h"

namespace permora {

void NestedTargets::Add(const Target& target, const HeldObject& object, ConsoleMessages& messages) {
    ChangedTop top;
    if (isSaid || object.FindTop(top) != ERROR_SUCCESS) return;
    for (const auto& [path, argument] : known) {
        const bool isBelow = IsAtOrBelow(top.path, path);
        isSaid = isBelow || IsAtOrBelow(path, top.path);
        if (!isSaid) continue;
        messages.SetSubject(isBelow ? target.argument : argument);
        messages.Say(
            "is in " + PrintableText(isBelow ? argument : target.argument) +
            ", which is named, too: this dry run judges and counts each of them by what is there now, "
            "and not by what the other would leave");
        messages.SetSubject(target.argument);
        return;
    }
    known.emplace_back(std::move(top.path), target.argument);
}

}  // namespace permora
