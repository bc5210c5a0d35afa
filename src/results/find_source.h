// What a search over trees finds, for a window of results: the same as the terminal program's "find".
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "results/result_source.h"
#include "results/result_tops.h"
#include "survey/entry_search.h"

namespace permora {

class FindSource : public ResultSource {
  public:
    // `searched` names the account, or the accounts that no longer exist, in the title.
    FindSource(std::vector<ResultTop> searchedTops, const EntryCriteria& searchedFor, std::string searched);
    ~FindSource() override;

    std::string Title() const override;
    std::vector<ResultPage*> Pages() override;  // what was found, and what could not be searched
    void Run(const std::atomic<bool>& isStopped) override;
    void TakeNews() override;
    std::string Status() const override;
    std::span<const SaveFormat> Formats() const override;
    DWORD Write(const SaveFormat& format, SavedOutput& output) override;

  private:
    class FoundPage;
    class MissedPage;
    class Walk;
    struct FoundTexts;
    struct News;
    enum class State : std::uint8_t { kRunning, kDone, kStopped };

    void AddMissed(std::size_t top, std::string path, TreeObjectKind kind, std::string reason);

    const std::vector<ResultTop> tops;
    const EntryCriteria criteria;
    const std::string title;
    EntrySearch search;  // the worker's
    std::unique_ptr<News> news;
    std::unique_ptr<FoundPage> found;
    std::unique_ptr<MissedPage> missed;
    std::atomic<std::size_t> objects = 0;
    std::atomic<State> state = State::kRunning;
};

}  // namespace permora
