#include "deletion/seclusion.h"

#include <utility>

#include "platform/api/errors.h"

namespace permora {

DWORD Seclusion::Take(FileHandle& file, const FilePlace& place) {
    if (folder) {
        const DWORD error = folder.Take(file);
        if (error == ERROR_SUCCESS || (error != ERROR_NOT_SAME_DEVICE && !folder.IsGone())) return error;
        End();
    }
    const DWORD error = MakeAndTake(file, place.top, 0);
    // A user may have the right to change a folder but not the one above it. A volume may also be unable to
    // move objects between its folders.
    return folder || place.level == 0 ? error : MakeAndTake(file, place.folder, place.level);
}

// Leaves no folder if it cannot be used here.
DWORD Seclusion::MakeAndTake(FileHandle& file, const FolderHandle& place, std::size_t level) {
    DWORD error = SecludedFolder::Make(place, folder);
    if (error != ERROR_SUCCESS) return error;
    madeAt = level;
    error = folder.Take(file);
    if (error == ERROR_NOT_SAME_DEVICE) End();
    return error;
}

Outcome Seclusion::GiveBack(FileHandle& file) {
    Outcome outcome{folder.GiveBack(file), Step::kGiveBack};
    if (!outcome.IsDone()) outcome.place = std::exchange(folder, {}).Name();
    return outcome;
}

bool Seclusion::StandsIn(std::size_t level, const std::string& name) const {
    return folder && madeAt == level && folder.Name() == name;
}

void Seclusion::Leave(std::size_t level) {
    if (madeAt >= level) End();
}

void Seclusion::End() {
    SecludedFolder ended = std::exchange(folder, {});
    if (!ended || ended.IsGone()) return;
    if (const DWORD error = ended.Remove(); error != ERROR_SUCCESS)
        leftovers.push_back({error, Step::kRemoveSeclusion, {}, ended.Name()});
}

Outcomes Seclusion::TakeLeftovers() {
    return std::exchange(leftovers, {});
}

}  // namespace permora
