// What the wizard's deletion page lists, without its window: rows on files and folders in the order in which
// the engine comes to them.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "deletion/secure_delete.h"

namespace permora {

// A text for a row, which is new when there was none at that place.
struct StatusChange {
    int row;
    std::string text;
};

// The engine's thread writes rows; another one takes them at its own pace.
class DeletionStatus : public SecureDeleteHost {
  public:
    using SecureDeleteHost::SecureDeleteHost;

    void BeginDeleting(const std::string& name) override;
    // From here on rows are written only while no stop is requested.
    void Deleted(const std::string& name) override;
    void Failed(const DeletionFailure& failure) override;
    // Never; the row below the file's tells why.
    bool MayOverwrite(const std::string& name, const std::vector<OverwriteObstacle>& obstacles) override;
    // The last row, an empty one before it.
    void WriteTotal();

    // What was written since the last call, in order. Any thread.
    std::vector<StatusChange> TakeChanges();

  protected:
    // On the engine's thread: there is something to take, where there was nothing before.
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
