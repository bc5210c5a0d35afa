// The list of the wizard's deletion page without its window: rows about files and folders, in the order of
// the engine.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "deletion/secure_delete.h"

namespace permora {

// A new text for a row, or a new row at the end.
struct StatusChange {
    int row;
    std::string text;
};

// The engine's thread writes rows; another thread takes them at any time.
class DeletionStatus : public SecureDeleteHost {
  public:
    using SecureDeleteHost::SecureDeleteHost;

    void BeginDeleting(const std::string& name) override;
    // From here on, rows are written only while no stop is requested.
    void Deleted(const std::string& name) override;
    void Failed(const Outcome& failure) override;
    // Always false; the row below the file's gives the reason.
    bool MayOverwrite(const std::string& name, const std::vector<OverwriteObstacle>& obstacles) override;
    // Writes an empty row and the last one.
    void WriteTotal();

    // The changes since the last call, in order. Any thread.
    std::vector<StatusChange> TakeChanges();

  protected:
    // Called on the engine's thread when TakeChanges, having had nothing to take, has something.
    virtual void OnChanges() = 0;

  private:
    void Append(const std::string& text) { Write(rowCount++, text); }
    void Write(int row, const std::string& text);

    int rowCount = 0;
    int deletedCount = 0;

    std::mutex mutex;
    std::vector<StatusChange> changes;  // under the mutex
};

}  // namespace permora
