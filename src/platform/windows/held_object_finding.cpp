// Finding again, at another time and in another process, the objects of a change.
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "platform/ascii.h"
#include "platform/held_object.h"
#include "platform/windows/changed_top.h"
#include "platform/windows/code_page.h"
#include "platform/windows/folder_entry.h"
#include "platform/windows/held_object_inside.h"

namespace permora {
namespace {

// Opens what a folder holds under a shown name; a colon would lead to a stream of it.
DWORD OpenShown(HANDLE folder, std::string_view shown, UniqueHandle& opened) {
    std::wstring name;
    if (shown.empty() || shown.find(':') != shown.npos) return ERROR_INVALID_NAME;
    const DWORD error = ToWide(std::string(shown), name);
    return error == ERROR_SUCCESS ? OpenToChange(folder, name, FILE_READ_ATTRIBUTES, opened) : error;
}

// Volumes that hang in a folder hang in a link.
DWORD OpenAlong(HANDLE folder, std::string_view path, UniqueHandle& opened) {
    UniqueHandle current;
    for (;;) {
        UniqueHandle next;
        const std::string_view shown = TakeUntil('\\', path);
        DWORD error = OpenShown(current ? current.get() : folder, shown, next);
        if (error == ERROR_SUCCESS && !path.empty()) error = RequireFolder(next.get());
        if (error != ERROR_SUCCESS) return error;
        current = std::move(next);
        if (path.empty()) break;
    }
    opened = std::move(current);
    return ERROR_SUCCESS;
}

}  // namespace

DWORD HeldObject::HoldTop(const ChangedTop& top, HeldObject& object) {
    HeldObject found;
    std::vector<std::uint8_t> mark;
    DWORD error = Hold(top.path, found);
    if (error == ERROR_SUCCESS) error = LastingMarkOf(found.inside->object.get(), mark);
    if (error != ERROR_SUCCESS) return error;
    if (found.IsFolder() != top.isFolder || mark != top.mark) return ERROR_FILE_INVALID;
    object = std::move(found);
    return ERROR_SUCCESS;
}

DWORD HeldObject::HoldBelow(const std::string& path, HeldObject& object) const {
    if (path.ends_with('\\')) return ERROR_INVALID_NAME;
    auto held = std::make_unique<Inside>();
    const HANDLE here = inside->object.get();
    DWORD error = ERROR_SUCCESS;
    if (path.empty())
        error = OpenAgain(here, FILE_READ_ATTRIBUTES, held->object);
    else if (error = RequireFolder(here); error == ERROR_SUCCESS)
        error = OpenAlong(here, path, held->object);
    if (error == ERROR_SUCCESS) object.inside = std::move(held);
    return error;
}

DWORD HeldObject::HoldAbove(HeldObject& folder) const {
    HeldObject above;
    auto held = std::make_unique<Inside>();
    const DWORD error = OpenFolderOf(inside->object.get(), held->object);
    if (error != ERROR_SUCCESS) return error;
    if (held->object) above.inside = std::move(held);
    folder = std::move(above);
    return ERROR_SUCCESS;
}

std::uint64_t HeldObject::FileNumber() const {
    std::uint64_t number = 0;
    return NumberOf(inside->object.get(), number) == ERROR_SUCCESS ? number : 0;
}

DWORD HeldObject::HasSeveralNames(bool& answer) const {
    BY_HANDLE_FILE_INFORMATION info{};
    if (GetFileInformationByHandle(inside->object.get(), &info) == FALSE) return GetLastError();
    answer = !IsFolder() && info.nNumberOfLinks > 1;
    return ERROR_SUCCESS;
}

// All handles serve alike.
void HeldObject::ExpectManyBelow() {}

DWORD HeldObject::FindTop(ChangedTop& top) const {
    return FindTopOf(inside->object.get(), IsFolder(), top);
}

DWORD HeldObject::WasBornAfter(std::int64_t seconds, bool& wasBornAfter) const {
    constexpr std::int64_t kTicks = 10'000'000;               // in a second
    constexpr std::int64_t kFrom1601To1970 = 11'644'473'600;  // seconds
    FILE_BASIC_INFO basic{};
    if (GetFileInformationByHandleEx(inside->object.get(), FileBasicInfo, &basic, sizeof basic) == FALSE)
        return GetLastError();
    const std::int64_t born = basic.CreationTime.QuadPart;
    wasBornAfter = born != 0 && born / kTicks - kFrom1601To1970 > seconds;
    return ERROR_SUCCESS;
}

}  // namespace permora
