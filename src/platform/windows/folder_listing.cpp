#include "platform/windows/folder_listing.h"

#include <cstring>

#include "platform/api/errors.h"
#include "platform/windows/folder_entry.h"

namespace permora {

DWORD FolderListing::Next(FoundEntry& entry) {
    constexpr std::size_t kNameOffset = offsetof(FILE_FULL_DIR_INFO, FileName);
    for (;;) {
        if (next == nullptr) {
            if (GetFileInformationByHandleEx(folder.get(), FileFullDirectoryInfo, block.data(),
                                             static_cast<DWORD>(block.size())) == FALSE) {
                return GetLastError();
            }
            next = block.data();
        }
        FILE_FULL_DIR_INFO info{};
        std::memcpy(&info, next, kNameOffset);
        // A server may have sent anything.
        const auto left = static_cast<std::size_t>(block.data() + block.size() - next);
        if (info.FileNameLength > left - kNameOffset ||
            (info.NextEntryOffset != 0 && info.NextEntryOffset > left - sizeof info))
            return ERROR_INVALID_DATA;
        std::wstring name(info.FileNameLength / sizeof(wchar_t), L'\0');
        std::memcpy(name.data(), next + kNameOffset, name.size() * sizeof(wchar_t));
        next = info.NextEntryOffset != 0 ? next + info.NextEntryOffset : nullptr;
        if (name == L"." || name == L"..") continue;
        // A reparse point has its tag in the place of the size of its attributes: MS-FSCC, 2.4.14.
        entry = {std::move(name), KindOfTag({info.FileAttributes, info.EaSize}),
                 static_cast<ULONGLONG>(info.EndOfFile.QuadPart)};
        return ERROR_SUCCESS;
    }
}

}  // namespace permora
