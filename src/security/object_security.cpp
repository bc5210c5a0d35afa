#include "security/object_security.h"

#include <memory>
#include <string>
#include <utility>

#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "platform/system_message.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

bool HasAccessControl(HWND owner, const HeldObject& object, HiddenVolume hidden) {
    bool isSupported = true;
    const DWORD error = object.AskAccessControl(isSupported);
    const bool isReadOn = error == ERROR_ACCESS_DENIED && hidden == HiddenVolume::kReadOn;
    if (error != ERROR_SUCCESS && !isReadOn) {
        ShowSystemErrorBox(owner, error);
        return false;
    }
    if (!isSupported) ShowInfoBox(owner, "Access control is not supported by the file system");
    return isSupported;
}

std::optional<DaclInheritance> InheritanceOf(PSECURITY_DESCRIPTOR descriptor) {
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    if (GetSecurityDescriptorControl(descriptor, &control, &revision) == FALSE) return std::nullopt;
    return (control & SE_DACL_PROTECTED) != 0 ? DaclInheritance::kProtected : DaclInheritance::kFromParent;
}

std::string Quoted(const std::string& name) {
    return '"' + name + '"';
}

// The item itself was written, so the system's text alone would mislead.
void TellFailuresBelow(HWND owner, const std::string& item, const FailuresBelow& below) {
    std::string text =
        SystemMessageLine(below.firstError) + "\n\nThis is about " + Quoted(ChildPath(item, below.firstPath));
    if (below.count > 1) text += " and " + std::to_string(below.count - 1) + " more below " + Quoted(item);
    text += ". " + Quoted(item) + " itself was changed.";
    ShowErrorBox(owner, text.c_str());
}

bool MayOverwrite(HWND owner, const std::string& item) {
    const std::string text = "The access control list of " + Quoted(item) +
                             " was changed by another program after it was shown here.\n"
                             "Click Yes to overwrite it with the list shown here\n"
                             "Click No to write nothing and show the new one";
    return MessageBoxA(owner, text.c_str(), "Changed meanwhile", MB_YESNO | MB_ICONQUESTION) == IDYES;
}

}  // namespace

bool ReadListOfObject(HWND owner, const HeldObject& object, HiddenVolume hidden, ReadParts& list) {
    if (!HasAccessControl(owner, object, hidden)) return false;
    const DWORD error = object.ReadSecurity(DACL_SECURITY_INFORMATION, list);
    if (error != ERROR_SUCCESS) ShowSystemErrorBox(owner, error);
    return error == ERROR_SUCCESS;
}

bool ReadObjectDacl(HWND owner, const HeldObject& object, ObjectSecurity& security) {
    ObjectSecurity read;
    if (!ReadListOfObject(owner, object, HiddenVolume::kReadOn, read)) return false;
    if (read.dacl == nullptr) ShowInfoBox(owner, kNullListText);
    read.inheritance = InheritanceOf(read.descriptor.get());
    read.entries.LoadFromDacl(read.dacl);
    security = std::move(read);
    return true;
}

std::string ChildPath(const std::string& item, const std::string& below) {
    if (below.empty()) return item;
    return item + (item.ends_with('\\') ? "" : "\\") + below;
}

std::vector<RememberedObject> RememberItems(std::span<const char* const> names, ItemPlace place) {
    auto folder = std::make_shared<FolderHandle>();
    const bool isInFolder =
        place == ItemPlace::kCurrentDirectory && FolderHandle::OpenCurrent(*folder) == ERROR_SUCCESS;
    if (!isInFolder) folder.reset();
    std::vector<RememberedObject> items;
    items.reserve(names.size());
    for (const char* name : names)
        items.emplace_back(folder, name);
    return items;
}

bool FindItem(HWND owner, const RememberedObject& item, HeldObject& object) {
    const DWORD error = item.Find(object);
    if (error == ERROR_FILE_INVALID) {
        const std::string text =
            Quoted(item.Path()) + " is left alone: another object has this name since it was shown here.";
        ShowErrorBox(owner, text.c_str());
    } else if (error != ERROR_SUCCESS) {
        ShowSystemErrorBox(owner, error);
    }
    return error == ERROR_SUCCESS;
}

ItemsWritten WriteListToItems(HWND owner, std::span<const RememberedObject> items,
                              std::optional<DaclInheritance> inheritance, const ListsByKind& lists,
                              PSECURITY_DESCRIPTOR shown) {
    const SECURITY_INFORMATION information = DaclWriteInformation(inheritance);
    PSECURITY_DESCRIPTOR expected = shown;
    for (const RememberedObject& item : items) {
        HeldObject object;
        FailuresBelow below;
        if (FindItem(owner, item, object)) {
            PACL dacl = object.IsFolder() ? lists.forFolders : lists.forFiles;
            DWORD error = object.WriteList(information, dacl, expected, below);
            if (error == ERROR_REVISION_MISMATCH && expected != nullptr) {
                if (!MayOverwrite(owner, item.Path())) return ItemsWritten::kReadAnew;
                error = object.WriteList(information, dacl, nullptr, below);
            }
            if (error != ERROR_SUCCESS) ShowSystemErrorBox(owner, error);
            if (below.count > 0) TellFailuresBelow(owner, item.Path(), below);
        }
        expected = nullptr;  // only the first one's list was shown
    }
    return ItemsWritten::kAll;
}

}  // namespace permora
