#include "security/item_walk.h"

#include <utility>

#include "platform/api/errors.h"
#include "security/message_boxes.h"
#include "security/object_security.h"

namespace permora {

bool FindFolder(HWND owner, const RememberedObject& item, HeldObject& folder) {
    HeldObject found;
    const DWORD error = item.Find(found);
    if (error == ERROR_FILE_INVALID) {
        const std::string text = "What is below \"" + item.Path() +
                                 "\" is left alone: another object has this name since it was shown here.";
        ShowErrorBox(owner, text.c_str());
    }
    if (error != ERROR_SUCCESS || !found.IsFolder()) return false;
    if (const DWORD turnError = found.TakeTurn(); turnError != ERROR_SUCCESS) {
        ShowSystemErrorBox(owner, turnError);
        return false;
    }
    folder = std::move(found);
    return true;
}

void ForeignParts::PassOver(const std::string& path, DWORD error) {
    if (error != ERROR_NOT_SAME_DEVICE && error != kHasFurtherNames) return;
    Parts& parts = error == kHasFurtherNames ? linked : mounted;
    if (parts.count++ == 0) parts.first = ChildPath(item, path);
}

void ForeignParts::Tell(HWND owner) const {
    if (mounted.count > 0) {
        std::string text = "Something is mounted on \"" + mounted.first + '"';
        if (mounted.count > 1)
            text += " and on " + std::to_string(mounted.count - 1) + " more of the folders";
        text += ". What is mounted is a volume of its own and was left as it is.";
        ShowInfoBox(owner, text.c_str());
    }
    if (linked.count > 0) {
        std::string text = '"' + linked.first + "\" has further names (hard links)";
        if (linked.count > 1)
            text += ", and so have " + std::to_string(linked.count - 1) + " more of the files";
        text += ". Under these it may be in another's folder, so it was left as it is.";
        ShowInfoBox(owner, text.c_str());
    }
}

}  // namespace permora
