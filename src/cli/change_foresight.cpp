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
    const std::size_t changed = preview.changed;
    const std::size_t failures = preview.failures.size();
    const TreeCounts below = preview.below.value_or(TreeCounts());
    if (write.below) nested.Add(target, object, messages);
    progress.SetTarget(target);
    previewing.Add(object, target.argument, write);
    progress.Clear();
    const TreeCounts now = preview.below.value_or(TreeCounts());
    if (preview.changed > changed || now.changed > below.changed) output.SetChanged();
    if (preview.failures.size() > failures || now.passedOver > below.passedOver || preview.isStopped)
        output.SetFailed();
    if (output.IsJson()) Tell(target, object, write);
}

// What people read at the end.
void ChangeForesight::Tell(const Target& target, const HeldObject& object, const PlannedWrite& write) {
    SecurityPreview preview;
    messages.SetSubject(target.argument);
    if (!messages.Check({object.PreviewSecurity(write.information, write.parts, preview)})) return;
    const ComparedObject kind = object.IsFolder() ? ComparedObject::kFolder : ComparedObject::kFile;
    const std::vector<ComparedRow> rows = ChangedRows(&preview.before, &preview.after, kind);
    if (!rows.empty()) output.AddDifference(target.argument, rows);
}

bool ChangeForesight::End() {
    const ChangePreview& preview = previewing.Preview();
    for (const std::string& line : PreviewLines(preview, AccountDisplayName))
        messages.PrintForPeople(PrintableText(line) + '\n');
    if (IsInterrupted()) SayInterrupted(messages);
    const bool isPassedOver = preview.below && preview.below->passedOver > 0;
    return preview.failures.empty() && !preview.isStopped && !isPassedOver && !IsInterrupted();
}

}  // namespace permora
