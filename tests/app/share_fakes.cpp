#include "tests/app/share_fakes.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "platform/api/memory.h"
#include "platform/api/shares.h"
#include "security/text_conversion.h"

namespace {

using permora::test::FakeShare;

permora::test::ShareFakes* fakes = nullptr;

// A record with room behind it for two texts.
template <class Record>
struct Block {
    Record record;
    WCHAR name[100];
    WCHAR path[200];
};

template <class Record>
Block<Record>* MakeBlock(const FakeShare& share) {
    auto* block = static_cast<Block<Record>*>(LocalAlloc(LPTR, sizeof(Block<Record>)));
    std::basic_string<WCHAR> wide;
    permora::AnsiToWide(share.name, wide);
    std::ranges::copy(wide, block->name);
    permora::AnsiToWide(share.path, wide);
    std::ranges::copy(wide, block->path);
    return block;
}

auto Find(LPCWSTR name) {
    return std::ranges::find(fakes->shares, permora::WideToAnsi(name), &FakeShare::name);
}

}  // namespace

extern "C" {

NET_API_STATUS __wrap_NetShareEnum(LPWSTR, DWORD level, LPBYTE* buffer, DWORD, LPDWORD read, LPDWORD total,
                                   LPDWORD resume) {
    if (level != 1) return ERROR_INVALID_LEVEL;
    *buffer = nullptr;
    *read = 0;
    *total = static_cast<DWORD>(fakes->shares.size());
    if (*resume < fakes->shares.size()) {
        auto* block = MakeBlock<SHARE_INFO_1>(fakes->shares[*resume]);
        block->record.shi1_netname = block->name;
        *buffer = reinterpret_cast<LPBYTE>(block);
        *read = 1;
        ++*resume;
    } else if (fakes->listError != NERR_Success) {
        return fakes->listError;
    }
    return *resume < fakes->shares.size() || fakes->listError != NERR_Success ? ERROR_MORE_DATA
                                                                              : NERR_Success;
}

NET_API_STATUS __wrap_NetShareGetInfo(LPWSTR, LPWSTR name, DWORD level, LPBYTE* buffer) {
    const auto share = Find(name);
    if (share == fakes->shares.end()) return NERR_NetNameNotFound;
    if (share->readError != NERR_Success) return share->readError;
    if (level != 2) return ERROR_INVALID_LEVEL;
    auto* block = MakeBlock<SHARE_INFO_2>(*share);
    block->record.shi2_netname = block->name;
    block->record.shi2_path = block->path;
    *buffer = reinterpret_cast<LPBYTE>(block);
    return NERR_Success;
}

NET_API_STATUS __wrap_NetShareAdd(LPWSTR, DWORD level, LPBYTE record, LPDWORD) {
    if (level != 502) return ERROR_INVALID_LEVEL;
    SHARE_INFO_502 share{};
    std::memcpy(&share, record, sizeof share);
    fakes->shares.push_back(
        {permora::WideToAnsi(share.shi502_netname), permora::WideToAnsi(share.shi502_path)});
    return NERR_Success;
}

NET_API_STATUS __wrap_NetShareDel(LPWSTR, LPWSTR name, DWORD reserved) {
    const auto share = Find(name);
    if (reserved != 0 || share == fakes->shares.end()) return NERR_NetNameNotFound;
    if (share->removeError != NERR_Success) return share->removeError;
    fakes->shares.erase(share);
    return NERR_Success;
}

}  // extern "C"

namespace permora::test {

ShareFakes::ShareFakes() {
    fakes = this;
}

ShareFakes::~ShareFakes() {
    fakes = nullptr;
}

}  // namespace permora::test
