// The folders of a walk: what each is called and where it stands, and what the visitor keeps about it.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>

namespace permora::host {

// What a visitor keeps about a folder for the objects in it (their list, the turn on the folder). Ends, on
// any thread of the walk, when nothing below the folder is left to visit.
class FolderNotes {
  public:
    virtual ~FolderNotes() = default;
};

class WalkedFolder;

// One of the users of a folder, and thereby of those above it. Copies may be used and dropped on any thread.
class FolderRef {
  public:
    FolderRef() = default;
    explicit FolderRef(WalkedFolder* made) : folder(made) {}  // takes over the one user of a new folder
    FolderRef(const FolderRef& other);
    FolderRef(FolderRef&& other) noexcept : folder(std::exchange(other.folder, nullptr)) {}
    FolderRef& operator=(FolderRef other) noexcept {
        std::swap(folder, other.folder);
        return *this;
    }
    ~FolderRef();

    const WalkedFolder* operator->() const { return folder; }
    const WalkedFolder& operator*() const { return *folder; }
    explicit operator bool() const { return folder != nullptr; }

  private:
    WalkedFolder* folder = nullptr;
};

class WalkedFolder {
  public:
    // `name` is the folder's bare name as the host writes it, empty for the one that is walked, which has
    // nothing above it.
    static FolderRef Make(FolderRef above, std::string name, std::unique_ptr<FolderNotes> notes);

    const FolderRef& Above() const { return above; }
    const std::string& HostName() const { return hostName; }
    // What the visitor gave; null when it gave nothing.
    FolderNotes* Notes() const { return notes.get(); }
    // The path below the walked folder of what stands in this one: shown names with backslashes between them.
    // An empty name stands for the folder itself.
    std::string PathOf(const std::string& hostName) const;

  private:
    friend class FolderRef;
    WalkedFolder(FolderRef parent, std::string name, std::unique_ptr<FolderNotes> kept)
        : above(std::move(parent)), hostName(std::move(name)), notes(std::move(kept)) {}

    FolderRef above;
    const std::string hostName;
    const std::unique_ptr<FolderNotes> notes;
    std::atomic<std::size_t> users = 1;
};

}  // namespace permora::host
