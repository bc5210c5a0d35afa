#include "shares/share_list.h"

#include <utility>

#include "platform/resources.h"
#include "security/text_conversion.h"

namespace permora {
namespace {

// By the server's own spelling, which the ANSI code page may not hold.
NET_API_STATUS ReadFacts(LPWSTR name, ShareFacts& facts) {
    LPBYTE block = nullptr;
    const NET_API_STATUS status = NetShareGetInfo(nullptr, name, 2, &block);
    const UniqueNetworkBuffer<SHARE_INFO_2> record(reinterpret_cast<SHARE_INFO_2*>(block));
    if (status != NERR_Success) return status;
    facts.path = WideToAnsi(record->shi2_path);
    facts.maxUses = record->shi2_max_uses;
    return NERR_Success;
}

}  // namespace

ShareFacts FactsOf(const SHARE_INFO_502& record) {
    return {WideToAnsi(record.shi502_netname), record.shi502_type, WideToAnsi(record.shi502_remark),
            WideToAnsi(record.shi502_path), record.shi502_max_uses};
}

NET_API_STATUS ListShares(std::vector<ListedShare>& shares) {
    DWORD resume = 0;
    NET_API_STATUS status = ERROR_MORE_DATA;
    while (status == ERROR_MORE_DATA) {
        LPBYTE block = nullptr;
        DWORD count = 0;
        DWORD total = 0;
        // Everybody may ask for level 1. Level 2 may need rights.
        status = NetShareEnum(nullptr, 1, &block, MAX_PREFERRED_LENGTH, &count, &total, &resume);
        const UniqueNetworkBuffer<SHARE_INFO_1> records(reinterpret_cast<SHARE_INFO_1*>(block));
        if (status != NERR_Success && status != ERROR_MORE_DATA) return status;
        for (DWORD i = 0; i < count; ++i) {
            const SHARE_INFO_1& record = records.get()[i];
            ListedShare share;
            share.name = WideToAnsi(record.shi1_netname);
            share.type = record.shi1_type;
            share.remark = WideToAnsi(record.shi1_remark);
            share.error = ReadFacts(record.shi1_netname, share);
            shares.push_back(std::move(share));
        }
    }
    return NERR_Success;
}

NET_API_STATUS FindSharePath(const std::string& name, std::string& path) {
    std::basic_string<WCHAR> wideName;
    ShareFacts facts;
    const NET_API_STATUS status = ReadFacts(AnsiToWide(name, wideName), facts);
    if (status == NERR_Success) path = std::move(facts.path);
    return status;
}

}  // namespace permora
