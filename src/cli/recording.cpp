#include "cli/recording.h"

#include "app/settings_store.h"
#include "history/history_texts.h"

namespace permora {

DWORD CountingRecorder::BeginTop(const ChangedTop& top, std::uint64_t& number) {
    return session.Recorder().BeginTop(top, number);
}

DWORD CountingRecorder::Record(std::uint64_t top, std::span<const DescriptorChange> batch) {
    count += batch.size();
    return session.Recorder().Record(top, batch);
}

std::size_t CountingRecorder::BatchSize() const {
    const std::size_t wanted = session.Recorder().BatchSize();
    return wanted > 0 ? wanted : ChangeRecorder::BatchSize();
}

DWORD CountingRecorder::Error() const {
    return session.Recorder().Error();
}

Recording::Recording(OptionPlace place)
    : noHistory(place, "--no-history",
                "Change it without keeping in the history what was there; this cannot be undone"),
      session(History::UsualPath(), LoadHistoryLimits()) {}

bool Recording::Begin(ChangeKind kind, ConsoleMessages& messages) {
    if (noHistory) session.GoOnWithout();
    const DWORD error = session.Begin(kind);
    if (error == ERROR_SUCCESS) return true;
    messages.SetSubject(History::UsualPath());
    messages.Say("nothing was changed: " + HistoryFailureText(error) +
                 " (--no-history changes it all the same)");
    return false;
}

void Recording::End(ConsoleMessages& messages) {
    messages.SetSubject(History::UsualPath());
    messages.Check({session.End(), Step::kEndChange});
}

}  // namespace permora
