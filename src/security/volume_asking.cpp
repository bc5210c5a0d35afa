#include "security/volume_asking.h"

#include "framework/modal_window.h"
#include "platform/api/errors.h"
#include "platform/visible_text.h"

namespace permora {

Outcome AskVolume(PatientWork& wait, const std::string& volume, VolumeTask task,
                  const PatientWork::Progress& progress) {
    const auto outcome = std::make_shared<Outcome>();
    const auto work = [outcome, run = std::move(task)](PatientWork::Running& running) {
        *outcome = run(running);
    };
    const DWORD error = wait.Do(volume, work, progress);
    if (error == ERROR_SUCCESS) return *outcome;
    const Step step = error == ERROR_TIMEOUT ? Step::kAwaitAnswer : Step::kNone;
    return {.code = error, .step = step, .object = volume.empty() ? "the volume" : VisibleText(volume)};
}

Outcome AskVolume(CWnd& window, const std::string& volume, VolumeTask task) {
    const OwnerDisabler disabled(&window);
    PatientWork wait;
    wait.takesInput = false;
    return AskVolume(wait, volume, std::move(task));
}

}  // namespace permora
