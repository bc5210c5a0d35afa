#include "platform/linux/shell/clash_question.h"

#include <utility>

#include "platform/linux/files/attributes.h"

namespace permora::host {

bool MayTouch(FileOperationObject source, const ObjectHandle& object, OperationTalk& talk) {
    DWORD attributes = 0;
    if (!object.IsFolder() && !S_ISREG(object.Status().st_mode)) return true;
    // Unreadable attributes do not protect the file. The operation itself reports the error.
    if (ReadAttributes(object, {}, attributes) != ERROR_SUCCESS) return true;
    if ((attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_SYSTEM)) == 0) return true;
    return talk.Agrees(FileOperationQuestionKind::kProtectedItem, std::move(source));
}

ClashAnswer AskAboutClash(const WalkedItem& item, const TargetFolder& target, const Clash& clash,
                          OperationTalk& talk, DWORD& error) {
    // A file that this operation has just put there must not be replaced, whatever the user chose for all.
    if (item.object.IsFolder() != clash.object.IsFolder() || target.HasTaken(clash.object)) {
        error = ERROR_ALREADY_EXISTS;
        return ClashAnswer::kFail;
    }
    FileOperationObject standing = DescribeObject(target.ShownPathOf(clash.hostName), clash.object);
    const bool isMerge = item.object.IsFolder();
    const auto kind =
        isMerge ? FileOperationQuestionKind::kMergeFolders : FileOperationQuestionKind::kReplaceFile;
    if (!talk.Agrees(kind, item.Described(), standing)) return ClashAnswer::kPassOver;
    if (!isMerge && !MayTouch(std::move(standing), clash.object, talk)) return ClashAnswer::kPassOver;
    return ClashAnswer::kGoOn;
}

}  // namespace permora::host
