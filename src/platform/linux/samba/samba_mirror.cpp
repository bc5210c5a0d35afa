#include "platform/linux/samba/samba_mirror.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <set>
#include <thread>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/base/unique_listing.h"

namespace permora::host {

namespace {

using Clock = std::chrono::steady_clock;

// Only root can fill the first one. The first two are in memory, so what tools leave there ends with the
// machine's power.
constexpr const char* kTemporaryPlaces[] = {"/run", "/dev/shm", "/tmp"};
constexpr std::string_view kMirrorPrefix = "permora-samba-";

// The folders of this process. A thread that asks Samba may outlive everything else.
class Folders {
  public:
    static Folders& All() {
        static Folders& folders = *new Folders;
        return folders;
    }

    // False when the process is ending: then nothing may be made any more.
    bool Add(const std::string& folder) {
        const std::lock_guard lock(guard);
        if (!isEnding) folders.insert(folder);
        return !isEnding;
    }
    void Remove(const std::string& folder) {
        const std::lock_guard lock(guard);
        RemoveTree(folder);
        folders.erase(folder);
    }

  private:
    Folders() {
        std::atexit(RemoveAll);
        std::at_quick_exit(RemoveAll);
    }

    // Nobody else can use such a folder, so everything in it is ours. A tool that still works there may make
    // something in the middle.
    static void RemoveTree(const std::string& folder) {
        constexpr int kAttempts = 3;
        std::error_code error;
        for (int attempt = 0; attempt < kAttempts; ++attempt) {
            std::filesystem::remove_all(folder, error);
            if (!error) return;
        }
    }
    static void RemoveAll() {
        Folders& all = All();
        const std::lock_guard lock(all.guard);
        all.isEnding = true;
        for (const std::string& folder : all.folders)
            RemoveTree(folder);
        all.folders.clear();
    }

