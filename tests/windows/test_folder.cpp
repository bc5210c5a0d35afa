#include "tests/windows/test_folder.h"

#include <windows.h>

#include <aclapi.h>
#include <winioctl.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>

#include "platform/windows/code_page.h"
#include "tests/support/descriptor_texts.h"

namespace permora::test {
namespace {

std::wstring Wide(const std::string& text) {
    std::wstring wide;
    ToWide(text, wide);
    return wide;
}

// What FSCTL_SET_REPARSE_POINT takes for a junction: [MS-FSCC] 2.1.2.5. The names' places are in bytes,
// behind the four numbers.
std::vector<std::byte> JunctionBlock(const std::wstring& target) {
    const std::wstring substitute = LR"(\??\)" + target;
    const std::wstring names = substitute + L'\0' + target + L'\0';
    const auto bytes = [](const std::wstring& text) {
        return static_cast<USHORT>(text.size() * sizeof(wchar_t));
    };
    const USHORT places[] = {0, bytes(substitute), static_cast<USHORT>(bytes(substitute) + sizeof(wchar_t)),
                             bytes(target)};
    const DWORD tag = IO_REPARSE_TAG_MOUNT_POINT;
    const USHORT header[] = {static_cast<USHORT>(sizeof places + bytes(names)), 0};
    std::vector<std::byte> block(sizeof tag + sizeof header + sizeof places + bytes(names));
    std::byte* place = block.data();
    const auto append = [&place](const void* part, std::size_t size) {
        std::memcpy(place, part, size);
        place += size;
    };
    append(&tag, sizeof tag);
    append(header, sizeof header);
    append(places, sizeof places);
    append(names.data(), bytes(names));
    return block;
}

}  // namespace

TestFolder::TestFolder() {
    char temporary[MAX_PATH + 1] = {};
    const DWORD length = GetTempPathA(sizeof temporary, temporary);
    for (int attempt = 0; length > 0 && attempt < 1000; ++attempt) {
        path = std::string(temporary) + "permora-test-" + std::to_string(GetCurrentProcessId()) + '-' +
               std::to_string(attempt);
        if (CreateDirectoryA(path.c_str(), nullptr) != FALSE) return;
    }
    std::fprintf(stderr, "no temporary folder: error %lu\n", GetLastError());
    std::abort();  // no test can go on, and a guessed path must not be removed later
}

TestFolder::~TestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(VerbatimPath(path), ignored);
}

std::string TestFolder::MakeFolder(const std::string& name) const {
    if (CreateDirectoryW(VerbatimPath(Path(name)).c_str(), nullptr) == FALSE)
        std::fprintf(stderr, "%s: error %lu\n", name.c_str(), GetLastError());
    return Path(name);
}

std::string TestFolder::MakeFile(const std::string& name, const std::string& contents) const {
    HANDLE file = CreateFileW(VerbatimPath(Path(name)).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    if (file == INVALID_HANDLE_VALUE ||
        WriteFile(file, contents.data(), static_cast<DWORD>(contents.size()), &written, nullptr) == FALSE)
        std::fprintf(stderr, "%s: error %lu\n", name.c_str(), GetLastError());
    CloseHandle(file);
    return Path(name);
}

DWORD TestFolder::MakeJunction(const std::string& name, const std::string& target) const {
    const std::string junction = MakeFolder(name);
    const UniqueHandle opened(CreateFileA(junction.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                          FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT,
                                          nullptr));
    std::vector<std::byte> block = JunctionBlock(Wide(target));
    DWORD bytes = 0;
    const bool isMade =
        DeviceIoControl(opened.get(), FSCTL_SET_REPARSE_POINT, block.data(), static_cast<DWORD>(block.size()),
                        nullptr, 0, &bytes, nullptr) != FALSE;
    return isMade ? ERROR_SUCCESS : GetLastError();
}

bool Exists(const std::string& path) {
    return GetFileAttributesW(VerbatimPath(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::wstring VerbatimPath(const std::string& path) {
    return LR"(\\?\)" + Wide(path);
}

std::string DescriptorText(const std::string& path, SECURITY_INFORMATION parts) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const DWORD error = GetNamedSecurityInfoA(path.c_str(), SE_FILE_OBJECT, parts, nullptr, nullptr, nullptr,
                                              nullptr, &descriptor);
    if (error != ERROR_SUCCESS) return "error " + std::to_string(error);
    const UniqueLocal<void> owned(descriptor);
    return SddlOfParts(descriptor, parts);
}

DWORD SetListText(const std::string& path, const std::string& sddl) {
    const UniqueLocal<void> descriptor = DescriptorOf(sddl);
    if (!descriptor) return GetLastError();
    const std::wstring name = VerbatimPath(path);
    return SetFileSecurityW(name.c_str(), DACL_SECURITY_INFORMATION, descriptor.get()) != FALSE
               ? ERROR_SUCCESS
               : GetLastError();
}

HeldObject Held(const std::string& path) {
    HeldObject object;
    HeldObject::Hold(path, object);
    return object;
}

}  // namespace permora::test
