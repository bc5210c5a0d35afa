#include "platform/ahead_reading.h"

#include <algorithm>
#include <chrono>
#include <system_error>
#include <utility>

namespace permora::ahead {
namespace {

using Clock = std::chrono::steady_clock;

// A server with a latency wants many requests at a time, whatever the processors.
constexpr std::size_t kLeastLimit = 16;

constexpr std::size_t kOpenLevels = 64;  // of the folders that the caller is in

// What was read ahead.
constexpr std::size_t kMostBytes = std::size_t{1} << 20;
constexpr std::size_t kMostPieces = 256;
constexpr std::size_t kMostOpenAhead = 64;
constexpr std::size_t kMostNameBytes = std::size_t{256}
                                       << 10;  // of one folder; more names wait for the caller

// A piece is long enough that taking it costs nothing beside reading it, and so short that there is one for
// each thread where each object takes long. One that turns out to be large or slow is cut short, and the
// others take from what is left.
constexpr std::size_t kMostNamesOfPiece = 32;
constexpr std::size_t kBytesOfPiece = std::size_t{64} << 10;
constexpr std::chrono::milliseconds kTimeOfPiece(10);

std::size_t MostThreads() {
    return std::max<std::size_t>(kLeastLimit, std::thread::hardware_concurrency());
}

}  // namespace

std::size_t Piece::EndOfCut(std::size_t first, std::size_t count) const {
    const FolderNames& names = folder->names;
    if (names.Kind(first) == TreeObjectKind::kFolder) return first + 1;
    const std::size_t most = std::min(end, first + count);
    std::size_t next = first + 1;
    while (next < most && names.Kind(next) != TreeObjectKind::kFolder)
        ++next;
    return next;
}

void Piece::Add(DWORD error, const TreeObject& object, bool isFolderNow) {
    const auto from = static_cast<std::uint32_t>(bytes.size());
    if (error == ERROR_SUCCESS) bytes.insert(bytes.end(), object.descriptor.begin(), object.descriptor.end());
    found.push_back(
        {error, object.kind, object.isStored, isFolderNow, from, static_cast<std::uint32_t>(bytes.size())});
}

std::size_t Piece::Bytes() const {
    const std::size_t names = below ? sizeof(Folder) + below->names.Bytes() : 0;
    return sizeof *this + found.capacity() * sizeof(FoundObject) + bytes.capacity() + names;
}

DWORD Reader::Read(const Folder& folder, std::size_t index, TreeObject& into, TreeFolder& below) {
    name = folder.names.Name(index);
    return folder.open.Read(name, folder.names.Kind(index), buffers, into, below);
}

Reading::Reading(const std::shared_ptr<Folder>& first, std::optional<std::size_t> fixed)
    : top(first),
      isFixed(fixed.has_value()),
      callers(first->open),
      firstIdle(pieces.end()),
      allowed(fixed.value_or(1)),
      tuner(MostThreads(), std::thread::hardware_concurrency(), Clock::now()) {
    const std::lock_guard lock(guard);
    StartThreads();
}

Reading::~Reading() {
    {
        const std::lock_guard lock(guard);
        isEnded = true;
    }
    work.notify_all();
    permission.notify_all();
    for (std::thread& thread : threads)
        thread.join();
}

// A system that starts no more leaves the work to those that there are.
void Reading::StartThreads() {
    try {
        while (threads.size() + 1 < allowed) {
            const std::size_t number = threads.size() + 1;
            threads.emplace_back([this, number] { Work(number); });
        }
    } catch (const std::system_error&) {
    }
}

void Reading::Work(std::size_t number) {
    Reader reader(top->open);
    std::unique_lock lock(guard);
    while (!isEnded) {
        if (number >= allowed) {
            WakeOne();  // the call may have been for one that may
            permission.wait(lock);
            continue;
        }
        const Pieces::iterator piece = Claim();
        if (piece == pieces.end()) {
            ++sleeping;
            work.wait(lock);
            --sleeping;
            continue;
        }
        lock.unlock();
        const Clock::duration took = ReadPiece(*piece, reader);
        lock.lock();
        Finish(piece, took);
    }
}

Clock::duration Reading::ReadPiece(Piece& piece, Reader& reader) const {
    const bool isOfFolder = piece.IsOfFolder();
    const Clock::time_point begin = Clock::now();
    Clock::duration took{};
    piece.found.reserve(piece.end - piece.begin);
    for (std::size_t index = piece.begin; index < piece.end; ++index) {
        TreeFolder below;
        const DWORD error = reader.Read(*piece.folder, index, reader.object, below);
        piece.Add(error, reader.object, below && !isOfFolder);
        if (below && isOfFolder) {
            piece.below = std::make_shared<Folder>(std::move(below), piece.folder->depth + 1);
            Folder& entered = *piece.below;
            entered.listError = entered.open.List(entered.names, kMostNameBytes);
            entered.isListed = entered.listError != ERROR_MORE_DATA;
        }
        took = Clock::now() - begin;
        if (isEnded || piece.bytes.size() > kBytesOfPiece || took > kTimeOfPiece) break;
    }
    return took;
}

// The first that nobody has begun; the end when there is none, or no room.
Pieces::iterator Reading::Claim() {
    if (unlisted.load() != nullptr) return pieces.end();
    isFull = aheadBytes >= kMostBytes || aheadPieces >= kMostPieces || openAhead >= kMostOpenAhead;
    if (isFull) return pieces.end();
    for (Pieces::iterator piece = firstIdle; piece != pieces.end(); ++piece) {
        if (piece->state == Piece::State::kIdle)
            return piece->folder->isSuspended ? pieces.end() : Cut(piece);
        // Its names are more than may be listed ahead, and come first.
        if (piece->state == Piece::State::kDone && piece->below && !piece->below->isListed)
            return pieces.end();
    }
    return pieces.end();
}

Pieces::iterator Reading::Cut(Pieces::iterator idle) {
    const std::size_t end = idle->EndOfCut(idle->begin, namesOfPiece);
    Pieces::iterator piece = idle;
    if (end < idle->end) {
        piece = pieces.insert(idle, Piece{.folder = idle->folder, .begin = idle->begin, .end = end});
        idle->begin = end;
    }
    firstIdle = std::next(piece);
    piece->state = Piece::State::kBusy;
    ++piece->folder->users;
    ++aheadPieces;
    if (piece->IsOfFolder()) ++openAhead;
    if (firstIdle != pieces.end() && firstIdle->state == Piece::State::kIdle) WakeOne();
    return piece;
}

void Reading::InsertRest(Pieces::iterator next, const std::shared_ptr<Folder>& folder, std::size_t begin,
                         std::size_t end) {
    if (begin == end) return;
    pieces.insert(next, Piece{.folder = folder, .begin = begin, .end = end});
    // A single name is not worth waking another thread: in a chain of folders it would wait for this one at
    // each of them.
    if (end - begin > 1) WakeOne();
}

void Reading::Finish(Pieces::iterator piece, Clock::duration took) {
    --piece->folder->users;
    objects += piece->found.size();
    const bool isOfFolder = piece->IsOfFolder();
    if (isOfFolder && (!piece->below || piece->isDropped)) --openAhead;
    if (piece->isDropped) {
        --aheadPieces;
        dropped.erase(piece);
        return WakeForRoom();
    }
    if (!isOfFolder) Measure(piece->found.size(), took);
    piece->state = Piece::State::kDone;
    piece->countedBytes = piece->Bytes();
    aheadBytes += piece->countedBytes;
    const std::size_t end = piece->begin + piece->found.size();
    if (isOfFolder || end != piece->end) firstIdle = pieces.begin();
    InsertRest(std::next(piece), piece->folder, end, piece->end);
    piece->end = end;
    if (piece->below && piece->below->isListed)
        InsertRest(std::next(piece), piece->below, 0, piece->below->names.Count());
    if (isCallerWaiting && piece == pieces.begin()) progress.notify_one();
    Tune();
}

// So many objects took so long: how many make a piece.
void Reading::Measure(std::size_t read, Clock::duration took) {
    if (took > kTimeOfPiece)
        namesOfPiece = std::max<std::size_t>(1, read * kTimeOfPiece / took);
    else if (read >= namesOfPiece)
        namesOfPiece = std::min(2 * namesOfPiece, kMostNamesOfPiece);
}

void Reading::Tune() {
    if (isFixed) return;
    const std::size_t before = std::exchange(allowed, tuner.Update(objects, Clock::now()));
    if (allowed <= before) return;
    StartThreads();
    permission.notify_all();
}

void Reading::WakeOne() {
    if (sleeping != 0) work.notify_one();
}

// Not for every piece that the caller takes.
void Reading::WakeForRoom() {
    if (!isFull || aheadBytes > kMostBytes / 2 || aheadPieces > kMostPieces / 2 ||
        openAhead > kMostOpenAhead / 2)
        return;
    isFull = false;
    work.notify_all();
}

// The piece is about to go from the list.
void Reading::Pass(Pieces::iterator piece) {
    if (firstIdle == piece) ++firstIdle;
}

void Reading::Drop(Pieces::iterator piece) {
    Pass(piece);
    if (piece->state == Piece::State::kBusy) {
        piece->isDropped = true;
        dropped.splice(dropped.end(), pieces, piece);
        return;
    }
    if (piece->state == Piece::State::kDone) {
        --aheadPieces;
        aheadBytes -= piece->countedBytes;
        if (piece->below) --openAhead;
    }
    pieces.erase(piece);
}

void Reading::DropBelow(const Folder& folder) {
    while (!pieces.empty() && pieces.front().folder->depth > folder.depth)
        Drop(pieces.begin());
}

void Reading::Return(Pieces& piece) {
    if (piece.empty()) return;
    const std::lock_guard lock(guard);
    aheadBytes -= piece.front().countedBytes;
    piece.clear();
    WakeForRoom();
}

std::size_t Reading::Fetch(const Folder& folder, std::size_t index, Pieces& piece) {
    std::unique_lock lock(guard);
    if (callersObjects != 0) Measure(callersObjects, Clock::now() - callersBegin);
    objects += std::exchange(callersObjects, 0);
    Tune();
    DropBelow(folder);
    while (!pieces.empty() && pieces.front().folder.get() == &folder && pieces.front().end <= index)
        Drop(pieces.begin());
    for (;;) {
        const Pieces::iterator first = pieces.begin();
        if (first == pieces.end() || !first->Has(folder, index)) return index + 1;
        if (first->state == Piece::State::kIdle) {
            const std::size_t end = first->EndOfCut(index, namesOfPiece);
            first->begin = end;
            if (end == first->end) Drop(first);
            WakeOne();
            return end;
        }
        if (first->state == Piece::State::kDone) {
            Pass(first);
            --aheadPieces;
            if (first->below) --openAhead;
            piece.splice(piece.end(), pieces, first);
            WakeForRoom();
            return index;
        }
        Help(lock);
    }
}

DWORD Reading::Read(const Folder& folder, std::size_t index, TreeObject& object, TreeFolder& below) {
    if (callersObjects++ == 0) callersBegin = Clock::now();
    return callers.Read(folder, index, object, below);
}

// Until the first piece is there, one more is read; without one, this is nothing but waiting.
void Reading::Help(std::unique_lock<std::mutex>& lock) {
    const Pieces::iterator piece = Claim();
    if (piece == pieces.end()) {
        isCallerWaiting = true;
        progress.wait(lock, [this] { return pieces.front().state == Piece::State::kDone; });
        isCallerWaiting = false;
        return;
    }
    lock.unlock();
    const Clock::duration took = ReadPiece(*piece, callers);
    lock.lock();
    Finish(piece, took);
}

void Reading::List(const std::shared_ptr<Folder>& folder) {
    if (!folder->isListed) {
        folder->listError = folder->open.List(folder->names);
        folder->isListed = true;
        const std::lock_guard lock(guard);
        InsertRest(pieces.begin(), folder, 0, folder->names.Count());
        firstIdle = pieces.begin();
        unlisted = nullptr;
        WakeOne();
    }
    folder->left = folder->names.Count();
}

std::size_t Reading::Enter(Folder& folder) {
    if (!folder.isListed) unlisted = &folder;
    path.push_back(&folder);
    while (path.size() - suspended > kOpenLevels && SuspendHighest()) {
    }
    return path.size() - 1;
}

bool Reading::SuspendHighest() {
    const std::lock_guard lock(guard);
    Folder* const highest = path[suspended];
    if (highest != nullptr) {
        if (highest->users != 0 || !highest->open.Suspend()) return false;
        highest->isSuspended = true;
        if (highest->left != 0) ++wanted;
    }
    ++suspended;
    return true;
}

void Reading::Leave(Folder& folder, std::size_t place) {
    const Folder* expected = &folder;
    if (unlisted.compare_exchange_strong(expected, nullptr)) {
        const std::lock_guard lock(guard);
        WakeOne();
    }
    {
        const std::lock_guard lock(guard);
        DropBelow(folder);
        while (!pieces.empty() && pieces.front().folder.get() == &folder)
            Drop(pieces.begin());
        WakeForRoom();
    }
    path[place] = nullptr;
    if (folder.isSuspended && folder.left != 0) --wanted;
    if (place + 1 != path.size()) return;
    while (!path.empty() && path.back() == nullptr)
        path.pop_back();
    suspended = std::min(suspended, path.size());
    if (suspended == path.size() && wanted != 0) Resume(*path.back(), folder);
}

// The folder that the caller comes back to, from the one that it has just left. Without it those above are
// out of reach too.
void Reading::Resume(Folder& folder, const Folder& below) {
    const bool isBack = !below.isSuspended && folder.open.Resume(below.open) == ERROR_SUCCESS;
    const std::lock_guard lock(guard);
    if (!isBack) {
        folder.isLost = true;
        return;
    }
    folder.isSuspended = false;
    --suspended;
    if (folder.left != 0) --wanted;
    WakeOne();
}

}  // namespace permora::ahead
