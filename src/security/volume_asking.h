// What a window asks a volume that may never answer.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "framework/patient_work.h"
#include "framework/window.h"
#include "security/outcome.h"

namespace permora {

// Runs on another thread, perhaps for ever, so it owns all that it uses.
using VolumeTask = std::function<Outcome(PatientWork::Running& running)>;

// The outcome of `task`, for which `wait` waits. ERROR_CANCELLED after PatientWork::GiveUp; ERROR_TIMEOUT
// with Step::kAwaitAnswer where `volume` (VolumeOfPath) does not answer.
Outcome AskVolume(PatientWork& wait, const std::string& volume, VolumeTask task,
                  const PatientWork::Progress& progress = {});

// The same for a page or a dialog, which takes no input until the volume has answered or is not waited for
// any longer, and goes on then. User-interface thread.
Outcome AskVolume(CWnd& window, const std::string& volume, VolumeTask task);

// Asks by `ask`, which gets the task, for a value that `find` finds; a finder owns all that it uses, too. The
// value is untouched unless the outcome is done.
template <class Value>
using VolumeFinder = std::function<Outcome(Value& value, PatientWork::Running& running)>;
template <class Value, class Ask>
Outcome FindByAsking(const Ask& ask, Value& value, VolumeFinder<Value> find) {
    auto found = std::make_shared<Value>();
    Outcome outcome =
        ask([found, find = std::move(find)](PatientWork::Running& running) { return find(*found, running); });
    if (outcome.IsDone()) value = std::move(*found);
    return outcome;
}
template <class Value>
Outcome FindOnVolume(CWnd& window, const std::string& volume, Value& value, VolumeFinder<Value> find) {
    const auto ask = [&](VolumeTask task) { return AskVolume(window, volume, std::move(task)); };
    return FindByAsking(ask, value, std::move(find));
}

}  // namespace permora
