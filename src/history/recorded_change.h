// A change while it is being made.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "history/database.h"
#include "history/history.h"

namespace permora {

class ChangeWriter;
struct RecordRequest;

// Writes records through a connection of its own, which it opens at the first one. Threads that record at the
// same time share one transaction, and with it one wait for the disk.
class RecordedChange : public Change {
  public:
    RecordedChange(std::string databasePath, ChangeKind changeKind, std::int64_t undoneChange);
    ~RecordedChange() override;

    DWORD BeginTop(const ChangedTop& top, std::uint64_t& number) override;
    DWORD Record(std::uint64_t top, std::span<const DescriptorChange> batch) override;
    DWORD Error() const override;
    void End() override;
    std::int64_t Number() const override;

  private:
    DWORD WriteAll(const std::vector<RecordRequest*>& requests);

    const std::string path;
    const ChangeKind kind;
    const std::int64_t undoes;

    mutable std::mutex guard;  // of what follows
    std::condition_variable written;
    std::vector<ChangedTop> tops;
    std::unordered_map<std::string, std::uint64_t> topNumbers;  // by path and mark
    std::vector<RecordRequest*> waiting;
    bool isWriting = false;
    DWORD error = ERROR_SUCCESS;
    std::int64_t number = 0;

    std::unique_ptr<ChangeWriter> writer;  // of the thread that writes
};

}  // namespace permora
