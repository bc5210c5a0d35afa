// A file of saved lists that was read to its end and found whole, before anyone acts on it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/nt/sddl_sid.h"
#include "saved/saved_folders.h"
#include "saved/saved_list.h"
#include "saved/saved_list_reader.h"

namespace permora {

// Reads the file twice, which others may write to meanwhile. The second time gives what was checked the first
// time or a fault: the hash of each block is kept, and compared before anything of the block is used.
class TwiceReadInput : public SavedInput {
  public:
    // Both are borrowed.
    explicit TwiceReadInput(SavedFileInput& heldFile) : file(heldFile) {}
    // ERROR_REVISION_MISMATCH when the file is another one the second time.
    DWORD Read(std::span<char> place, std::size_t& count) override;
    // To the beginning, for the second time and every later one.
    DWORD Rewind();
    bool HasChanged() const { return hasChanged; }

  private:
    DWORD Fill();

    SavedFileInput& file;
    std::vector<std::string> hashes;  // of the blocks, as of the first time
    std::vector<char> block;
    std::size_t position = 0;    // in the block
    std::size_t blockCount = 0;  // blocks that were read since the beginning
    bool isFirstTime = true;
    bool hasChanged = false;
};

class CheckedList {
  public:
    // `path` is one of files.h. Null: `fault` says why, and what `visit` (which may be empty) has seen of the
    // objects is worth nothing. Memory is that of the reader, the tops, the names in the folders on the way
    // to an object, a hash for each MiB of the file, and the paths that have alike ones up to a limit.
    // `accounts` as for SavedListReader.
    using Visit = std::function<void(const SavedObject& object)>;
    static std::unique_ptr<CheckedList> Open(const std::string& path, const Visit& visit, SavedFault& fault,
                                             const nt::SddlAccounts& accounts = {});

    const SavedHead& Head() const { return head; }
    const std::vector<SavedTop>& Tops() const { return tops; }
    std::uint64_t ObjectCount() const { return objectCount; }
    // Whether of each folder all saved contents come one after the other, so that it is known when they are
    // complete (SavedFolders), and no object comes twice.
    bool IsInOrder() const { return isInOrder; }
    // Whether something else was saved in the same folder whose name differs in the case of letters alone.
    // `top` is the number of the object's top, from 0. Only known when the list is in order.
    bool HasAlikeName(std::size_t top, const std::string& path) const {
        return areManyAlike || alike.contains({top, path});
    }

    // From the beginning. Null: `fault` says why. One reader at a time, and none longer than this.
    std::unique_ptr<SavedListReader> Read(SavedFault& fault);
    // Whether a reader has come to something that is not what was checked; it has handed on nothing of that.
    bool HasChanged() const { return input.HasChanged(); }

  private:
    explicit CheckedList(nt::SddlAccounts meanings) : accounts(std::move(meanings)) {}
    bool Check(const Visit& visit, SavedFault& fault);
    void NoteAlikeNames(const SavedFolders::Folder& folder);

    const nt::SddlAccounts accounts;
    SavedFileInput file;
    TwiceReadInput input{file};
    SavedHead head;
    std::vector<SavedTop> tops;
    std::uint64_t objectCount = 0;
    bool isInOrder = true;
    std::set<std::pair<std::size_t, std::string>> alike;
    bool areManyAlike = false;  // too many to note: all count as such
};

}  // namespace permora
