// A folder of its own for one test.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <string>

namespace permora::test {

// The prefix of the names of all these folders.
inline constexpr const char* kTemporaryFolderPrefix = "/permora-test-";

// A history waits for the disk at each of its commits; in memory there is nothing to wait for.
enum class FolderPlace { kDisk, kMemory };

// The folder in which those of such a place are made.
inline std::string FolderOf(FolderPlace place) {
    constexpr const char* kMemory = "/dev/shm";
    if (place == FolderPlace::kMemory && access(kMemory, W_OK) == 0) return kMemory;
    const char* base = getenv("TMPDIR");
    return base != nullptr ? base : "/tmp";
}

// A new empty folder, removed with everything in it at the end (what is mounted below is left alone).
class TemporaryFolder {
  public:
    explicit TemporaryFolder(FolderPlace place = FolderPlace::kDisk);
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    // The folder, or the path of `name` in it, as the host writes paths.
    const std::string& Path() const { return path; }
    std::string Path(const std::string& name) const { return path + "/" + name; }

    // Make an object in it and hand back its path; folders in between must exist.
    std::string MakeFolder(const std::string& name) const;
    std::string MakeFile(const std::string& name) const;

  private:
    std::string path;
};

}  // namespace permora::test
