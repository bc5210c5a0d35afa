#include "saved/checked_list.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/api/errors.h"
#include "platform/system_message.h"
#include "saved/name_case.h"
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

std::unique_ptr<CheckedList> CheckedList::Open(const std::string& path, const Visit& visit, SavedFault& fault,
                                               const nt::SddlAccounts& accounts) {
    std::unique_ptr<CheckedList> list(new CheckedList(accounts));
    const DWORD error = SavedFileInput::Open(path, list->file);
    if (error != ERROR_SUCCESS) FailWith(error, fault);
    return error == ERROR_SUCCESS && list->Check(visit, fault) ? std::move(list) : nullptr;
}

bool CheckedList::Check(const Visit& visit, SavedFault& fault) {
    const std::unique_ptr<SavedListReader> reader = SavedListReader::Open(input, fault, accounts);
    if (!reader) return false;
    const SavedFolders::Complete note = [this](const SavedFolders::Folder& folder) {
        NoteAlikeNames(folder);
    };
    SavedFolders folders(note);
    SavedObject object;
    while (reader->Next(object, fault)) {
        ++objectCount;
        if (reader->TopCount() > tops.size()) {
            folders.End();
            tops.push_back(reader->Top());
            folders = SavedFolders(note);
        }
        isInOrder = isInOrder && folders.Pass(object);
        if (visit) visit(object);
    }
    folders.End();
    head = reader->Head();
    return fault.reason.empty();
}

// Of the last top.
void CheckedList::NoteAlikeNames(const SavedFolders::Folder& folder) {
    constexpr std::size_t kMostAlike = 65536;
    if (folder.contents.size() < 2 || areManyAlike) return;
    std::vector<std::pair<std::string, const std::string*>> names;
    names.reserve(folder.contents.size());
    for (const std::string& name : folder.contents)
        names.emplace_back(InCapitals(name), &name);
    std::ranges::sort(names);
    for (std::size_t i = 1; i < names.size(); ++i) {
        if (names[i].first != names[i - 1].first) continue;
        for (const std::string* name : {names[i - 1].second, names[i].second})
            alike.emplace(tops.size() - 1, folder.path.empty() ? *name : folder.path + '\\' + *name);
        areManyAlike = alike.size() > kMostAlike;
    }
}

std::unique_ptr<SavedListReader> CheckedList::Read(SavedFault& fault) {
    if (const DWORD error = input.Rewind(); error != ERROR_SUCCESS) {
        FailWith(error, fault);
        return nullptr;
    }
    return SavedListReader::Open(input, fault, accounts);
}

}  // namespace permora
