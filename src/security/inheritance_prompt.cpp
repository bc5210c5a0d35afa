#include "security/inheritance_prompt.h"

#include "platform/api/messages.h"

namespace permora {

InheritanceOffResult TurnInheritanceOff(HWND owner, AccessEntryList& list) {
    if (!list.HasInheritedEntries()) return InheritanceOffResult::kNothingInherited;
    const int answer = MessageBoxA(owner,
                                   "Would you like to copy inherited entries into this access control list?\n"
                                   "Click Yes to copy\n"
                                   "Click No to delete inherited entries\n"
                                   "Click Cancel to cancel operation",
                                   "Inherited entries", MB_YESNOCANCEL | MB_ICONQUESTION);
    switch (answer) {
        case IDYES:
            list.CopyInheritedEntries();
            list.RemoveInheritedEntries();
            return InheritanceOffResult::kCopied;
        case IDNO:
            list.RemoveInheritedEntries();
            return InheritanceOffResult::kRemoved;
        default:
            return InheritanceOffResult::kCancelled;
    }
}

}  // namespace permora
