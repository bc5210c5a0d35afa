#include "framework/file_operation_texts.h"

#include <utility>

#include "platform/file_operation_pace.h"
#include "platform/system_message.h"

namespace permora {
namespace {

struct OperationWords {
    const char* going;  // "Copying"
    const char* verb;   // "copy"
    const char* past;   // "copied"
};

OperationWords WordsOf(FileOperationKind kind) {
    switch (kind) {
        case FileOperationKind::kCopy:
            return {"Copying", "copy", "copied"};
        case FileOperationKind::kMove:
            return {"Moving", "move", "moved"};
        case FileOperationKind::kRename:
            return {"Renaming", "rename", "renamed"};
        case FileOperationKind::kDelete:
            break;
    }
    return {"Deleting", "delete", "deleted"};
}

std::string Quoted(const std::string& path) {
    return '"' + NameOfPath(path) + '"';
}

FileQuestionChoice Yes(const char* text) {
    return {text, FileOperationAnswer::kYes, FileOperationAnswer::kYesToAll};
}

FileQuestionChoice Skip() {
    return {"&Skip", FileOperationAnswer::kNo, FileOperationAnswer::kNoToAll};
}

FileQuestionTexts TrashTexts(const FileOperationQuestion& question) {
    const std::string items = question.itemCount == 1
                                  ? Quoted(question.source.path)
                                  : "these " + std::to_string(question.itemCount) + " items";
    return {.text = "Do you want to move " + items + " to the trash?", .choices = {Yes("&Move to Trash")}};
}

FileQuestionTexts DeletionTexts(const FileOperationQuestion& question) {
    return {.text = "Do you want to delete " + Quoted(question.source.path) + " for good?",
            .more = question.source.isFolder
                        ? "No trash can take it. All that is in the folder is deleted and cannot be restored."
                        : "No trash can take it, and it cannot be restored.",
            .choices = {Yes("&Delete"), Skip()},
            .forAll = "Do the same with &all that no trash can take",
            .isWarning = true};
}

FileQuestionTexts ReplaceTexts(const FileOperationQuestion& question) {
    return {
        .text = "There is a file " + Quoted(question.target.path) + " already. Do you want to replace it?",
        .choices = {Yes("&Replace"), Skip()},
        .forAll = "Do the same with &all files that exist already",
        .targetCaption = "The file that is there:",
        .sourceCaption = "The file that would replace it:",
        .isWarning = true};
}

FileQuestionTexts MergeTexts(const FileOperationQuestion& question) {
    return {.text = "There is a folder " + Quoted(question.target.path) +
                    " already. Do you want to merge the two?",
            .more = "You are asked about files that are in both.",
            .choices = {Yes("&Merge"), Skip()},
            .forAll = "Do the same with &all folders that exist already",
            .targetCaption = "The folder that is there:",
            .sourceCaption = "The folder whose contents would be added:"};
}

FileQuestionTexts ProtectedTexts(const FileOperationQuestion& question) {
    // Copying changes only an object of the same name.
    const bool isReplaced = question.operation == FileOperationKind::kCopy;
    return {.text = Quoted(question.source.path) + " is read-only or belongs to the system. Do you want to " +
                    (isReplaced ? "replace" : WordsOf(question.operation).verb) + " it all the same?",
            .choices = {Yes("&Yes"), Skip()},
            .forAll = "Do the same with &all that is protected",
            .isWarning = true};
}

FileQuestionTexts LossTexts(const FileOperationQuestion& question) {
    return {.text = "The volume cannot hold some attributes or streams of " + Quoted(question.source.path) +
                    ". Do you want to " + WordsOf(question.operation).verb + " it without them?",
            .more = SystemMessageLine(question.error),
            .choices = {Yes("&Continue"), Skip()},
            .forAll = "Do the same with &all that would lose something",
            .isWarning = true};
}

FileQuestionTexts FailureTexts(const FileOperationQuestion& question) {
    std::vector<FileQuestionChoice> choices{Skip()};
    if (question.mayRetry)
        choices.insert(choices.begin(),
                       {"&Try Again", FileOperationAnswer::kRetry, FileOperationAnswer::kRetry});
    return {.text = Quoted(question.source.path) + " could not be " + WordsOf(question.operation).past + '.',
            .more = SystemMessageLine(question.error) + "\n\n" + question.source.path,
            .choices = std::move(choices),
            .forAll = "Skip &all that fails for the same reason",
            .isWarning = true};
}

FileQuestionTexts IntoItselfTexts(const FileOperationQuestion& question) {
    return {.text = "The folder " + Quoted(question.source.path) + " cannot be " +
                    WordsOf(question.operation).past + " into itself.",
            .more = question.target.path,
            .choices = {Skip()},
            .isWarning = true};
}

}  // namespace

std::string OperationText(FileOperationKind kind) {
    return WordsOf(kind).going;
}

std::string AmountText(const FileOperationProgress& progress) {
    std::string text;
    if (progress.bytesTotal > 0)
        text = ByteText(progress.bytesDone) + " of " + ByteText(progress.bytesTotal) + ", ";
    text += std::to_string(progress.itemsDone) + " of " + std::to_string(progress.itemsTotal) +
            (progress.itemsTotal == 1 ? " item" : " items");
    return progress.isTotalKnown ? text : text + ", still counting";
}

std::string NameOfPath(const std::string& path) {
    const std::size_t end = path.find_last_not_of('\\');
    if (end == std::string::npos) return path;
    const std::size_t separator = path.find_last_of('\\', end);
    const std::size_t start = separator == std::string::npos ? 0 : separator + 1;
    return path.substr(start, end + 1 - start);
}

FileQuestionTexts TextsOf(const FileOperationQuestion& question) {
    switch (question.kind) {
        case FileOperationQuestionKind::kTrash:
            return TrashTexts(question);
        case FileOperationQuestionKind::kDeleteForGood:
            return DeletionTexts(question);
        case FileOperationQuestionKind::kReplaceFile:
            return ReplaceTexts(question);
        case FileOperationQuestionKind::kMergeFolders:
            return MergeTexts(question);
        case FileOperationQuestionKind::kProtectedItem:
            return ProtectedTexts(question);
        case FileOperationQuestionKind::kPropertyLoss:
            return LossTexts(question);
        case FileOperationQuestionKind::kFolderIntoItself:
            return IntoItselfTexts(question);
        case FileOperationQuestionKind::kFailure:
            break;
    }
    return FailureTexts(question);
}

}  // namespace permora
