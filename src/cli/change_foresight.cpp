#include "cli/change_foresight.h"

#include "cli/interrupts.h"
#include "cli/listing.h"
#include "cli/terminal_text.h"

namespace permora {

ChangeForesight::ChangeForesight(ChangeOutput& changeOutput)
    : output(changeOutput),
      messages(changeOutput.Messages()),
      progress(Progress::kShown, PassedOver::kNamed, messages),
      previewing(progress) {
    WatchForInterrupts();
}

void ChangeForesight::Add(const Target& target, const HeldObject& object, const PlannedWrite& write) {
    const ChangePreview& preview = previewing.Preview();
    const Told before = {preview.changed,         preview.lost.size(),
                         preview.closed.size(),   preview.closedToMe.size(),
                         preview.failures.size(), preview.below.value_or(TreeCounts())};
    if (write.below) nested.Add(target, object, messages);
    progress.SetTarget(target);
    previewing.Add(object, target.argument, write);
    progress.Clear();
    const TreeCounts now = preview.below.value_or(TreeCounts());
    if (preview.changed > before.changed || now.changed > before.below.changed) output.SetChanged();
    if (preview.failures.size() > before.failures || now.passedOver > before.below.passedOver ||
        preview.isStopped)
        output.SetFailed();
    if (!output.IsJson()) return;
    messages.SetSubject(target.argument);
    Warn(before);
    Tell(target, object, write);
}

// The same is printed for people at the end.
void ChangeForesight::Warn(const Told& before) {
    const ChangePreview& preview = previewing.Preview();
    if (preview.closed.size() > before.closed) messages.Say("everyone but the owner would be locked out");
    if (preview.closedToMe.size() > before.closedToMe) messages.Say("you would be locked out");
    if (preview.lost.size() > before.lost) messages.Say("it would lose entries of its own");
    TreeCounts below = preview.below.value_or(TreeCounts());
    below.losingOwn -= before.below.losingOwn;
    below.emptied -= before.below.emptied;
    for (const std::string& line : LossLines(below))
        messages.Say(line);
    for (std::size_t i = before.failures; i < preview.failures.size(); ++i)
        messages.Say("could not be looked at: " + LineText({preview.failures[i].code}),
                     preview.failures[i].code);
}

void ChangeForesight::Tell(const Target& target, const HeldObject& object, const PlannedWrite& write) {
    SecurityPreview preview;
    // A failure was told of.
    if (object.PreviewSecurity(write.information, write.parts, preview) != ERROR_SUCCESS) return;
    const ComparedObject kind = object.IsFolder() ? ComparedObject::kFolder : ComparedObject::kFile;
    const std::vector<ComparedRow> rows = ChangedRows(&preview.before, &preview.after, kind);
    if (!rows.empty()) output.AddDifference(target.argument, rows);
}

bool ChangeForesight::End() {
    const ChangePreview& preview = previewing.Preview();
    for (const std::string& line : PreviewLines(preview, AccountDisplayName))
        messages.PrintForPeople(PrintableText(line) + '\n');
    messages.SetSubject("");
    if (output.IsJson() && preview.changed > 0 && !preview.me)
        messages.Say("whether you would be locked out is not known");
    if (IsInterrupted()) SayInterrupted(messages);
    const bool isPassedOver = preview.below && preview.below->passedOver > 0;
    return preview.failures.empty() && !preview.isStopped && !isPassedOver && !IsInterrupted();
}

}  // namespace permora
