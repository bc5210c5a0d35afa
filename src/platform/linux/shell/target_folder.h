// The folders into which a file operation puts things.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "platform/linux/files/object_handle.h"
#include "platform/linux/security/new_object.h"
#include "platform/linux/shell/item_finder.h"

namespace permora::host {

// What the driver of a volume can do. All folders of a volume share one.
struct VolumeTraits {
    bool isNtfs = false;
    bool isOnServer = false;           // which keeps attributes, and is reached by the kernel's SMB client
    bool isServedByProgram = false;    // rather than by the kernel: FUSE, as ntfs-3g
    bool showsStreamsAsFiles = false;  // named_streams.h
    bool hasNamelessFiles = true;      // until one is refused: O_TMPFILE of open(2)
};

// Asks about the volume of an object.
VolumeTraits AskVolume(const ObjectHandle& object);

// What stands where something else shall be put.
struct Clash {
    std::string hostName;
    ObjectHandle object;
};

// Functions that can fail return 0 or an error code.
class TargetFolder {
  public:
    // A folder that is there already.
    static std::unique_ptr<TargetFolder> Use(HeldFolder folder);

    const ObjectHandle& Handle() const { return held.handle; }
    int Descriptor() const { return held.handle.Descriptor(); }
    const std::string& ShownPath() const { return held.shownPath; }
    std::string ShownPathOf(const std::string& hostName) const;
    VolumeTraits& Volume() { return *volume; }

    // Whether a name may be given to something new: on NTFS only names that Windows can read back, since
    // others are out of its reach there, or streams of other files.
    DWORD CheckName(const std::string& hostName) const;

    // What has the name already, if anything. On NTFS names that differ in nothing but the case of letters
    // are one name, as they are to Windows, though its driver here tells them apart.
    DWORD FindClash(const std::string& hostName, std::optional<Clash>& clash);
    // The name beside `hostName` that a copy in the same folder gets: "X - Copy", "X - Copy (2)", ...
    DWORD FindCopyName(const std::string& hostName, nt::ObjectKind kind, std::string& copyName);

    // Gives something that was just made in it the descriptor that it hands down.
    DWORD Secure(const ObjectHandle& made);

    // Removes what killed processes left in it (unfinished_files.h), at the first call. To be called before
    // something is put into it that is not whole yet.
    void SweepOnce();

    // Remembers what the folder got.
    void Took(const std::string& hostName, const ObjectHandle& object);
    // Whether the folder got it from this operation, as of two names that the volume takes for one.
    bool HasTaken(const ObjectHandle& object) const;
    // Others put things into it too: what was known about its names no longer counts.
    void Forget();

    // A folder in it that is there.
    std::unique_ptr<TargetFolder> UseSubfolder(Clash clash) const;
    // A new one.
    DWORD MakeSubfolder(const std::string& hostName, mode_t mode, std::unique_ptr<TargetFolder>& made);

  private:
    TargetFolder(HeldFolder folder, std::shared_ptr<VolumeTraits> traits)
        : held(std::move(folder)), volume(std::move(traits)) {}
    DWORD LoadNames();
    DWORD OpenClash(const std::string& hostName, std::optional<Clash>& clash) const;
    DWORD LoadSecurity();

    HeldFolder held;
    std::shared_ptr<VolumeTraits> volume;
    std::optional<NewObjectSecurity> security;  // not read before something is made here
    bool isNew = false;  // made by this operation: there is nothing in it that it did not put there
    bool isSwept = false;
    // On NTFS: the names by what they are without regard to case. Nothing: not read yet.
    std::optional<std::unordered_map<std::u16string, std::string>> names;
    std::unordered_set<ino_t> taken;
};

}  // namespace permora::host
