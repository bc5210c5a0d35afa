// The state of folders, to prove that looking at them changed nothing.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace permora::test {

class FolderStates {
  public:
    // Of these folders with all below them, as the host writes paths, but for what is in `exceptions`. Links
    // are not followed. Of a folder that is itself an exception, only what is in it counts.
    FolderStates(std::vector<std::string> folders, std::vector<std::string> exceptions);

    // A line for each object that came, went, or is another one now in anything but the time of its last
    // reading. What was different is known at the next call.
    std::string Changes();

  private:
    std::map<std::string, std::string> Read() const;

    std::vector<std::string> folders;
    std::vector<std::string> exceptions;
    std::map<std::string, std::string> known;  // by path
};

}  // namespace permora::test
