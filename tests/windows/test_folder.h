// A folder of its own for one test, and what tests put into it. Paths are absolute, with drive letters.
#pragma once

#include <string>

#include "platform/api/errors.h"
#include "platform/held_object.h"

namespace permora::test {

// A new empty folder among the user's temporary ones, removed with everything in it at the end.
class TestFolder {
  public:
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    const std::string& Path() const { return path; }
    std::string Path(const std::string& name) const { return path + '\\' + name; }

    // Make an object in it and hand back its path; folders in between must exist.
    std::string MakeFolder(const std::string& name) const;
    std::string MakeFile(const std::string& name, const std::string& contents = "contents") const;
    // A junction to the folder at the absolute path `target`: ERROR_SUCCESS or why there is none.
    DWORD MakeJunction(const std::string& name, const std::string& target) const;

  private:
    std::string path;
};

bool Exists(const std::string& path);

// Any length, whatever the machine is set to.
std::wstring VerbatimPath(const std::string& path);

// Parts of the descriptor of the object at a path as SDDL, or "error 1338".
std::string DescriptorText(const std::string& path, SECURITY_INFORMATION parts);

// Sets the list of the object at a path: "D:P(A;;FA;;;WD)".
DWORD SetListText(const std::string& path, const std::string& sddl);

// The object at a path, held; none when it cannot be found.
HeldObject Held(const std::string& path);

}  // namespace permora::test
