#include "platform/read_ahead.h"

#include <utility>

#include "platform/ahead_reading.h"
#include "platform/api/errors.h"
#include "platform/held_object.h"

namespace permora {

struct AheadFolder::Inside {
    Inside(std::shared_ptr<ahead::Reading> whole, std::shared_ptr<ahead::Folder> entered)
        : reading(std::move(whole)), folder(std::move(entered)), place(reading->Enter(*folder)) {}
    ~Inside() {
        reading->Return(piece);
        reading->Leave(*folder, place);
    }
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;

    DWORD ReadItself(std::size_t index, TreeObject& object, AheadFolder& below) const;
    DWORD TakeFromPiece(std::size_t index, TreeObject& object, AheadFolder& below);
    void Enter(std::shared_ptr<ahead::Folder> entered, AheadFolder& below) const {
        below.inside = std::make_unique<Inside>(reading, std::move(entered));
    }

    const std::shared_ptr<ahead::Reading> reading;
    const std::shared_ptr<ahead::Folder> folder;
    const std::size_t place;
    ahead::Pieces piece;  // one at most, read by another thread or for another turn
    std::size_t ownBegin = 0;
    std::size_t ownEnd = 0;  // names that nobody else reads
};

DWORD AheadFolder::Inside::ReadItself(std::size_t index, TreeObject& object, AheadFolder& below) const {
    TreeFolder opened;
    const DWORD error = reading->Read(*folder, index, object, opened);
    if (opened) Enter(std::make_shared<ahead::Folder>(std::move(opened), folder->depth + 1), below);
    return error;
}

DWORD AheadFolder::Inside::TakeFromPiece(std::size_t index, TreeObject& object, AheadFolder& below) {
    ahead::Piece& all = piece.front();
    const ahead::FoundObject& found = all.found[index - all.begin];
    if (found.isFolderNow) return ReadItself(index, object, below);
    object.kind = found.kind;
    object.isStored = found.isStored;
    object.descriptor.assign(all.bytes.begin() + found.begin, all.bytes.begin() + found.end);
    const DWORD error = found.error;
    if (all.below) Enter(std::exchange(all.below, nullptr), below);
    return error;
}

AheadFolder::AheadFolder() = default;
AheadFolder::AheadFolder(AheadFolder&& other) noexcept = default;
AheadFolder& AheadFolder::operator=(AheadFolder&& other) noexcept = default;
AheadFolder::~AheadFolder() = default;

DWORD AheadFolder::ReadTop(const HeldObject& top, SECURITY_INFORMATION parts, TreeObject& object,
                           AheadFolder& folder, std::optional<std::size_t> threads) {
    TreeFolder opened;
    const DWORD error = TreeFolder::ReadTop(top, parts, object, opened);
    folder.inside.reset();
    if (!opened) return error;
    auto first = std::make_shared<ahead::Folder>(std::move(opened), 0);
    auto reading = std::make_shared<ahead::Reading>(first, threads);
    folder.inside = std::make_unique<Inside>(std::move(reading), std::move(first));
    return error;
}

DWORD AheadFolder::List() {
    inside->reading->List(inside->folder);
    return inside->folder->listError;
}

const FolderNames& AheadFolder::Names() const {
    return inside->folder->names;
}

DWORD AheadFolder::Read(std::size_t index, TreeObject& object, AheadFolder& below) {
    below.inside.reset();
    --inside->folder->left;
    const bool isOwn = index >= inside->ownBegin && index < inside->ownEnd;
    const bool isHere = !inside->piece.empty() && inside->piece.front().Has(*inside->folder, index);
    if (!isOwn && !isHere) {
        inside->reading->Return(inside->piece);
        inside->ownBegin = index;
        inside->ownEnd = inside->reading->Fetch(*inside->folder, index, inside->piece);
    }
    if (index >= inside->ownBegin && index < inside->ownEnd) return inside->ReadItself(index, object, below);
    return inside->TakeFromPiece(index, object, below);
}

bool AheadFolder::IsLost() const {
    return inside->folder->isLost;
}

bool AheadFolder::IgnoresCase() const {
    return inside->folder->open.IgnoresCase();
}

}  // namespace permora
