#include "platform/linux/security/recorded_top.h"

namespace permora::host {

DWORD RecordedTop::Begin(const HeldObject& object, ChangeRecorder& changeRecorder) {
    std::uint64_t given = 0;
    if (changeRecorder.BatchSize() > 0) {
        // What no path leads to could not be found again. The recorder says whether that matters.
        ChangedTop top{.path = {}, .isFolder = object.IsFolder(), .mark = {}};
        (void)object.FindTop(top);
        const DWORD error = changeRecorder.BeginTop(top, given);
        if (error != ERROR_SUCCESS) return error;
    }
    recorder = &changeRecorder;
    number = given;
    return ERROR_SUCCESS;
}

}  // namespace permora::host
