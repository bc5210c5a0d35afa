#include "platform/remembered_object.h"

#include <sys/resource.h>

#include <atomic>
#include <utility>

#include "platform/linux/files/file_handle.h"
#include "platform/linux/files/folder_handle.h"
#include "platform/linux/files/object_identity.h"
#include "platform/linux/files/unmounted_entry.h"
#include "platform/linux/security/held_object_inside.h"

namespace permora {
namespace host {

// A descriptor that is open only to remember its object. All of them together take half of the descriptors
// that the process may have; the rest is for the work itself.
class Pin {
  public:
    Pin() = default;
    explicit Pin(ObjectHandle object) {
        rlimit limit{};
        getrlimit(RLIMIT_NOFILE, &limit);
        if (++count <= limit.rlim_cur / 2)
            kept = std::move(object);
        else
            --count;
    }
    Pin(const Pin&) = delete;
    Pin& operator=(const Pin&) = delete;
    ~Pin() {
        if (kept) --count;
    }

  private:
    static inline std::atomic<rlim_t> count = 0;  // in the whole process
    ObjectHandle kept;
};

}  // namespace host

struct RememberedObject::Inside {
    explicit Inside(DWORD problem) : error(problem) {}
    explicit Inside(host::ObjectHandle object)
        : kind(host::KindOfMode(object.Status().st_mode)), identity(object), pin(std::move(object)) {}

    static DWORD Verify(const Inside* remembered, const host::ObjectHandle& object) {
        if (remembered == nullptr || remembered->error != ERROR_SUCCESS) return ERROR_FILE_INVALID;
        return host::ObjectIdentity(object) == remembered->identity ? ERROR_SUCCESS : ERROR_FILE_INVALID;
    }

    DWORD error = ERROR_SUCCESS;
    FolderEntryKind kind = FolderEntryKind::kFile;
    host::ObjectIdentity identity;
    host::Pin pin;  // so that its number is not given to another
};

RememberedObject::RememberedObject(std::shared_ptr<const FolderHandle> startFolder, std::string objectPath)
    : start(std::move(startFolder)), path(std::move(objectPath)) {
    host::RaiseDescriptorLimit();
    HeldObject found;
    const DWORD error = FindByName(found);
    inside = error == ERROR_SUCCESS ? std::make_shared<Inside>(std::move(found.inside->target.object))
                                    : std::make_shared<Inside>(error);
}

DWORD RememberedObject::Error() const {
    return inside ? inside->error : ERROR_FILE_NOT_FOUND;
}

FolderEntryKind RememberedObject::Kind() const {
    return inside->kind;
}

DWORD RememberedObject::Verify(const HeldObject& object) const {
    return Inside::Verify(inside.get(), object.inside->target.object);
}

DWORD RememberedObject::Verify(const FileHandle& file) const {
    return Inside::Verify(inside.get(), file.inside->object);
}

DWORD RememberedObject::Verify(const FolderHandle& folder) const {
    host::ObjectHandle object;
    const DWORD error = folder.inside->Hold(object);
    return error == ERROR_SUCCESS ? Inside::Verify(inside.get(), object) : error;
}

}  // namespace permora