    std::mutex guard;
    std::set<std::string> folders;
    bool isEnding = false;
};

// Opens a folder of this user's and locks it; nothing while the process that made it lives.
UniqueFd OpenUnused(int place, const char* name) {
    UniqueFd folder(openat(place, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!folder || fstat(folder.Get(), &status) != 0 || status.st_uid != geteuid() ||
        flock(folder.Get(), LOCK_EX | LOCK_NB) != 0)
        return {};
    return folder;
}

// Removes what killed processes have left.
void RemoveLeftovers(const std::string& place) {
    const UniqueListing listing(opendir(place.c_str()));
    if (!listing) return;
    while (const dirent* entry = readdir(listing.get())) {
        const std::string_view name = entry->d_name;
        if (!name.starts_with(kMirrorPrefix)) continue;
        const UniqueFd unused = OpenUnused(dirfd(listing.get()), entry->d_name);
        std::error_code ignored;
        if (unused) std::filesystem::remove_all(place + '/' + entry->d_name, ignored);
    }
}

std::string Option(std::string_view setting, const std::string& value) {
    return "--option=" + std::string(setting) + "=" + value;
}

DWORD MakeFolder(const std::string& path) {
    return mkdir(path.c_str(), 0755) == 0 ? ERROR_SUCCESS : ErrorFromErrno(errno);
}

// Samba locks ranges of a database's file before it writes. Nobody writes while the whole file is locked for
// reading. Closing `database` ends the lock.
DWORD LockForReading(int database) {
    constexpr std::chrono::seconds kPatience{10};
    constexpr std::chrono::milliseconds kPause{5};
    const Clock::time_point deadline = Clock::now() + kPatience;
    struct flock whole {};
    whole.l_type = F_RDLCK;
    whole.l_whence = SEEK_SET;
    while (fcntl(database, F_OFD_SETLK, &whole) != 0) {
        if (errno != EAGAIN && errno != EACCES && errno != EINTR) return ErrorFromErrno(errno);
        if (Clock::now() > deadline) return ERROR_TIMEOUT;
        std::this_thread::sleep_for(kPause);
    }
    return ERROR_SUCCESS;
}

DWORD CopyToMemory(int database, UniqueFd& copy) {
    if (const DWORD error = LockForReading(database); error != ERROR_SUCCESS) return error;
    UniqueFd made(memfd_create("permora-samba", MFD_CLOEXEC));
    if (!made) return ErrorFromErrno(errno);
    constexpr std::size_t kBlock = std::size_t{1} << 20;
    for (;;) {
        const ssize_t count = sendfile(made.Get(), database, nullptr, kBlock);
        if (count == 0) break;
        if (count < 0 && errno != EINTR) return ErrorFromErrno(errno);
    }
    copy = std::move(made);
    return ERROR_SUCCESS;
}

bool IsDenied(int errorNumber) {
    return errorNumber == EACCES || errorNumber == EPERM;
}

// The folder where tools exchange messages with a server and each other. Each tool gets its own.
bool IsTalk(std::string_view name) {
    return name == "." || name == ".." || name.starts_with("msg.");
}

}  // namespace

SambaMirror::~SambaMirror() {
    if (!root.empty()) Folders::All().Remove(root);
}

// Until it is locked, another process may take the new folder for a leftover.
DWORD SambaMirror::MakeRoot(const std::string& place) {
    constexpr int kAttempts = 10;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        std::string name = place + '/' + std::string(kMirrorPrefix) + "XXXXXX";
        if (mkdtemp(name.data()) == nullptr) return ErrorFromErrno(errno);
        UniqueFd locked = OpenUnused(AT_FDCWD, name.c_str());
        struct stat status {};
        if (!locked || fstat(locked.Get(), &status) != 0 || status.st_nlink == 0) continue;
        if (!Folders::All().Add(name)) {
            rmdir(name.c_str());
            return ERROR_OPERATION_ABORTED;
        }
        root = std::move(name);
        hold = std::move(locked);
        return ERROR_SUCCESS;
    }
    return ERROR_BUSY;
}

DWORD SambaMirror::Make() {
    DWORD error = ERROR_SUCCESS;
    for (const char* place : kTemporaryPlaces) {
        RemoveLeftovers(place);
        error = MakeRoot(place);
        if (error == ERROR_SUCCESS || error == ERROR_OPERATION_ABORTED) break;
    }
    if (error != ERROR_SUCCESS) return error;
    for (const std::string kind : {"state", "lock", "cache", "pid"}) {
        const std::string made = root + '/' + kind;
        if (error = MakeFolder(made); error != ERROR_SUCCESS) return error;
        options.push_back(Option(kind + " directory", made));
    }
    return ERROR_SUCCESS;
}

DWORD SambaMirror::AddState(const std::string& folder) {
    return AddFolder(folder, "/state",
                     {"registry.tdb", "share_info.tdb", "group_mapping.tdb", "account_policy.tdb"});
}

DWORD SambaMirror::AddPrivate(const SambaPlaces& places) {
    const std::string name = "/private";
    DWORD error = MakeFolder(root + name);
    if (error == ERROR_SUCCESS)
        error = AddFolder(places.privateFolder, name, {"secrets.tdb", "passdb.tdb", "smbpasswd"});
    if (error != ERROR_SUCCESS) return error;
    SetPrivate("private dir", root + name);

    // Both may be elsewhere.
    const std::string passwords = root + "/smbpasswd";
    if (places.passwordFile.starts_with('/')) {
        error = CopyDatabase(places.passwordFile, passwords);
        SetPrivate("smb passwd file", passwords);
    }
    const std::size_t colon = places.userDatabase.find(":/");
    const std::string kind = places.userDatabase.substr(0, colon);
    const bool isFile = colon != std::string::npos && (kind == "tdbsam" || kind == "smbpasswd");
    if (isFile && error == ERROR_SUCCESS) {
        const std::string users = root + "/users";
        error = CopyDatabase(places.userDatabase.substr(colon + 1), users);
        SetPrivate("passdb backend", kind + ":" + users);
    }
    return error;
}

DWORD SambaMirror::AddUserShareFolder() {
    // The folder's mode decides whether Samba accepts such shares in it, so the caller's umask must not
    // change the mode.
    constexpr mode_t kUsualMode = 01770;
    const std::string folder = UserShareFolder();
    if (const DWORD error = MakeFolder(folder); error != ERROR_SUCCESS) return error;
    if (chmod(folder.c_str(), kUsualMode) != 0) return ErrorFromErrno(errno);
    options.push_back(Option("usershare path", folder));
    return ERROR_SUCCESS;
}

void SambaMirror::SetPrivate(std::string_view setting, const std::string& value) {
    options.push_back(Option(setting, value));
    privateOptions.push_back(options.back());
}

DWORD SambaMirror::AddFolder(const std::string& folder, const std::string& name,
                             const std::vector<std::string_view>& databases) {
    const std::string mirrored = root + name;
    const UniqueListing listing(opendir(folder.c_str()));
    if (!listing) {
        if (errno == ENOENT || errno == ENOTDIR) return ERROR_SUCCESS;
        if (!IsDenied(errno)) return ErrorFromErrno(errno);
        // The tool must not be able to read more than this process.
        return rmdir(mirrored.c_str()) == 0 ? Link(folder, mirrored) : ErrorFromErrno(errno);
    }
    errno = 0;
    while (const dirent* entry = readdir(listing.get())) {
        const std::string_view entryName = entry->d_name;
        if (IsTalk(entryName)) continue;
        const std::string source = folder + '/' + entry->d_name;
        const bool isDatabase = std::ranges::find(databases, entryName) != databases.end();
        const std::string place = mirrored + '/' + entry->d_name;
        const DWORD error = isDatabase ? CopyDatabase(source, place) : Link(source, place);
        if (error != ERROR_SUCCESS) return error;
        errno = 0;
    }
    return errno == 0 ? ERROR_SUCCESS : ErrorFromErrno(errno);
}

DWORD SambaMirror::CopyDatabase(const std::string& source, const std::string& place) {
    const UniqueFd database(open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!database) {
        if (errno == ENOENT || errno == ENOTDIR) return ERROR_SUCCESS;
        return IsDenied(errno) ? Link(source, place) : ErrorFromErrno(errno);
    }
    struct stat status {};
    if (fstat(database.Get(), &status) != 0) return ErrorFromErrno(errno);
    if (!S_ISREG(status.st_mode)) return Link(source, place);
    UniqueFd copy;
    if (const DWORD error = CopyToMemory(database.Get(), copy); error != ERROR_SUCCESS) return error;
    const std::string memory = "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(copy.Get());
    copies.push_back(std::move(copy));
    return Link(memory, place);
}

DWORD SambaMirror::Link(const std::string& target, const std::string& place) {
    return symlink(target.c_str(), place.c_str()) == 0 ? ERROR_SUCCESS : ErrorFromErrno(errno);
}

}  // namespace permora::host
