#include "platform/link_target.h"

#include <winioctl.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <utility>

#include "platform/api/errors.h"
#include "platform/resources.h"
#include "platform/windows/code_page.h"
#include "platform/windows/folder_entry.h"
#include "platform/windows/link_text.h"
#include "platform/windows/privileges.h"

namespace permora {
namespace {

DWORD OpenLink(LPCSTR path, UniqueHandle& link) {
    std::wstring verbatim;
    if (const DWORD error = ToVerbatimPath(path, verbatim); error != ERROR_SUCCESS) return error;
    return WithPrivileges(kReadingPrivileges, [&] {
        HANDLE opened = CreateFileW(verbatim.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
        if (opened == INVALID_HANDLE_VALUE) return GetLastError();
        link.reset(opened);
        return DWORD{ERROR_SUCCESS};
    });
}

// Where a relative text leads from the folder in which the link lies now. The system resolves ".." in the
// text too.
DWORD FollowFrom(HANDLE link, std::wstring_view text, std::wstring& full) {
    std::wstring path;
    const DWORD error = FinalPathOf(link, path);
    if (error != ERROR_SUCCESS) return error;
    const std::size_t root = RootLength(path);
    path.resize(text.starts_with(L'\\') ? root : path.find_last_of(L'\\'));
    while (!text.empty()) {
        const std::wstring_view name = text.substr(0, text.find(L'\\'));
        text.remove_prefix(std::min(name.size() + 1, text.size()));
        if (name == L"..")
            path.resize(std::max(root, std::min(path.size(), path.find_last_of(L'\\'))));
        else if (!name.empty() && name != L".")
            path.append(1, L'\\').append(name);
    }
    if (path.size() == root) path += L'\\';
    full = std::move(path);
    return ERROR_SUCCESS;
}

// The kernel's names of places ("\??\C:\folder") are those of the system's calls ("\\?\C:\folder") but for
// their beginning.
std::wstring FromKernelName(std::wstring name) {
    constexpr std::wstring_view kKernel = LR"(\??\)";
    if (name.starts_with(kKernel)) name.replace(0, kKernel.size(), LR"(\\?\)");
    return name;
}

}  // namespace

DWORD ReadLinkTarget(LPCSTR path, std::string& target) {
    UniqueHandle object;
    DWORD error = OpenLink(path, object);
    if (error != ERROR_SUCCESS) return error;
    std::array<std::byte, MAXIMUM_REPARSE_DATA_BUFFER_SIZE> block{};
    DWORD size = 0;
    if (DeviceIoControl(object.get(), FSCTL_GET_REPARSE_POINT, nullptr, 0, block.data(),
                        static_cast<DWORD>(block.size()), &size, nullptr) == FALSE) {
        error = GetLastError();
        return error == ERROR_NOT_A_REPARSE_POINT ? DWORD{ERROR_INVALID_FUNCTION} : error;
    }
    LinkText link;
    error = ReadLinkText(std::span(block).first(size), link);
    if (error != ERROR_SUCCESS) return error;
    std::wstring full;
    if (link.isRelative)
        error = FollowFrom(object.get(), link.text, full);
    else
        full = FromKernelName(link.text);
    return error == ERROR_SUCCESS ? ToOrdinaryPath(full, target) : error;
}

}  // namespace permora
