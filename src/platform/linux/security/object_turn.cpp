#include "platform/linux/security/object_turn.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "platform/fnv_hash.h"
#include "platform/linux/registry/registry_places.h"

namespace permora::host {
namespace {

constexpr auto kLongestWait = std::chrono::seconds(10);
constexpr auto kPause = std::chrono::milliseconds(2);

// Folders for the lock file that do not outlive the machine's run, best first. No environment variable: only
// some programs of a user may have it, and all must use the same file.
std::vector<std::string> PassingPlaces() {
    if (geteuid() == 0) return {"/run/permora.lock"};
    std::vector<std::string> places = {"/run/user/" + std::to_string(geteuid()) + "/permora.lock"};
    if (const char* folder = std::getenv("XDG_RUNTIME_DIR"); folder != nullptr && *folder == '/')
        places.push_back(std::string(folder) + "/permora.lock");
    return places;
}

// Nobody else can lock a file that belongs to this user and that nobody else can open.
bool IsOwnFile(const UniqueFd& file) {
    struct stat status {};
    return fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid() &&
           (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

UniqueFd OpenOwnFile(const std::string& path) {
    UniqueFd file(open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600));
    return file && IsOwnFile(file) ? std::move(file) : UniqueFd();
}

LockFile Shared(UniqueFd file) {
    return file ? std::make_shared<const UniqueFd>(std::move(file)) : nullptr;
}

// Each object has a byte of the file, which is never written. Its place is a hash.
off_t PlaceOf(std::string_view key) {
    return static_cast<off_t>(HashFnv(key) >> 2);
}

off_t PlaceOf(const ObjectHandle& object) {
    const std::array<std::uint64_t, 2> numbers = {object.Status().st_dev, object.Status().st_ino};
    return PlaceOf({reinterpret_cast<const char*>(numbers.data()), sizeof numbers});
}

// Locks that belong to the open file, not to the process: they also separate threads, and end with the file.
bool SetLock(const UniqueFd& file, short type, off_t place, off_t length = 1) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = place;
    lock.l_len = length;
    return fcntl(file.Get(), F_OFD_SETLK, &lock) == 0;
}

// ERROR_BUSY when another program still holds the lock after the longest wait.
DWORD WaitForTurn(const UniqueFd& file, off_t place) {
    const auto deadline = std::chrono::steady_clock::now() + kLongestWait;
    while (!SetLock(file, F_WRLCK, place)) {
        // A file system without locks.
        if (errno != EAGAIN && errno != EACCES && errno != EINTR) break;
        if (std::chrono::steady_clock::now() > deadline) return ERROR_BUSY;
        std::this_thread::sleep_for(kPause);
    }
    return ERROR_SUCCESS;
}

// The file itself, or that of folders with a number, in a folder beside it.
UniqueFd OpenOwnFile(const std::string& path, std::size_t number) {
    if (number == LockFiles::kForFolders) return OpenOwnFile(path);
    const std::string folder = path + ".d";
    const std::string file = folder + '/' + std::to_string(number);
    if (UniqueFd opened = OpenOwnFile(file)) return opened;
    mkdir(folder.c_str(), S_IRWXU);
    return OpenOwnFile(file);
}

LockFile OpenLockFile(std::size_t number) {
    for (const std::string& place : PassingPlaces())
        if (UniqueFd file = OpenOwnFile(place, number)) return Shared(std::move(file));
    const std::string settings = UserRegistryFolder();
    if (settings.empty()) return {};
    // With the mode that keeping a setting would give it.
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(settings).parent_path(), error);
    mkdir(settings.c_str(), S_IRWXU);
    return Shared(OpenOwnFile(settings + "/objects.lock", number));
}

std::size_t NumberOfFile(const ObjectHandle& object, off_t place) {
    return object.IsFolder() ? static_cast<std::size_t>(place) % LockFiles::kForFolders
                             : LockFiles::kForFolders;
}

}  // namespace

LockFile LockFiles::Of(const ObjectHandle& object) {
    return OpenOnce(NumberOfFile(object, PlaceOf(object)));
}

LockFile LockFiles::OfKeys() {
    return OpenOnce(kForFolders);
}

LockFile LockFiles::OpenOnce(std::size_t number) {
    const std::lock_guard lock(guard);
    std::optional<LockFile>& file = files[number];
    if (!file) file = OpenLockFile(number);
    return *file;
}

ObjectTurn& ObjectTurn::operator=(ObjectTurn&& other) noexcept {
    if (this == &other) return *this;
    Leave();
    files = std::move(other.files);
    file = std::move(other.file);
    place = other.place;
    isTaken = std::exchange(other.isTaken, false);
    return *this;
}

bool ObjectTurn::TryTakeAt(LockFile ofPlace, off_t objectPlace) {
    Leave();
    file = std::move(ofPlace);
    place = objectPlace;
    isTaken = !file || SetLock(*file, F_WRLCK, place);
    return isTaken;
}

bool ObjectTurn::TryTake(const ObjectHandle& object) {
    const off_t objectPlace = PlaceOf(object);
    return TryTakeAt(files ? files->Of(object) : OpenLockFile(NumberOfFile(object, objectPlace)),
                     objectPlace);
}

DWORD ObjectTurn::Take(const ObjectHandle& object) {
    return TryTake(object) ? ERROR_SUCCESS : WaitUntilTaken();
}

DWORD ObjectTurn::Take(std::string_view key) {
    const bool isHad =
        TryTakeAt(files ? files->OfKeys() : OpenLockFile(LockFiles::kForFolders), PlaceOf(key));
    return isHad ? ERROR_SUCCESS : WaitUntilTaken();
}

DWORD ObjectTurn::WaitUntilTaken() {
    const DWORD error = WaitForTurn(*file, place);
    isTaken = error == ERROR_SUCCESS;
    return error;
}

void ObjectTurn::Leave() {
    if (isTaken && file) SetLock(*file, F_UNLCK, place);
    isTaken = false;
}

bool WalkTurns::TryTake(const ObjectHandle& object) {
    if (!object.IsFolder()) return TryTakeFile(PlaceOf(object));
    onFolder = ObjectTurn(foldersFiles);
    return onFolder.TryTake(object);
}

DWORD WalkTurns::Take(const ObjectHandle& object) {
    LeaveAll();
    if (TryTake(object)) return ERROR_SUCCESS;
    if (object.IsFolder()) return onFolder.Take(object);
    const DWORD error = WaitForTurn(*filesFile, PlaceOf(object));
    if (error == ERROR_SUCCESS) ++filesHeld;
    return error;
}

bool WalkTurns::TryTakeFile(off_t place) {
    if (!isOpened) filesFile = OpenLockFile(LockFiles::kForFolders);
    isOpened = true;
    if (filesFile && !SetLock(*filesFile, F_WRLCK, place)) return false;
    if (filesFile) ++filesHeld;
    return true;
}

void WalkTurns::LeaveAll() {
    onFolder.Leave();
    constexpr off_t kToTheEnd = 0;
    if (filesHeld > 0) SetLock(*filesFile, F_UNLCK, 0, kToTheEnd);
    filesHeld = 0;
}

}  // namespace permora::host
