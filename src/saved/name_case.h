// Names that differ in the case of letters alone.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/folder_files.h"

namespace permora {

// The name in capital letters, one for one, as NTFS compares names. What is no text of the code page stays as
// it is.
std::string InCapitals(const std::string& name);

// The names in the folders on the way to an object, on a volume that ignores the case of letters.
class NamesInAnyCase {
  public:
    enum class Answer : std::uint8_t { kNone, kOne, kSeveral };

    // `top` is borrowed.
    explicit NamesInAnyCase(const FolderHandle& top) : folder(top) {}

    // Looks for what has the path `path` below the top, but for the case of letters: `present` is the path
    // that it has. Where a folder has the very name, others that are alike do not count. A system error code
    // when a folder cannot be listed. Objects should come in the order of trees.
    DWORD Find(const std::string& path, std::string& present, Answer& answer);

  private:
    struct Level {
        std::string path;
        std::string present;
        std::unordered_map<std::string, std::vector<std::string>> names;  // by their capitals
    };
    static Answer FindIn(const Level& level, const std::string& name, std::string& present);
    DWORD Enter(const std::string& path, Answer& answer);
    DWORD List(const std::string& path, std::string present);

    const FolderHandle& folder;
    std::vector<Level> levels;  // from the top to the folder of the last object
};

}  // namespace permora
