#include "platform/linux/shell/object_properties.h"

#include <fcntl.h>
#include <linux/limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/attributes.h"
#include "platform/linux/files/descriptor_path.h"
#include "platform/linux/files/descriptor_support.h"
#include "platform/linux/files/extended_attributes.h"
#include "platform/linux/files/named_streams.h"

namespace permora::host {
namespace {

constexpr std::string_view kUserFamily = "user.";

// Whether the volume refuses the value, as opposed to a failure.
bool IsRefusal(int problem) {
    return problem == ENOTSUP || problem == E2BIG || problem == ERANGE || problem == EPERM ||
           problem == EACCES || problem == EINVAL || problem == ENAMETOOLONG;
}

class PropertyCopy {
  public:
    PropertyCopy(const WalkedItem& item, const VolumeTraits& itemVolume, const CopyPlace& place,
                 ContentsCopier& copier)
        : source(item), sourceVolume(itemVolume), copy(place), contents(copier) {}

    PropertyResult Run() {
        CopyExtendedAttributes();
        if (result.error == ERROR_SUCCESS && sourceVolume.showsStreamsAsFiles) CopyStreamFiles();
        if (result.error == ERROR_SUCCESS) CopyAttributes();
        return result;
    }

  private:
    void Fail(int problem) { result.error = ErrorFromErrno(problem); }

    // The result of writing to the copy.
    void NoteWritten(int problem) {
        const bool isTooLarge = problem == ENOSPC && HasRoom(copy.object);
        if (problem == 0) return;
        if (!isTooLarge && !IsRefusal(problem)) return Fail(problem);
        if (result.loss == ERROR_SUCCESS)
            result.loss = isTooLarge ? ERROR_EAS_DIDNT_FIT : ErrorFromErrno(problem);
    }

    void CopyExtendedAttributes() {
        std::vector<std::string> names;
        const int problem = ListExtendedAttributes(source.object, names);
        if (problem != 0 && !IsAbsent(problem)) return Fail(problem);
        for (const std::string& name : names) {
            if (name == kDosAttribute) hasDosAttribute = true;
            if (!name.starts_with(kUserFamily) || name == kDosAttribute || name == kUserAttribute) continue;
            std::vector<std::uint8_t> value;
            const int readProblem = ReadExtendedAttribute(source.object, name.c_str(), value);
            if (readProblem == ENODATA) continue;  // it vanished
            if (readProblem != 0) return Fail(readProblem);
            const bool meansElse = copy.volume.isOnServer && IsNameOfSmbClient(name);
            NoteWritten(meansElse ? ENOTSUP : WriteValue(name.substr(kUserFamily.size()), value));
            if (result.error != ERROR_SUCCESS) return;
        }
    }

    // The attribute or stream `name`, in the form of the target's volume.
    int WriteValue(const std::string& name, const std::vector<std::uint8_t>& value) {
        if (!copy.volume.showsStreamsAsFiles)
            return WriteExtendedAttribute(copy.object, (std::string(kUserFamily) + name).c_str(), value);
        UniqueFd stream;
        const int problem = MakeStreamFile(name, stream);
        if (problem != 0) return problem;
        const ssize_t written = pwrite(stream.Get(), value.data(), value.size(), 0);
        if (written < 0) return errno;
        return static_cast<std::size_t>(written) == value.size() ? 0 : EIO;
    }

    int MakeStreamFile(const std::string& name, UniqueFd& stream) const {
        const int problem =
            OpenStreamFile({copy.folder, copy.hostName, copy.object}, name, O_WRONLY | O_CREAT, stream);
        if (problem != 0) return problem;
        return ftruncate(stream.Get(), 0) == 0 ? 0 : errno;
    }

    void CopyStreamFiles() {
        std::vector<std::uint8_t> list;
        const int problem = ReadExtendedAttribute(source.object, kStreamListAttribute, list);
        if (problem != 0 && !IsAbsent(problem)) Fail(problem);
        if (problem != 0) return;
        for (const std::string& name : SplitAttributeList(list)) {
            CopyStreamFile(name);
            if (result.error != ERROR_SUCCESS) return;
        }
    }

    void CopyStreamFile(const std::string& name) {
        if (!IsStreamName(name)) return NoteWritten(EINVAL);
        UniqueFd stream;
        struct stat status {};
        int problem = OpenStreamFile({source.folder, source.hostName, source.object}, name, O_RDONLY, stream);
        if (problem == 0 && fstat(stream.Get(), &status) != 0) problem = errno;
        if (problem != 0) return Fail(problem);
        if (copy.volume.showsStreamsAsFiles) {
            UniqueFd made;
            problem = MakeStreamFile(name, made);
            if (problem != 0) return NoteWritten(problem);
            result.error = contents.Copy({stream.Get(), sourceVolume}, status, {made.Get(), copy.volume});
            return;
        }
        if (status.st_size > XATTR_SIZE_MAX) return NoteWritten(E2BIG);
        std::vector<std::uint8_t> value(static_cast<std::size_t>(status.st_size));
        if (pread(stream.Get(), value.data(), value.size(), 0) != status.st_size) return Fail(EIO);
        NoteWritten(WriteValue(name, value));
    }

    void CopyAttributes() {
        const bool isReadOnlyByMode = S_ISREG(source.object.Status().st_mode) &&
                                      (source.object.Status().st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
        const bool hasOwn = hasDosAttribute || sourceVolume.isNtfs || sourceVolume.isOnServer;
        // The mode is copied, too. Where the attributes do not follow from it, they must agree with it.
        if (!hasOwn && !(isReadOnlyByMode && (copy.volume.isNtfs || copy.volume.isOnServer))) return;
        DWORD attributes = 0;
        result.error = ReadAttributes(source.object, {}, attributes);
        // A new file has the archive flag, or none at all.
        constexpr DWORD kOfEveryFile = FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NORMAL |
                                       FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_SPARSE_FILE |
                                       FILE_ATTRIBUTE_COMPRESSED | FILE_ATTRIBUTE_ENCRYPTED;
        if (result.error != ERROR_SUCCESS || (attributes & ~kOfEveryFile) == 0) return;
        const DWORD error = WriteAttributes(copy.object, attributes);
        // What a server keeps of them.
        if (error == ERROR_NOT_SUPPORTED && copy.volume.isOnServer)
            (void)WriteAttributes(copy.object, attributes & kUsualAttributes);
        if (error == ERROR_SUCCESS || result.loss != ERROR_SUCCESS) return;
        // Read-only may follow from the mode where nothing else can be kept.
        DWORD present = 0;
        const bool areThere = ReadAttributes(copy.object, {}, present) == ERROR_SUCCESS &&
                              ((present ^ attributes) & ~kOfEveryFile) == 0;
        if (!areThere) result.loss = error;
    }

    const WalkedItem& source;
    const VolumeTraits& sourceVolume;
    const CopyPlace& copy;
    ContentsCopier& contents;
    PropertyResult result;
    bool hasDosAttribute = false;
};

}  // namespace

PropertyResult CopyProperties(const WalkedItem& source, const VolumeTraits& sourceVolume,
                              const CopyPlace& copy, ContentsCopier& contents) {
    return PropertyCopy(source, sourceVolume, copy, contents).Run();
}

DWORD CopyTimes(const ObjectHandle& source, const ObjectHandle& copy) {
    const std::array<timespec, 2> times{source.Status().st_atim, source.Status().st_mtim};
    const DescriptorPath path(copy.Descriptor());
    return utimensat(AT_FDCWD, path.Text(), times.data(), 0) == 0 ? ERROR_SUCCESS : ErrorFromErrno(errno);
}

}  // namespace permora::host
