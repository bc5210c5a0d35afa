// Reading the security of whole trees: a service of our own beside the system's.
//
// HeldObject reads one object at a time, at the price of finding and holding it. Here a folder is held, and
// what is in it is read by its bare name, never through a link and never what is mounted there. Nothing is
// written, so nobody is led astray by a name that is given to another object in the middle: that one is read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/api/security.h"

namespace permora {

class HeldObject;

enum class TreeObjectKind : std::uint8_t {
    kFile,
    kFolder,
    kLink,
    kOther,  // a device, a pipe, a socket
};

struct TreeObject {
    TreeObjectKind kind = TreeObjectKind::kFile;
    std::vector<std::uint8_t> descriptor;  // self-relative, checked, with the parts that were asked for
    bool isStored = true;  // false: none is stored, and `descriptor` is what owner, group and mode give
};

// The names in a folder, sorted byte by byte. A name takes some eight bytes beside its own.
class FolderNames {
  public:
    // False when there are more than can be held.
    [[nodiscard]] bool Add(std::string_view name, TreeObjectKind kind);
    void Sort();

    std::size_t Count() const { return places.size(); }
    // The memory that they take.
    std::size_t Bytes() const { return text.size() + places.size() * sizeof(Place); }
    std::string_view Name(std::size_t index) const { return NameAt(places[index]); }
    // As the listing says; what is read later may be something else by then.
    TreeObjectKind Kind(std::size_t index) const { return places[index].kind; }

  private:
    struct Place {
        std::uint32_t begin;
        std::uint16_t length;
        TreeObjectKind kind;
    };
    std::string_view NameAt(Place place) const {
        return std::string_view(text).substr(place.begin, place.length);
    }

    std::string text;
    std::vector<Place> places;
};

class TreeFolder;

// What one thread needs to read objects of a tree: buffers that are used again for each.
class TreeBuffers {
  public:
    explicit TreeBuffers(const TreeFolder& folder);
    ~TreeBuffers();
    TreeBuffers(const TreeBuffers&) = delete;
    TreeBuffers& operator=(const TreeBuffers&) = delete;

  private:
    friend class TreeFolder;
    struct Inside;
    std::unique_ptr<Inside> inside;
};

// A folder of a tree that is being read, held open: on Linux each takes a descriptor, and the limit on them
// is raised as far as it may. All calls answer with 0 or a system error code. Several threads may read from
// one folder, each with buffers of its own; whatever is not const is for one thread alone.
class TreeFolder {
  public:
    TreeFolder();
    TreeFolder(TreeFolder&& other) noexcept;
    TreeFolder& operator=(TreeFolder&& other) noexcept;
    ~TreeFolder();

    explicit operator bool() const { return inside != nullptr; }

    // The object with which a tree begins: what it is, its descriptor with the parts asked for (as
    // HeldObject::ReadSecurity gives it), and where it is a folder, that folder. `object.kind` and `folder`
    // are right also when only the descriptor could not be read, and `folder` is none when it could not be
    // opened.
    static DWORD ReadTop(const HeldObject& top, SECURITY_INFORMATION parts, TreeObject& object,
                         TreeFolder& folder);

    // All names in it, sorted, in the place of what `names` had. After a failure it has those that were found
    // before. ERROR_MORE_DATA, and no names, when they would take more than `most` bytes.
    DWORD List(FolderNames& names, std::size_t most = SIZE_MAX);

    // The same as ReadTop for what has the bare name `name` in this folder. `expected` is what List said that
    // it is. ERROR_FILE_NOT_FOUND when it has vanished; ERROR_NOT_SAME_DEVICE, and nothing is read, when
    // another volume is mounted there.
    DWORD Read(const std::string& name, TreeObjectKind expected, TreeBuffers& buffers, TreeObject& object,
               TreeFolder& folder) const;

    // Whether names that differ in the case of letters alone are one name to the volume's own system (NTFS).
    bool IgnoresCase() const;

    // Gives up the open folder for the time being; nothing can be read from it until Resume. False where that
    // is of no use: on Windows, where a process may have millions of handles.
    bool Suspend();
    // Opens it again from a folder in it that is open. ERROR_FILE_INVALID when it is not found from there
    // since one of them was moved.
    DWORD Resume(const TreeFolder& below);

  private:
    friend class TreeBuffers;
    struct Inside;
    std::unique_ptr<Inside> inside;  // null: none
};

}  // namespace permora
