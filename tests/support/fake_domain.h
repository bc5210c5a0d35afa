// A domain EXAMPLE that answers as a test tells it, in the place of platform/accounts.h. Programs that link
// permora_fake_domain see this machine's accounts as they are, and the fake's beside them while there is one.
#pragma once

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <vector>

#include "platform/accounts.h"

namespace permora::test {

// At most one at a time. Any thread.
class FakeDomain {
  public:
    FakeDomain();
    ~FakeDomain();
    FakeDomain(const FakeDomain&) = delete;
    FakeDomain& operator=(const FakeDomain&) = delete;

    // "S-1-5-21-111-222-333-1103" for 1103.
    static std::string SidText(unsigned relativeId);

    void Add(unsigned relativeId, const std::string& name, SID_NAME_USE use = SidTypeUser);
    // Names that are known are "not yet" from now on, or are there again.
    void HoldNames(bool held);
    void SetState(DomainAvailability availability);
    // What a search ends with after all accounts were handed out.
    void EndSearchesWith(DWORD error) { searchError = error; }
    // What looking up a name of the domain, or a bare name that is not this machine's, ends with.
    void EndLookupsWith(DWORD error) { lookupError = error; }
    // Searches wait before their last accounts, and questions for groups before their answer, until these are
    // let go.
    void HoldAnswers(bool held) { areAnswersHeld = held; }
    bool IsSearching() const { return searches > 0; }

    // What questions for the groups of the domain's accounts are answered with.
    void SetGroups(DWORD error, const std::vector<unsigned>& relativeIds, GroupsOrigin origin);
    std::atomic<bool> mayAskExactly = true;

  private:
    friend struct FakeAnswers;
    void WaitForAnswers(const std::atomic<bool>& isStopped) const;

    mutable std::mutex mutex;
    std::vector<AccountRow> rows;
    DomainState state{DomainAvailability::kOnline, "EXAMPLE", {}};
    AccountGroups groups;
    DWORD groupsError = ERROR_NONE_MAPPED;
    bool areNamesHeld = false;
    std::atomic<std::uint64_t> news = 1;
    std::atomic<DWORD> searchError = ERROR_SUCCESS;
    std::atomic<DWORD> lookupError = ERROR_SUCCESS;
    std::atomic<bool> areAnswersHeld = false;
    std::atomic<int> searches = 0;
};

}  // namespace permora::test
