// A library in the place of winbind's, with a domain EXAMPLE of a few accounts, that answers slowly, not at
// all, or with what cannot be. Programs that link it get it wherever libwbclient.so.0 is opened.
#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>

namespace permora::test {

enum class FakeMood {
    kHealthy,
    kFrozen,         // calls block until the mood is another one
    kGone,           // no winbindd: fails at once
    kNoController,   // what it has no answer for is "not found"; lists are empty, groups fewer
    kKeptNobody,     // healthy, but "not found" for what it has kept that nobody has
    kKeptGaps,       // no controller, but an answer for every number that it has been asked for before
    kNullAnswers,    // success and counts, but null pointers
    kDamagedSids,    // with more parts than a SID has
    kDamagedNames,   // control characters, separators, nothing
    kForeignGroups,  // groups of somebody else
    kUnmappedIds,    // numbers that mean nobody
};

struct FakeWinbind {
    std::atomic<FakeMood> mood{FakeMood::kHealthy};
    std::atomic<int> milliseconds{0};  // that each call takes
    std::atomic<int> calls{0};
    std::atomic<bool> isOld{false};         // without the field that newer libraries have
    std::atomic<int> healthyCallsLeft{-1};  // then kNoController; negative: no matter
};

// The one of the process.
__attribute__((visibility("default"))) FakeWinbind& TheFakeWinbind();

}  // namespace permora::test
