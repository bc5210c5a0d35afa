// Texts of file operations: their progress, and their questions with the answers.
#pragma once

#include <string>
#include <vector>

#include "platform/file_operation_presenter.h"

namespace permora {

// "Copying" and so on.
std::string OperationText(FileOperationKind kind);
// "12.3 MB of 4.0 GB, 7 of 123 items". Where nothing has bytes only the items.
std::string AmountText(const FileOperationProgress& progress);
// The last name of a path.
std::string NameOfPath(const std::string& path);

struct FileQuestionChoice {
    std::string text;  // of the button, with its mnemonic
    FileOperationAnswer answer;
    FileOperationAnswer answerForAll;  // with the box for all ticked
};

struct FileQuestionTexts {
    std::string text;
    std::string more{};                         // below, less prominent; may be empty
    std::vector<FileQuestionChoice> choices{};  // beside cancelling, which is always possible
    std::string forAll{};                       // of the box; empty: there is none
    // Over the two objects, with which they are shown; empty: they are not.
    std::string targetCaption{};
    std::string sourceCaption{};
    bool isWarning = false;
};

FileQuestionTexts TextsOf(const FileOperationQuestion& question);

}  // namespace permora
