// A host of the deletion that keeps what it is told.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "deletion/secure_delete.h"

namespace permora {

inline bool operator==(const DeletionFailure& one, const DeletionFailure& other) {
    return one.step == other.step && one.name == other.name && one.error == other.error;
}

inline void PrintTo(const DeletionFailure& failure, std::ostream* stream) {
    *stream << failure.name << ": step " << static_cast<int>(failure.step) << ", error " << failure.error;
}

namespace test {

class RecordingHost : public SecureDeleteHost {
  public:
    RecordingHost() : SecureDeleteHost(isStopping) {}

    void BeginEntry(const std::string& name) override {
        entries.push_back(name);
        if (onEntry) onEntry(name);
    }
    void Deleted(const std::string& name) override { deleted.push_back(name); }
    void Failed(const DeletionFailure& failure) override { failures.push_back(failure); }
    FileScrutiny Scrutiny() const override { return scrutiny; }
    bool MayOverwrite(const std::string& /*name*/, const std::vector<OverwriteObstacle>& found) override {
        obstacles = found;
        return false;
    }

    // Deletes an object of the current directory.
    void Delete(const std::string& name) {
        FolderHandle folder;
        if (FolderHandle::OpenCurrent(folder) != 0) return;
        SecureDeleteItem(*this, folder, HoldDeletionItem(folder, name));
        seclusion.End();
    }

    std::atomic<bool> isStopping = false;
    std::function<void(const std::string&)> onEntry;
    std::vector<std::string> entries;
    std::vector<std::string> deleted;
    std::vector<DeletionFailure> failures;
    FileScrutiny scrutiny = FileScrutiny::kOpeners;
    std::vector<OverwriteObstacle> obstacles;  // of the file that was refused last
};

}  // namespace test
}  // namespace permora
