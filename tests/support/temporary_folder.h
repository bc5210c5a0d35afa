// A folder of its own for one test.
#pragma once

#include <string>

namespace permora::test {

// The prefix of the names of all these folders.
inline constexpr const char* kTemporaryFolderPrefix = "/permora-test-";

// A new empty folder on the local disk, removed with everything in it at the end (what is mounted below is
// left alone).
class TemporaryFolder {
  public:
    TemporaryFolder();
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
