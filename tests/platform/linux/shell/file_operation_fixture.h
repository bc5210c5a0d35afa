// The shell's file operations with a user whose answers the test gives.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/shell.h"
#include "platform/file_operation_presenter.h"
#include "platform/host_path.h"
#include "tests/support/command.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {

using Answer = FileOperationAnswer;
using Question = FileOperationQuestionKind;

inline std::string Shown(const std::string& hostPath) {
    return PathFromArgument(hostPath.c_str());
}

class FileOperations : public testing::Test, public FileOperationPresenter, public FileOperationHost {
  protected:
    FileOperations() { thePresenters.fileOperations = this; }
    ~FileOperations() override { thePresenters.fileOperations = nullptr; }

    // Host paths. The code that the call returned.
    DWORD Run(UINT function, const std::vector<std::string>& sources, const std::string& target = {},
              FILEOP_FLAGS flags = FOF_ALLOWUNDO) {
        std::string from;
        for (const std::string& source : sources)
            from += Shown(source) + '\0';
        const std::string to = target.empty() ? "" : Shown(target) + '\0';
        SHFILEOPSTRUCTA operation{};
        operation.wFunc = function;
        operation.pFrom = from.c_str();
        operation.pTo = to.c_str();
        operation.fFlags = flags;
        asked.clear();
        const int result = SHFileOperationA(&operation);
        isAborted = operation.fAnyOperationsAborted != FALSE;
        for (auto& [kind, left] : answers)
            EXPECT_TRUE(left.empty()) << "question " << static_cast<int>(kind) << " was not asked";
        answers.clear();
        return static_cast<DWORD>(result);
    }

    // The answers to questions of one kind, in their order.
    std::map<Question, std::deque<Answer>> answers;
    std::vector<FileOperationQuestion> asked;
    std::function<void(const FileOperationQuestion&)> onAsk = [](auto&) {};
    std::function<bool(const FileOperationProgress&)> onReport = [](auto&) { return true; };
    bool isAborted = false;

  private:
    void Present(HWND /*owner*/, const std::string& /*title*/, FileOperationJob& job) override {
        job.Run(*this);
    }
    bool Report(const FileOperationProgress& progress) override { return onReport(progress); }
    Answer Ask(const FileOperationQuestion& question) override {
        asked.push_back(question);
        onAsk(question);
        std::deque<Answer>& left = answers[question.kind];
        if (left.empty()) {
            ADD_FAILURE() << "unexpected question " << static_cast<int>(question.kind) << ", error "
                          << question.error << ": " << question.source.path;
            return Answer::kCancel;
        }
        const Answer answer = left.front();
        left.pop_front();
        return answer;
    }
};

inline std::vector<std::string> NamesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename());
    return names;
}

inline void WriteFileText(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

// Everything below a folder, as "name" or "name=contents" or "name->target", in order.
inline std::vector<std::string> Below(const std::string& folder) {
    namespace fs = std::filesystem;
    std::vector<std::string> found;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        std::string name = entry.path().lexically_relative(folder);
        if (entry.is_symlink())
            name += "->" + fs::read_symlink(entry).string();
        else if (entry.is_regular_file())
            name += '=' + (entry.file_size() > 100 ? "large" : ReadWholeFile(entry.path()));
        found.push_back(std::move(name));
    }
    std::sort(found.begin(), found.end());
    return found;
}

}  // namespace permora::test
