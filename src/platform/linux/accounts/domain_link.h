// Whether winbind and the domain behind it answer, and every call to them. Calls run on threads of their own
// (waiting_calls.h) and are given up after a time of ours, since winbind's own limits are minutes.
//
// After one failure the domain counts as offline and nothing asks it any more, except one call in the
// background every now and then. Otherwise each row of a list would wait anew.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/accounts.h"
#include "platform/linux/accounts/waiting_calls.h"
#include "platform/linux/accounts/winbind.h"

namespace permora::host {

// What came of a call.
template <class Value>
struct Asked {
    WinbindAnswer answer = WinbindAnswer::kFailed;
    Value value{};
};

// Any thread. Lives as long as the process, since calls may outlive everything else.
class DomainLink {
  public:
    // Waits until it is known whether there is a domain. kUnknown only when the patience ends before.
    DomainAvailability Availability(const Patience& patience);
    // Never wait.
    DomainState State();
    std::uint64_t News();

    // Somebody has waited for an answer for as long as a call may take: the domain counts as offline, also
    // where the call itself began late.
    void GiveUp();

    // Announces that something that was shown as unknown may be known now.
    void Tell();

    // The domains that winbind knows, as of the last time that it was asked for them. Of kOnline and
    // kOffline.
    std::vector<WinbindDomain> Domains();
    // The one that the machine belongs to; without a name when winbind did not tell yet.
    WinbindDomain OwnDomain();
    // For how long the domain has answered, and whether it ever failed to.
    bool HasLatelyFailed(std::chrono::seconds period);

    // Calls `call` with the connection of its thread, and waits for the result. kFailed without a call while
    // the domain is offline or there is none. A call that takes longer than `limit` makes it offline, whoever
    // waits.
    template <class Value>
    Asked<Value> Ask(const Patience& patience, std::chrono::milliseconds limit,
                     std::function<WinbindAnswer(Winbind&, Value&)> call) {
        if (!MayAsk()) return {};
        // The limit counts from here: on a busy machine the thread begins late.
        const auto own = std::make_shared<RunningCall>(*this, limit);
        const auto result = CallWithin<Asked<Value>>(
            patience, [this, own, call = std::move(call)] { return Finish(*own, call); });
        // Who has waited for as long as the limit learns that the domain is offline, and not a moment later.
        constexpr std::chrono::milliseconds kMoment{50};
        if (!result) CheckRunningCalls(SteadyClock::now() + kMoment);
        return result ? *result : Asked<Value>{};
    }

    // The same on the calling thread, which must be one of RunInBackground.
    template <class Value>
    Asked<Value> Call(std::chrono::milliseconds limit,
                      const std::function<WinbindAnswer(Winbind&, Value&)>& call) {
        if (!MayAsk()) return {};
        const RunningCall own(*this, limit);
        return Finish(own, call);
    }

    // Whether the domain's controller itself answers now: asks it for something that winbind cannot have
    // kept.
    static WinbindAnswer Verify(Winbind& winbind, const nt::Sid& domain);
    // A number that no account has and winbind cannot have kept.
    static std::uint32_t UnusedRelativeId();

  private:
    struct Limits {
        SteadyClock::time_point end;
        bool isOver = false;
    };
    class RunningCall {
      public:
        RunningCall(DomainLink& owner, std::chrono::milliseconds limit);
        ~RunningCall();
        RunningCall(const RunningCall&) = delete;
        RunningCall& operator=(const RunningCall&) = delete;
        bool IsOverLimit() const;  // with the owner's lock held

      private:
        DomainLink& link;
        std::list<Limits>::iterator place;
    };

    template <class Value>
    Asked<Value> Finish(const RunningCall& own, const std::function<WinbindAnswer(Winbind&, Value&)>& call) {
        Asked<Value> asked;
        if (!MayAsk()) return asked;
        if (Winbind* const winbind = Winbind::OfThisThread()) asked.answer = call(*winbind, asked.value);
        Ended(own, asked.answer);
        return asked;
    }

    bool MayAsk();
    // As it is at this time.
    void CheckRunningCalls(SteadyClock::time_point now = SteadyClock::now());
    void Ended(const RunningCall& running, WinbindAnswer answer);
    void BeginToFindOut();  // with the lock held
    void FindOut();         // on a background thread, as is the next
    void Probe();
    void Learn(WinbindAnswer answer, std::vector<WinbindDomain> found);
    void SetAvailability(DomainAvailability availability);  // with the lock held

    std::mutex mutex;
    bool isFindingOut = false;
    bool isGivenUp = false;  // finding out
    bool isProbing = false;
    SteadyClock::time_point findingOutSince;
    SteadyClock::time_point nextProbe;
    SteadyClock::time_point lastFailure;
    DomainState state{DomainAvailability::kUnknown, {}, {}};
    std::vector<WinbindDomain> domains;
    std::uint64_t news = 0;
    std::list<Limits> running;
};

}  // namespace permora::host
