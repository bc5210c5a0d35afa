// The paths of very many objects, whose names are kept once for each folder.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace permora {

// One thread at a time.
class TreePaths {
  public:
    // A place stands for a path. The top's own:
    static constexpr std::uint32_t kTop = 0xFFFFFFFF;

    // `path` has backslashes, and comes in the order of walks: a folder before what is in it. `top` is the
    // walk's number; paths of several share nothing.
    std::uint32_t Add(std::size_t top, std::string_view path);

    std::string_view Name(std::uint32_t place) const { return {places[place].name, places[place].length}; }
    // The place of the folder that holds it.
    std::uint32_t FolderOf(std::uint32_t place) const { return places[place].folder; }
    // Below the top; empty: the top.
    void Path(std::uint32_t place, std::string& path) const;

  private:
    struct Place {
        const char* name;
        std::uint32_t folder;
        std::uint16_t length;
    };
    struct Level {
        std::uint32_t place;
        std::size_t pathLength;
    };

    const char* Keep(std::string_view name);

    std::deque<Place> places;
    std::vector<std::unique_ptr<char[]>> blocks;
    std::size_t blockUsed = 0;
    // The place that was added last, with the folders above it.
    std::vector<Level> levels;
    std::string last;
    std::size_t lastTop = 0;
};

}  // namespace permora
