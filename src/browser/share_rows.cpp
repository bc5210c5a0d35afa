#include "browser/share_rows.h"

#include <array>

#include "platform/api/shares.h"
#include "platform/resources.h"
#include "resources/resource_ids.h"
#include "security/text_conversion.h"

namespace permora {
namespace {

constexpr std::array<unsigned int, 2> kShareImages = {IDI_DRIVE_NETWORK, IDI_SHARED_FOLDER};
constexpr int kShareImage = 1;

// The shares of the machine's own services.
constexpr const char* kServiceShare = "IPC$";

// The result of one call for shares.
class ShareRecords {
  public:
    // The shares from `resume` on, which becomes the start of the next call.
    NET_API_STATUS Read(DWORD& resume) {
        LPBYTE block = nullptr;
        DWORD total = 0;
        const NET_API_STATUS status =
            NetShareEnum(nullptr, 1, &block, MAX_PREFERRED_LENGTH, &count, &total, &resume);
        records.reset(reinterpret_cast<SHARE_INFO_1*>(block));
        return status;
    }
    std::span<const SHARE_INFO_1> Shares() const { return {records.get(), count}; }

  private:
    UniqueNetworkBuffer<SHARE_INFO_1> records;
    DWORD count = 0;
};

// The folder that is shared under a name.
NET_API_STATUS ReadSharePath(LPWSTR name, std::string& path) {
    LPBYTE block = nullptr;
    const NET_API_STATUS status = NetShareGetInfo(nullptr, name, 2, &block);
    const UniqueNetworkBuffer<SHARE_INFO_2> record(reinterpret_cast<SHARE_INFO_2*>(block));
    if (status == NERR_Success) path = WideToAnsi(record->shi2_path);
    return status;
}

}  // namespace

std::span<const unsigned int> ShareRows::Images() const {
    return kShareImages;
}

bool ShareRows::Offers(unsigned int command) const {
    return command == ID_DELETE;
}

Outcome ShareRows::List(const RowOptions& /*options*/, RowReceiver& receiver) {
    int count = 0;
    DWORD resume = 0;
    NET_API_STATUS status = ERROR_MORE_DATA;
    while (status == ERROR_MORE_DATA) {
        ShareRecords records;
        status = records.Read(resume);
        if (status != NERR_Success && status != ERROR_MORE_DATA) return {status, Step::kEnumerateShares};
        for (const SHARE_INFO_1& share : records.Shares()) {
            Row row{.name = WideToAnsi(share.shi1_netname), .image = kShareImage, .position = count};
            if (row.name == kServiceShare) continue;
            // By its wide name, since the row's code page may not have all its characters.
            static_cast<void>(ReadSharePath(share.shi1_netname, row.type));  // else it stays empty
            if (!receiver.Add(row)) return {ERROR_NOT_ENOUGH_MEMORY};
            ++count;
        }
    }
    receiver.ShowCount(count);
    return {};
}

Outcome ShareRows::FindPath(const std::string& name, std::string& path) const {
    std::basic_string<WCHAR> wideName;
    return {ReadSharePath(AnsiToWide(name, wideName), path)};
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
