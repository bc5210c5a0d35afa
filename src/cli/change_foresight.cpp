#include "cli/change_foresight.h"

#include "cli/interrupts.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"

namespace permora {

ChangeForesight::ChangeForesight(ConsoleMessages& console)
    : messages(console), progress(Progress::kShown, PassedOver::kNamed, console), previewing(progress) {
    WatchForInterrupts();
}

void ChangeForesight::Add(const Target& target, const HeldObject& object, const PlannedWrite& write) {
    if (write.below) nested.Add(target, object, messages);
    progress.SetTarget(target);
    previewing.Add(object, target.argument, write);
    progress.Clear();
}

bool ChangeForesight::End() {
    const ChangePreview& preview = previewing.Preview();
    for (const std::string& line : PreviewLines(preview, AccountDisplayName))
        Print(PrintableText(line) + '\n');
    if (IsInterrupted()) SayInterrupted(messages);
    const bool isPassedOver = preview.below && preview.below->passedOver > 0;
    return preview.failures.empty() && !preview.isStopped && !isPassedOver && !IsInterrupted();
}

}  // namespace permora
