#include "platform/windows/domain.h"

#include <algorithm>
#include <array>

#include "platform/api/network.h"
#include "platform/resources.h"
#include "platform/windows/code_page.h"

namespace permora {
namespace {

// How the system says that no domain controller can be reached.
constexpr std::array<DWORD, 6> kUnreachable = {ERROR_NO_SUCH_DOMAIN,     ERROR_NO_LOGON_SERVERS,
                                               ERROR_BAD_NETPATH,        ERROR_TRUSTED_RELATIONSHIP_FAILURE,
                                               RPC_S_SERVER_UNAVAILABLE, NERR_DCNotFound};

}  // namespace

DomainState Domain::State() {
    const std::lock_guard lock(mutex);
    FindOut();
    return state;
}

std::uint64_t Domain::News() {
    const std::lock_guard lock(mutex);
    return news;
}

DWORD Domain::HasAnswered(DWORD error) {
    const std::lock_guard lock(mutex);
    FindOut();
    const bool isUnreachable = std::ranges::find(kUnreachable, error) != kUnreachable.end();
    if (state.availability != DomainAvailability::kNone && (isUnreachable || error == ERROR_SUCCESS)) {
        const auto now = isUnreachable ? DomainAvailability::kOffline : DomainAvailability::kOnline;
        if (state.availability != now) {
            state.availability = now;
            state.since = std::chrono::system_clock::now();
            ++news;
        }
    }
    return isUnreachable ? kDomainOffline : error;
}

void Domain::FindOut() {
    if (isKnown) return;
    LPWSTR name = nullptr;
    NETSETUP_JOIN_STATUS status = NetSetupUnknownStatus;
    if (NetGetJoinInformation(nullptr, &name, &status) != NERR_Success) return;
    const UniqueNetworkBuffer<WCHAR> buffer(name);
    isKnown = true;
    if (status != NetSetupDomainName || ToAnsi(name, state.domain) != ERROR_SUCCESS) return;
    state.availability = DomainAvailability::kOnline;
}

Domain& TheDomain() {
    static Domain domain;
    return domain;
}

}  // namespace permora
