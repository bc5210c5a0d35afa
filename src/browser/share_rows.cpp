#include "browser/share_rows.h"

#include <array>
#include <utility>
#include <vector>

#include "resources/resource_ids.h"
#include "security/text_conversion.h"
#include "shares/share_list.h"

namespace permora {
namespace {

constexpr std::array<unsigned int, 2> kShareImages = {IDI_DRIVE_NETWORK, IDI_SHARED_FOLDER};
constexpr int kShareImage = 1;

// The shares of the machine's own services.
constexpr const char* kServiceShare = "IPC$";

}  // namespace

std::span<const unsigned int> ShareRows::Images() const {
    return kShareImages;
}

bool ShareRows::Offers(unsigned int command) const {
    return command == ID_DELETE;
}

Outcome ShareRows::List(const RowOptions& /*options*/, RowReceiver& receiver) {
    std::vector<ListedShare> shares;
    const NET_API_STATUS status = ListShares(shares);
    int count = 0;
    for (ListedShare& share : shares) {
        if (share.name == kServiceShare) continue;
        Row row{.name = std::move(share.name),
                .type = std::move(share.path),
                .image = kShareImage,
                .position = count};
        if (!receiver.Add(std::move(row))) return {ERROR_NOT_ENOUGH_MEMORY};
        ++count;
    }
    if (status != NERR_Success) return {status, Step::kEnumerateShares};
    receiver.ShowCount(count);
    return {};
}

Outcome ShareRows::FindPath(const std::string& name, std::string& path) const {
    return {FindSharePath(name, path)};
}

Outcome RemoveShares(std::span<const std::string> names) {
    std::basic_string<WCHAR> wideName;
    for (const std::string& name : names) {
        const NET_API_STATUS status = NetShareDel(nullptr, AnsiToWide(name, wideName), 0);
        if (status != NERR_Success) return {status, Step::kRemoveShares};
    }
    return {};
}

}  // namespace permora
