#include "platform/linux/security/object_turn.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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

UniqueFd OpenLockFile() {
    for (const std::string& place : PassingPlaces())
        if (UniqueFd file = OpenOwnFile(place)) return file;
    const std::string settings = UserRegistryFolder();
    if (settings.empty()) return {};
    // With the mode that keeping a setting would give it.
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(settings).parent_path(), error);
    mkdir(settings.c_str(), S_IRWXU);
    return OpenOwnFile(settings + "/objects.lock");
}

// Each object has a byte of the file, which is never written.
off_t PlaceOf(const ObjectHandle& object) {
    // Both numbers are small and close together. The multiplier of 64-bit FNV spreads their bits.
    constexpr std::uint64_t kSpread = 0x100000001b3;
    std::uint64_t place = 0xcbf29ce484222325;
    for (std::uint64_t number :
         {std::uint64_t{object.Status().st_dev}, std::uint64_t{object.Status().st_ino}}) {
        for (int byte = 0; byte < 8; ++byte, number >>= 8)
            place = (place ^ (number & 0xff)) * kSpread;
    }
    return static_cast<off_t>(place >> 2);
}

// Locks that belong to the open file, not to the process: they also separate threads, and end with the file.
bool SetLock(const UniqueFd& file, short type, off_t place) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = place;
    lock.l_len = 1;
    return fcntl(file.Get(), F_OFD_SETLK, &lock) == 0;
}

// ERROR_BUSY when another program still holds the lock after the longest wait.
DWORD WaitForTurn(const UniqueFd& file, off_t place) {
    const auto deadline = std::chrono::steady_clock::now() + kLongestWait;
    while (file && !SetLock(file, F_WRLCK, place)) {
        // A file system without locks.
        if (errno != EAGAIN && errno != EACCES && errno != EINTR) break;
        if (std::chrono::steady_clock::now() > deadline) return ERROR_BUSY;
        std::this_thread::sleep_for(kPause);
    }
    return ERROR_SUCCESS;
}

}  // namespace

DWORD ObjectTurn::Take(const ObjectHandle& object) {
    Leave();
    if (!isOpened) file = OpenLockFile();
    isOpened = true;
    place = PlaceOf(object);
    const DWORD error = WaitForTurn(file, place);
    isTaken = error == ERROR_SUCCESS;
    return error;
}

void ObjectTurn::Leave() {
    if (isTaken && file) SetLock(file, F_UNLCK, place);
    isTaken = false;
}

DWORD WalkTurns::Take(const ObjectHandle& object, std::size_t depth) {
    LeaveTo(depth);
    if (!isOpened) file = OpenLockFile();
    isOpened = true;
    const off_t place = PlaceOf(object);
    const DWORD error = WaitForTurn(file, place);
    if (error == ERROR_SUCCESS) current = place;
    return error;
}

void WalkTurns::Keep() {
    kept.push_back(std::exchange(current, std::nullopt));
}

void WalkTurns::Leave() {
    if (current && file) SetLock(file, F_UNLCK, *current);
    current.reset();
}

void WalkTurns::LeaveTo(std::size_t depth) {
    for (std::size_t i = depth; i < kept.size(); ++i)
        if (kept[i] && file) SetLock(file, F_UNLCK, *kept[i]);
    kept.resize(depth);
}

}  // namespace permora::host
