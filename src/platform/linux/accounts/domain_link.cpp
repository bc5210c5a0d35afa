#include "platform/linux/accounts/domain_link.h"

#include <algorithm>
#include <random>
#include <thread>

#include "platform/linux/accounts/account_names.h"
#include "platform/linux/samba/samba_places.h"

namespace permora::host {

namespace {

// How long an offline domain is left alone. A call that fails may itself have taken a minute.
constexpr std::chrono::seconds kProbePause{15};
// What a healthy winbind needs a hundredth of.
constexpr std::chrono::milliseconds kFindOutLimit = kLookupTime;

}  // namespace

DomainLink::RunningCall::RunningCall(DomainLink& owner, std::chrono::milliseconds limit) : link(owner) {
    const std::lock_guard lock(link.mutex);
    place = link.running.insert(link.running.end(), {SteadyClock::now() + limit});
}

DomainLink::RunningCall::~RunningCall() {
    const std::lock_guard lock(link.mutex);
    link.running.erase(place);
}

bool DomainLink::RunningCall::IsOverLimit() const {
    return place->isOver;
}

DomainAvailability DomainLink::Availability(const Patience& patience) {
    constexpr std::chrono::milliseconds kSlice{2};
    for (;;) {
        const DomainAvailability availability = State().availability;
        if (availability != DomainAvailability::kUnknown || patience.IsOver()) return availability;
        std::this_thread::sleep_for(kSlice);
    }
}

DomainState DomainLink::State() {
    if (TheWinbindLibrary() == nullptr) return {};
    CheckRunningCalls();
    const std::lock_guard lock(mutex);
    BeginToFindOut();
    if (state.availability == DomainAvailability::kOffline && !isProbing && SteadyClock::now() >= nextProbe)
        isProbing = RunInBackground([this] { Probe(); });
    return state;
}

std::uint64_t DomainLink::News() {
    State();
    const std::lock_guard lock(mutex);
    return news;
}

void DomainLink::GiveUp() {
    const std::lock_guard lock(mutex);
    for (Limits& limits : running)
        limits.isOver = true;
    if (state.availability == DomainAvailability::kOnline) SetAvailability(DomainAvailability::kOffline);
}

void DomainLink::Tell() {
    const std::lock_guard lock(mutex);
    ++news;
}

std::vector<WinbindDomain> DomainLink::Domains() {
    const std::lock_guard lock(mutex);
    return domains;
}

WinbindDomain DomainLink::OwnDomain() {
    const std::lock_guard lock(mutex);
    const auto own = std::ranges::find_if(domains, &WinbindDomain::isOwn);
    return own != domains.end() ? *own : WinbindDomain{};
}

bool DomainLink::HasLatelyFailed(std::chrono::seconds period) {
    const std::lock_guard lock(mutex);
    return lastFailure != SteadyClock::time_point() && SteadyClock::now() - lastFailure < period;
}

std::uint32_t DomainLink::UnusedRelativeId() {
    // Up there they are never given out, and of so many none is asked for twice.
    static thread_local std::minstd_rand kRandom(std::random_device{}());
    return static_cast<std::uint32_t>(0xC0000000U + kRandom() % 0x3FFFFFFFU);
}

WinbindAnswer DomainLink::Verify(Winbind& winbind, const nt::Sid& domain) {
    std::vector<WinbindName> names;
    const WinbindAnswer answer = winbind.FindNames(domain, {UnusedRelativeId()}, names);
    // A domain that exists has an answer for every number: "not found" is the one that cannot be reached.
    return answer == WinbindAnswer::kNotFound ? WinbindAnswer::kFailed : answer;
}

bool DomainLink::MayAsk() {
    return State().availability == DomainAvailability::kOnline;
}

void DomainLink::CheckRunningCalls(SteadyClock::time_point now) {
    const std::lock_guard lock(mutex);
    bool isAnyOver = false;
    for (Limits& limits : running) {
        isAnyOver |= !limits.isOver && now >= limits.end;
        limits.isOver |= now >= limits.end;
    }
    const bool isOnline = state.availability == DomainAvailability::kOnline;
    if (isAnyOver && isOnline) SetAvailability(DomainAvailability::kOffline);
}

void DomainLink::Ended(const RunningCall& ended, WinbindAnswer answer) {
    CheckRunningCalls();
    const std::lock_guard lock(mutex);
    const bool isOnline = state.availability == DomainAvailability::kOnline;
    if (answer == WinbindAnswer::kFailed && isOnline) SetAvailability(DomainAvailability::kOffline);
    // Slow, but there. "Not found" would be no sign: winbind says so too when nobody answered.
    if (answer == WinbindAnswer::kFound && ended.IsOverLimit() && !isOnline)
        SetAvailability(DomainAvailability::kOnline);
}

void DomainLink::BeginToFindOut() {
    if (state.availability != DomainAvailability::kUnknown) return;
    if (!isFindingOut) {
        findingOutSince = SteadyClock::now();
        isFindingOut = RunInBackground([this] { FindOut(); });
        if (!isFindingOut) SetAvailability(DomainAvailability::kOffline);
    } else if (!isGivenUp && SteadyClock::now() - findingOutSince > kFindOutLimit) {
        isGivenUp = RunInBackground([this] { Learn(WinbindAnswer::kFailed, {}); });
    }
}

void DomainLink::FindOut() {
    std::vector<WinbindDomain> found;
    WinbindAnswer answer = WinbindAnswer::kFailed;
    if (Winbind* const winbind = Winbind::OfThisThread()) answer = winbind->ListDomains(found);
    Learn(answer, std::move(found));
}

void DomainLink::Probe() {
    std::vector<WinbindDomain> found;
    WinbindAnswer answer = WinbindAnswer::kFailed;
    if (Winbind* const winbind = Winbind::OfThisThread()) {
        answer = winbind->ListDomains(found);
        const auto own = std::ranges::find_if(found, &WinbindDomain::isOwn);
        if (answer == WinbindAnswer::kFound && own != found.end()) {
            // Makes winbind look for a controller again where it has given up.
            answer = winbind->Ping(own->name);
            if (answer == WinbindAnswer::kFound) answer = Verify(*winbind, own->sid);
            own->isOffline = answer != WinbindAnswer::kFound;
        }
    }
    Learn(answer, std::move(found));
    const std::lock_guard lock(mutex);
    isProbing = false;
    nextProbe = SteadyClock::now() + kProbePause;
}

void DomainLink::Learn(WinbindAnswer answer, std::vector<WinbindDomain> found) {
    const auto own = std::ranges::find_if(found, &WinbindDomain::isOwn);
    if (answer == WinbindAnswer::kFound && own != found.end()) {
        const std::lock_guard lock(mutex);
        state.domain = own->name;
        const bool isOffline = own->isOffline;
        domains = std::move(found);
        SetAvailability(isOffline ? DomainAvailability::kOffline : DomainAvailability::kOnline);
        return;
    }
    // Without winbind only Samba's configuration says whether there is a domain.
    const SambaPlaces& samba = ThisMachinesSambaPlaces();
    const bool isMember = answer != WinbindAnswer::kFound && samba.isInDomain;
    const std::lock_guard lock(mutex);
    if (state.domain.empty()) state.domain = isMember ? InUpperCase(samba.workgroup) : std::string();
    SetAvailability(isMember ? DomainAvailability::kOffline : DomainAvailability::kNone);
}

void DomainLink::SetAvailability(DomainAvailability availability) {
    if (availability == DomainAvailability::kOffline) lastFailure = SteadyClock::now();
    if (state.availability == availability) return;
    state.availability = availability;
    state.since = {};
    if (availability == DomainAvailability::kOffline) {
        state.since = std::chrono::system_clock::now();
        nextProbe = SteadyClock::now() + kProbePause;
    }
    ++news;
}

}  // namespace permora::host
