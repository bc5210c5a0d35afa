#include "platform/linux/files/named_streams.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/extended_attributes.h"
#include "platform/linux/files/unmounted_entry.h"

namespace permora::host {
namespace {

constexpr std::string_view kAttributePrefix = "user.";

// Replaced at the flush by a value of the same length, through the held object. The holder of a write lease
// on a file cannot open it again.
class StreamAttribute : public OverwrittenFile {
  public:
    StreamAttribute(ObjectHandle held, std::string attributeName, std::size_t length)
        : file(std::move(held)), name(std::move(attributeName)), size(length) {}

    DWORD Size(LONGLONG& bytes) const override {
        bytes = static_cast<LONGLONG>(size);
        return ERROR_SUCCESS;
    }

    DWORD Find(LONGLONG from, FileRange& range) const override {
        const auto end = static_cast<LONGLONG>(size);
        range = {std::min(from, end), end};
        return ERROR_SUCCESS;
    }

    DWORD Seek(LONGLONG place) override {
        return place == static_cast<LONGLONG>(value.size()) ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
    }

    DWORD Write(std::span<const std::uint8_t> bytes) override {
        const auto taken = bytes.first(std::min(size - value.size(), bytes.size()));
        value.insert(value.end(), taken.begin(), taken.end());
        return ERROR_SUCCESS;
    }

    DWORD Flush() override {
        if (value.size() < size || size == 0) return ERROR_SUCCESS;
        const int error = WriteExtendedAttribute(file, name.c_str(), value);
        return error == 0 ? ERROR_SUCCESS : ErrorFromErrno(error);
    }

  private:
    ObjectHandle file;
    std::string name;
    std::size_t size;
    std::vector<std::uint8_t> value;
};

DWORD OpenStreamAttribute(const ObjectHandle& file, const std::string& stream,
                          std::shared_ptr<OverwrittenFile>& opened) {
    std::string name = std::string(kAttributePrefix) + stream;
    std::vector<std::uint8_t> value;
    const int problem = ReadExtendedAttribute(file, name.c_str(), value);
    if (problem != 0) return problem == ENODATA ? ERROR_FILE_NOT_FOUND : ErrorFromErrno(problem);
    UniqueFd copy(fcntl(file.Descriptor(), F_DUPFD_CLOEXEC, 0));
    if (!copy) return ErrorFromErrno(errno);
    ObjectHandle held;
    if (const DWORD error = ObjectHandle::Adopt(std::move(copy), held); error != ERROR_SUCCESS) return error;
    opened = std::make_shared<StreamAttribute>(std::move(held), std::move(name), value.size());
    return ERROR_SUCCESS;
}

}  // namespace

DWORD ListStreams(const ObjectHandle& file, std::vector<std::string>& names, StreamAccess& access) {
    std::vector<std::uint8_t> list;
    const int problem = ReadExtendedAttribute(file, kStreamListAttribute, list);
    if (problem != 0 && !IsAbsent(problem)) return ErrorFromErrno(problem);
    if (problem == 0) {
        names = SplitAttributeList(list);
        access = names.empty() ? StreamAccess::kNone : StreamAccess::kFiles;
        return ERROR_SUCCESS;
    }
    struct statfs volume {};
    if (fstatfs(file.Descriptor(), &volume) != 0) return ErrorFromErrno(errno);
    if (static_cast<unsigned>(volume.f_type) != FUSE_SUPER_MAGIC) {
        names.clear();
        access = StreamAccess::kNone;
        return ERROR_SUCCESS;
    }
    std::vector<std::string> attributes;
    if (const int failure = ListExtendedAttributes(file, attributes); failure != 0)
        return ErrorFromErrno(failure);
    std::vector<std::string> streams;
    for (const std::string& attribute : attributes)
        if (attribute.starts_with(kAttributePrefix))
            streams.push_back(attribute.substr(kAttributePrefix.size()));
    names = std::move(streams);
    access = names.empty() ? StreamAccess::kNone : StreamAccess::kAttributes;
    return ERROR_SUCCESS;
}

bool IsStreamName(std::string_view stream) {
    return !stream.empty() && stream.find_first_of(std::string_view("/:\0", 3)) == stream.npos;
}

int OpenStreamFile(const FileInFolder& place, const std::string& stream, int flags, UniqueFd& opened) {
    if (!IsStreamName(stream)) return EINVAL;
    // Opening never waits, for example for a pipe.
    if ((flags & O_PATH) == 0) flags |= O_NONBLOCK;
    const mode_t mode = (flags & O_CREAT) != 0 ? S_IRUSR | S_IWUSR : 0;
    UniqueFd found;
    const int problem =
        OpenUnmountedEntry(place.folder, (place.hostName + ":" + stream).c_str(), flags, found, mode);
    if (problem != 0) return problem;
    struct stat status {};
    if (fstat(found.Get(), &status) != 0) return errno;
    // A stream has the number of its file.
    if (!S_ISREG(status.st_mode) || !AreOneObject(status, place.file.Status())) return ESTALE;
    opened = std::move(found);
    return 0;
}

DWORD OpenStream(const FileInFolder& place, const std::string& stream,
                 std::shared_ptr<OverwrittenFile>& opened) {
    std::vector<std::string> names;
    StreamAccess access{};
    if (const DWORD error = ListStreams(place.file, names, access); error != ERROR_SUCCESS) return error;
    if (std::find(names.begin(), names.end(), stream) == names.end()) return ERROR_FILE_NOT_FOUND;
    if (access == StreamAccess::kAttributes) return OpenStreamAttribute(place.file, stream, opened);
    UniqueFd found;
    ObjectHandle object;
    const int problem = OpenStreamFile(place, stream, O_PATH, found);
    if (problem != 0) return problem == EINVAL ? ERROR_INVALID_NAME : ErrorFromErrno(problem);
    if (const DWORD error = ObjectHandle::Adopt(std::move(found), object); error != ERROR_SUCCESS)
        return error;
    return OpenAlone(object, opened);
}

}  // namespace permora::host
