#include "platform/tree_security.h"

#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/files/path_text.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/files/tree_walk.h"
#include "platform/linux/security/descriptor_store.h"
#include "platform/linux/security/propagation.h"
#include "platform/nt/inheritance.h"
#include "platform/nt/security_descriptor.h"

namespace permora::host {
namespace {

// A folder on the way down to the current object.
struct OpenFolder {
    std::string name;                 // as shown
    DWORD readError = ERROR_SUCCESS;  // why its list is not known; then nothing in it can be set
    nt::Acl list;                     // what stands on it now
};

class ListSetting : public TreeVisitor {
  public:
    ListSetting(const nt::Acl& list, TreeListMode writing, DescriptorStore& volume,
                TreeListObserver& listener, TreeListCounts& totals)
        : explicitEntries(list), mode(writing), store(volume), observer(listener), counts(totals) {}

    DWORD Run(const char* name, const ObjectHandle& top) {
        folders.push_back({name, ERROR_SUCCESS, {}});
        const DWORD error = ReadFolder(top, folders.front());
        if (error != ERROR_SUCCESS) return error;
        WalkTree(top, *this);
        return result;
    }

    WalkDecision Visit(const ObjectHandle& object, const char* hostName, std::size_t depth) override {
        const std::string name = EncodeName(hostName);
        if (!observer.Begin(name.c_str())) {
            result = ERROR_OPERATION_ABORTED;
            return WalkDecision::kStop;
        }
        const DWORD error = SetList(object, folders[depth]);
        if (error != ERROR_SUCCESS) PassOver(error, name, depth);
        if (object.IsFolder()) RememberFolder(object, name, error, depth + 1);
        return WalkDecision::kDescend;
    }

    void Fail(DWORD error, const char* hostName, std::size_t depth) override {
        if (*hostName == '\0') {
            result = error;
        } else {
            PassOver(error, EncodeName(hostName), depth);
        }
    }

  private:
    // Reads once and writes at most once. A failure leaves the object as it was.
    DWORD SetList(const ObjectHandle& object, const OpenFolder& parent) {
        if (!store.CanHold(object)) return ERROR_NOT_SUPPORTED;
        DWORD error = store.Read(object, before);
        if (error != ERROR_SUCCESS) return error;
        if (parent.readError != ERROR_SUCCESS) return parent.readError;
        after = before;
        after.control &= static_cast<std::uint16_t>(~(nt::kDaclProtected | SE_DACL_DEFAULTED));
        after.daclState = nt::DaclState::kList;
        after.dacl = explicitEntries;
        JoinInherited(after, parent.list, object);
        if (after == before) {
            ++counts.unchanged;
            return ERROR_SUCCESS;
        }
        if (mode == TreeListMode::kWrite) error = store.Write(object, after);
        if (error == ERROR_SUCCESS) ++counts.changed;
        return error;
    }

    // What is in the folder inherits from what stands on it: the new list, or where that could not be set the
    // one it has kept.
    void RememberFolder(const ObjectHandle& object, const std::string& name, DWORD settingError,
                        std::size_t place) {
        folders.resize(place);
        OpenFolder& folder = folders.emplace_back();
        folder.name = name;
        if (settingError == ERROR_SUCCESS) {
            std::swap(folder.list, after.dacl);
        } else {
            folder.readError = ReadFolder(object, folder);
        }
    }

    DWORD ReadFolder(const ObjectHandle& object, OpenFolder& folder) {
        nt::SecurityDescriptor descriptor;
        const DWORD error = store.Read(object, descriptor);
        // Without a list there is nothing to hand down.
        if (error == ERROR_SUCCESS && descriptor.daclState == nt::DaclState::kList)
            folder.list = std::move(descriptor.dacl);
        return error;
    }

    // `depth` is that of the object.
    void PassOver(DWORD error, const std::string& name, std::size_t depth) {
        // It vanished after it was opened.
        if (error == ERROR_FILE_NOT_FOUND) return;
        ++counts.passedOver;
        std::string path;
        for (std::size_t i = 0; i <= depth; ++i) {
            path += folders[i].name;
            if (path.empty() || !IsSeparator(path.back())) path += '\\';
        }
        observer.PassOver(path + name, error);
    }

    const nt::Acl& explicitEntries;
    TreeListMode mode;
    DescriptorStore& store;
    TreeListObserver& observer;
    TreeListCounts& counts;
    DWORD result = ERROR_SUCCESS;
    std::vector<OpenFolder> folders;  // by depth: the folder in which the objects of that depth stand
    nt::SecurityDescriptor before;
    nt::SecurityDescriptor after;
};

std::optional<nt::Acl> EntriesOf(PACL list) {
    if (list == nullptr || IsValidAcl(list) == FALSE) return std::nullopt;
    ACL header{};
    std::memcpy(&header, list, sizeof header);
    return nt::Acl::FromBytes({reinterpret_cast<const std::uint8_t*>(list), header.AclSize});
}

}  // namespace
}  // namespace permora::host

namespace permora {

DWORD SetListsBelow(LPCSTR folder, PACL list, TreeListMode mode, TreeListObserver& observer,
                    TreeListCounts& counts) {
    const std::optional<nt::Acl> entries = host::EntriesOf(list);
    if (!entries) return ERROR_INVALID_ACL;
    host::ResolvedObject top;
    const DWORD error = host::ResolvePath(folder, top);
    if (error != ERROR_SUCCESS) return error;
    if (top.object.IsLink()) return ERROR_CANT_RESOLVE_FILENAME;
    if (!top.object.IsFolder()) return ERROR_DIRECTORY;
    host::DescriptorStore store;
    if (!store.CanHold(top.object)) return ERROR_NOT_SUPPORTED;
    const nt::Acl mapped = nt::MapGenericRights(*entries);
    return host::ListSetting(mapped, mode, store, observer, counts).Run(folder, top.object);
}

}  // namespace permora
