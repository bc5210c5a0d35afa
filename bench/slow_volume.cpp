#include "bench/slow_volume.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

#define FUSE_USE_VERSION 31
#include <fuse3/fuse.h>

namespace permora::bench {
namespace {

// Of the driver's process, since the library's functions take no argument of ours.
std::string servedFolder;
std::chrono::microseconds waitOfRequest;

// Where the request leads, after the wait.
std::string Served(const char* path) {
    std::this_thread::sleep_for(waitOfRequest);
    return servedFolder + path;
}

int Answer(long result) {
    return result < 0 ? -errno : static_cast<int>(result);
}

int GetStatus(const char* path, struct stat* status, fuse_file_info* /*file*/) {
    return Answer(lstat(Served(path).c_str(), status));
}

int List(const char* path, void* names, fuse_fill_dir_t fill, off_t /*from*/, fuse_file_info* /*folder*/,
         fuse_readdir_flags /*flags*/) {
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(Served(path).c_str()), closedir);
    if (!folder) return -errno;
    while (const dirent* entry = readdir(folder.get())) {
        struct stat status {};
        status.st_ino = entry->d_ino;
        status.st_mode = static_cast<mode_t>(DTTOIF(entry->d_type));
        if (fill(names, entry->d_name, &status, 0, static_cast<fuse_fill_dir_flags>(0)) != 0) break;
    }
    return 0;
}

int GetAttribute(const char* path, const char* name, char* value, std::size_t size) {
    return Answer(lgetxattr(Served(path).c_str(), name, value, size));
}

int SetAttribute(const char* path, const char* name, const char* value, std::size_t size, int flags) {
    return Answer(lsetxattr(Served(path).c_str(), name, value, size, flags));
}

int Serve(const std::string& mountPoint) {
    fuse_operations operations{};
    operations.getattr = GetStatus;
    operations.readdir = List;
    operations.getxattr = GetAttribute;
    operations.setxattr = SetAttribute;
    std::string program = "slow";
    std::string option = "-omax_idle_threads=64,default_permissions";
    std::string foreground = "-f";
    std::string place = mountPoint;
    char* arguments[] = {program.data(), option.data(), foreground.data(), place.data(), nullptr};
    return fuse_main(4, arguments, &operations, nullptr);
}

}  // namespace

SlowVolume::SlowVolume(const std::string& served, std::chrono::microseconds wait) {
    struct stat before {};
    if (stat(Root().c_str(), &before) != 0) return;
    driver = fork();
    if (driver == 0) {
        servedFolder = served;
        waitOfRequest = wait;
        std::_Exit(Serve(Root()));
    }
    for (int i = 0; driver > 0 && !isMounted && i < 500; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        struct stat now {};
        isMounted = stat(Root().c_str(), &now) == 0 && now.st_dev != before.st_dev;
    }
}

SlowVolume::~SlowVolume() {
    umount2(Root().c_str(), MNT_DETACH);
    if (driver <= 0) return;
    if (!isMounted) kill(driver, SIGKILL);
    waitpid(driver, nullptr, 0);
}

}  // namespace permora::bench
