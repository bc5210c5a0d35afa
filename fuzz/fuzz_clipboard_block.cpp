// The clipboard's block, which any program may have put there.
#include <cstdint>
#include <span>

#include "browser/clipboard_block.h"
#include "fuzz/file_transfers.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    permora::FileTransfer transfer;
    const char* fault = permora::ReadClipboardBlock({data, size}, transfer);
    permora::RequireSound(fault, transfer);
    return 0;
}
