#include "framework/file_operation_texts.h"

#include <array>
#include <cstdio>

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
    FileQuestionTexts texts;
    texts.text =
        question.itemCount == 1
            ? "Do you want to move " + Quoted(question.source.path) + " to the trash?"
            : "Do you want to move these " + std::to_string(question.itemCount) + " items to the trash?";
    texts.choices = {Yes("&Move to Trash")};
    return texts;
}

FileQuestionTexts DeletionTexts(const FileOperationQuestion& question) {
    FileQuestionTexts texts;
    texts.text = "Do you want to delete " + Quoted(question.source.path) + " for good?";
    texts.more = question.source.isFolder
                     ? "No trash can take it. All that is in the folder is deleted and cannot be restored."
                     : "No trash can take it, and it cannot be restored.";
    texts.choices = {Yes("&Delete"), Skip()};
    texts.forAll = "Do the same with &all that no trash can take";
    texts.isWarning = true;
    return texts;
}

FileQuestionTexts ReplaceTexts(const FileOperationQuestion& question) {
    FileQuestionTexts texts;
    texts.text = "There is a file " + Quoted(question.target.path) + " already. Do you want to replace it?";
    texts.choices = {Yes("&Replace"), Skip()};
    texts.forAll = "Do the same with &all files that exist already";
    texts.targetCaption = "The file that is there:";
    texts.sourceCaption = "The file that would replace it:";
    texts.isWarning = true;
    return texts;
}

FileQuestionTexts MergeTexts(const FileOperationQuestion& question) {
    FileQuestionTexts texts;
    texts.text =
        "There is a folder " + Quoted(question.target.path) + " already. Do you want to merge the two?";
    texts.more = "You are asked about files that are in both.";
    texts.choices = {Yes("&Merge"), Skip()};
    texts.forAll = "Do the same with &all folders that exist already";
    texts.targetCaption = "The folder that is there:";
    texts.sourceCaption = "The folder whose contents would be added:";
    return texts;
}

FileQuestionTexts ProtectedTexts(const FileOperationQuestion& question) {
    // Copying changes only an object of the same name.
    const bool isReplaced = question.operation == FileOperationKind::kCopy;
    FileQuestionTexts texts;
    texts.text = Quoted(question.source.path) + " is read-only or belongs to the system. Do you want to " +
                 (isReplaced ? "replace" : WordsOf(question.operation).verb) + " it all the same?";
    texts.choices = {Yes("&Yes"), Skip()};
    texts.forAll = "Do the same with &all that is protected";
    texts.isWarning = true;
    return texts;
}

FileQuestionTexts LossTexts(const FileOperationQuestion& question) {
    FileQuestionTexts texts;
    texts.text = "The volume cannot hold some attributes or streams of " + Quoted(question.source.path) +
                 ". Do you want to " + WordsOf(question.operation).verb + " it without them?";
    texts.more = SystemMessageLine(question.error);
    texts.choices = {Yes("&Continue"), Skip()};
    texts.forAll = "Do the same with &all that would lose something";
    texts.isWarning = true;
    return texts;
}

FileQuestionTexts FailureTexts(const FileOperationQuestion& question) {
    FileQuestionTexts texts;
    texts.text = Quoted(question.source.path) + " could not be " + WordsOf(question.operation).past + '.';
    texts.more = SystemMessageLine(question.error) + "\n\n" + question.source.path;
    if (question.mayRetry)
        texts.choices.push_back({"&Try Again", FileOperationAnswer::kRetry, FileOperationAnswer::kRetry});
    texts.choices.push_back(Skip());
    texts.forAll = "Skip &all that fails for the same reason";
    texts.isWarning = true;
    return texts;
}

FileQuestionTexts IntoItselfTexts(const FileOperationQuestion& question) {
    FileQuestionTexts texts;
    texts.text = "The folder " + Quoted(question.source.path) + " cannot be " +
                 WordsOf(question.operation).past + " into itself.";
    texts.more = question.target.path;
    texts.choices = {Skip()};
    texts.isWarning = true;
    return texts;
}

}  // namespace

std::string OperationText(FileOperationKind kind) {
    return WordsOf(kind).going;
}

std::string ByteText(ULONGLONG bytes) {
    constexpr std::array kUnits = {"KB", "MB", "GB", "TB"};
    constexpr double kStep = 1024;
    constexpr double kRoundsUp = kStep - 0.05;  // would be written as "1024.0"
    if (bytes < 1024) return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
    double amount = static_cast<double>(bytes) / kStep;
    std::size_t unit = 0;
    for (; amount >= kRoundsUp && unit + 1 < kUnits.size(); ++unit)
        amount /= kStep;
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%.1f %s", amount, kUnits.at(unit));
    return text.data();
}

std::string AmountText(const FileOperationProgress& progress) {
    std::string text;
    if (progress.bytesTotal > 0)
        text = ByteText(progress.bytesDone) + " of " + ByteText(progress.bytesTotal) + ", ";
    text += std::to_string(progress.itemsDone) + " of " + std::to_string(progress.itemsTotal) +
            (progress.itemsTotal == 1 ? " item" : " items");
    return progress.isTotalKnown ? text : text + ", still counting";
}

std::string TimeLeftText(std::optional<std::chrono::seconds> left) {
    constexpr long long kMinute = 60;
    constexpr long long kHour = 60 * kMinute;
    constexpr long long kStep = 5;
    if (!left) return "Being estimated";
    const long long seconds = left->count();
    const auto roundedUp = [seconds](long long unit) { return (seconds + unit - 1) / unit; };
    if (seconds <= kStep) return "A few seconds";
    if (seconds <= kMinute - kStep) return "About " + std::to_string(roundedUp(kStep) * kStep) + " seconds";
    if (seconds <= kMinute) return "About 1 minute";
    if (seconds <= 2 * kHour) return "About " + std::to_string(roundedUp(kMinute)) + " minutes";
    return "About " + std::to_string(roundedUp(kHour)) + " hours";
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
