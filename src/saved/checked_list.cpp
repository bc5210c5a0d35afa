#include "saved/checked_list.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/api/errors.h"
#include "platform/system_message.h"
#include "saved/saved_folders.h"
#include "saved/sha256.h"

namespace permora {
namespace {

constexpr std::size_t kBlockBytes = std::size_t{1} << 20;

bool FailWith(DWORD error, SavedFault& fault) {
    fault = {0, SystemMessageLine(error)};
    return false;
}

std::string HashOf(const std::vector<char>& block) {
    Sha256 hash;
    hash.Add(std::string_view(block.data(), block.size()));
    return hash.Digest();
}

}  // namespace

// The next block, a whole one except at the end of the file, where it may be empty.
DWORD TwiceReadInput::Fill() {
    block.resize(kBlockBytes);
    std::size_t filled = 0;
    for (std::size_t count = 1; count != 0 && filled < kBlockBytes; filled += count) {
        const DWORD error = file.Read(std::span(block).subspan(filled), count);
        if (error != ERROR_SUCCESS) return error;
    }
    block.resize(filled);
    position = 0;
    std::string hash = HashOf(block);
    if (isFirstTime)
        hashes.push_back(std::move(hash));
    else
        hasChanged = blockCount >= hashes.size() || hashes[blockCount] != hash;
    if (hasChanged) return ERROR_REVISION_MISMATCH;
    ++blockCount;
    return ERROR_SUCCESS;
}

DWORD TwiceReadInput::Read(std::span<char> place, std::size_t& count) {
    const bool isOver = blockCount > 0 && block.size() < kBlockBytes;
    if (position == block.size() && !isOver) {
        if (const DWORD error = Fill(); error != ERROR_SUCCESS) return error;
    }
    count = std::min(place.size(), block.size() - position);
    std::copy_n(block.begin() + static_cast<std::ptrdiff_t>(position), count, place.begin());
    position += count;
    return ERROR_SUCCESS;
}

DWORD TwiceReadInput::Rewind() {
    if (const DWORD error = file.Rewind(); error != ERROR_SUCCESS) return error;
    block.clear();
    position = 0;
    blockCount = 0;
    isFirstTime = false;
    return ERROR_SUCCESS;
}

std::unique_ptr<CheckedList> CheckedList::Open(const std::string& path, const Visit& visit,
                                               SavedFault& fault) {
    std::unique_ptr<CheckedList> list(new CheckedList);
    const DWORD error = SavedFileInput::Open(path, list->file);
    if (error != ERROR_SUCCESS) FailWith(error, fault);
    return error == ERROR_SUCCESS && list->Check(visit, fault) ? std::move(list) : nullptr;
}

bool CheckedList::Check(const Visit& visit, SavedFault& fault) {
    const std::unique_ptr<SavedListReader> reader = SavedListReader::Open(input, fault);
    if (!reader) return false;
    SavedFolders folders({});
    SavedObject object;
    while (reader->Next(object, fault)) {
        ++objectCount;
        if (reader->TopCount() > tops.size()) {
            tops.push_back(reader->Top());
            folders = SavedFolders({});
        }
        isInOrder = isInOrder && folders.Pass(object);
        if (visit) visit(object);
    }
    head = reader->Head();
    return fault.reason.empty();
}

std::unique_ptr<SavedListReader> CheckedList::Read(SavedFault& fault) {
    if (const DWORD error = input.Rewind(); error != ERROR_SUCCESS) {
        FailWith(error, fault);
        return nullptr;
    }
    return SavedListReader::Open(input, fault);
}

}  // namespace permora
