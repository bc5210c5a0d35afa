#include "platform/linux/security/object_turn.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/registry/registry_places.h"

namespace permora::host {
namespace {

constexpr auto kLongestWait = std::chrono::seconds(10);
constexpr auto kPause = std::chrono::milliseconds(2);

// Where the file may lie, best first: what goes with the machine's end before what is kept.
std::vector<std::string> LockFiles() {
    std::vector<std::string> places;
    // Nobody else can write there; the variable may still name the folder of the user before sudo.
    if (geteuid() == 0) {
        places.emplace_back("/run/permora.lock");
    } else if (const char* folder = std::getenv("XDG_RUNTIME_DIR"); folder != nullptr && *folder == '/') {
        places.push_back(std::string(folder) + "/permora.lock");
    }
    if (const std::string own = UserRegistryFolder(); !own.empty()) places.push_back(own + "/objects.lock");
    return places;
}

// Only a file of this user's that nobody else can open is one that nobody else can lock.
bool IsOwnFile(const UniqueFd& file) {
    struct stat status {};
    return fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid() &&
           (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

UniqueFd OpenLockFile() {
    for (const std::string& place : LockFiles()) {
        UniqueFd file(open(place.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600));
        if (file && IsOwnFile(file)) return file;
    }
    return {};
}

// Each object has a byte of the file, which is never written.
off_t PlaceOf(const ObjectHandle& object) {
    // Both numbers are small and close together; their bits are spread by the multiplier of 64-bit FNV.
    constexpr std::uint64_t kSpread = 0x100000001b3;
    std::uint64_t place = 0xcbf29ce484222325;
    for (std::uint64_t number :
         {std::uint64_t{object.Status().st_dev}, std::uint64_t{object.Status().st_ino}}) {
        for (int byte = 0; byte < 8; ++byte, number >>= 8)
            place = (place ^ (number & 0xff)) * kSpread;
    }
    return static_cast<off_t>(place >> 2);
}

// Locks that belong to the open file and not to the process: they keep threads apart too, and end with it.
bool SetLock(const UniqueFd& file, short type, off_t place) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = place;
    lock.l_len = 1;
    return fcntl(file.Get(), F_OFD_SETLK, &lock) == 0;
}

}  // namespace

DWORD ObjectTurn::Take(const ObjectHandle& object) {
    Leave();
    if (!isOpened) file = OpenLockFile();
    isOpened = true;
    place = PlaceOf(object);
    const auto deadline = std::chrono::steady_clock::now() + kLongestWait;
    while (file && !SetLock(file, F_WRLCK, place)) {
        // A file system that has no locks.
        if (errno != EAGAIN && errno != EACCES && errno != EINTR) break;
        if (std::chrono::steady_clock::now() > deadline) return ERROR_BUSY;
        std::this_thread::sleep_for(kPause);
    }
    isTaken = true;
    return ERROR_SUCCESS;
}

void ObjectTurn::Leave() {
    if (isTaken && file) SetLock(file, F_UNLCK, place);
    isTaken = false;
}

}  // namespace permora::host
