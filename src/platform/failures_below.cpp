#include "platform/failures_below.h"

#include <algorithm>
#include <iterator>

#include "platform/volume_loss.h"

namespace permora {

// The folder itself comes first where the volume was lost. Others may have failed for other reasons.
std::pair<const std::string, DWORD> FailuresBelow::ToTell() const {
    const auto isLoss = [](const auto& failure) { return IsVolumeLost(failure.second); };
    const auto first = named.begin();
    if (!isLoss(*first) || !first->first.empty()) return *first;
    const auto last = std::find_if(std::next(first), named.end(), isLoss);
    return last != named.end() ? *last : *first;
}

void FailuresBelow::Add(const std::string& path, DWORD error) {
    ++count;
    if (named.size() == kMostNamed && path > named.rbegin()->first) return;
    named.emplace(path, error);
    if (named.size() > kMostNamed) named.erase(std::prev(named.end()));
}

}  // namespace permora
