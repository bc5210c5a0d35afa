#include "platform/sequential_file.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "platform/api/errors.h"
#include "platform/resources.h"
#include "platform/windows/folder_entry.h"

namespace permora {
namespace {

DWORD OpenFile(const std::wstring& path, DWORD access, DWORD share, DWORD disposition, DWORD flags,
               UniqueHandle& opened) {
    HANDLE handle = CreateFileW(path.c_str(), access, share, nullptr, disposition, flags, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return GetLastError();
    opened.reset(handle);
    return ERROR_SUCCESS;
}

}  // namespace

struct SequentialFile::Inside {
    UniqueHandle file;
};

SequentialFile::SequentialFile() = default;
SequentialFile::SequentialFile(SequentialFile&& other) noexcept = default;
SequentialFile& SequentialFile::operator=(SequentialFile&& other) noexcept = default;
SequentialFile::~SequentialFile() = default;

DWORD SequentialFile::Open(const std::string& path, SequentialFile& file) {
    auto made = std::make_unique<Inside>();
    std::wstring wide;
    DWORD error = ToVerbatimPath(path, wide);
    if (error == ERROR_SUCCESS)
        error = OpenFile(wide, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, OPEN_EXISTING,
                         FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, made->file);
    if (error == ERROR_SUCCESS) file.inside = std::move(made);
    return error;
}

DWORD SequentialFile::Read(std::span<char> block, std::size_t& count) {
    DWORD got = 0;
    const auto wanted = static_cast<DWORD>(std::min<std::size_t>(block.size(), 1U << 30));
    if (ReadFile(inside->file.get(), block.data(), wanted, &got, nullptr) == FALSE) {
        if (GetLastError() != ERROR_BROKEN_PIPE) return GetLastError();
        got = 0;  // a pipe has come to its end
    }
    count = got;
    return ERROR_SUCCESS;
}

DWORD SequentialFile::Rewind() {
    if (GetFileType(inside->file.get()) != FILE_TYPE_DISK) return ERROR_NOT_SUPPORTED;
    return SetFilePointerEx(inside->file.get(), {}, nullptr, FILE_BEGIN) != FALSE ? ERROR_SUCCESS
                                                                                  : GetLastError();
}

struct FileReplacement::Inside {
    ~Inside() {
        if (isComplete || !file) return;
        FILE_DISPOSITION_INFO disposition{TRUE};
        SetFileInformationByHandle(file.get(), FileDispositionInfo, &disposition, sizeof disposition);
    }

    UniqueHandle file;
    std::wstring temporaryPath;
    std::wstring path;
    bool isComplete = false;
};

FileReplacement::FileReplacement() = default;
FileReplacement::FileReplacement(FileReplacement&& other) noexcept = default;
FileReplacement& FileReplacement::operator=(FileReplacement&& other) noexcept = default;
FileReplacement::~FileReplacement() = default;

DWORD FileReplacement::Begin(const std::string& path, FileReplacement& file) {
    auto made = std::make_unique<Inside>();
    DWORD error = ToVerbatimPath(path, made->path);
    if (error != ERROR_SUCCESS) return error;
    const DWORD attributes = GetFileAttributesW(made->path.c_str());
    const bool isThere = attributes != INVALID_FILE_ATTRIBUTES;
    if (isThere && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return ERROR_CANT_RESOLVE_FILENAME;
    if (isThere && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return ERROR_ACCESS_DENIED;
    LARGE_INTEGER ticks{};
    QueryPerformanceCounter(&ticks);
    wchar_t name[40] = {};
    swprintf(name, std::size(name), L".permora-new-%016llx",
             static_cast<unsigned long long>(ticks.QuadPart) ^ (ULONGLONG{GetCurrentProcessId()} << 40));
    made->temporaryPath = made->path.substr(0, made->path.rfind(L'\\') + 1) + name;
    // Nobody else opens it before it is complete.
    error = OpenFile(made->temporaryPath, GENERIC_WRITE | DELETE, 0, CREATE_NEW, FILE_ATTRIBUTE_NORMAL,
                     made->file);
    if (error == ERROR_SUCCESS) file.inside = std::move(made);
    return error;
}

DWORD FileReplacement::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        DWORD written = 0;
        const auto wanted = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), 1U << 30));
        if (WriteFile(inside->file.get(), bytes.data(), wanted, &written, nullptr) == FALSE)
            return GetLastError();
        bytes.remove_prefix(written);
    }
    return ERROR_SUCCESS;
}

DWORD FileReplacement::Complete() {
    if (FlushFileBuffers(inside->file.get()) == FALSE) return GetLastError();
    // A file that is open is renamed by its path only where others may delete it.
    inside->isComplete = true;
    inside->file.reset();
    if (MoveFileExW(inside->temporaryPath.c_str(), inside->path.c_str(),
                    MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == FALSE) {
        const DWORD error = GetLastError();
        DeleteFileW(inside->temporaryPath.c_str());
        return error;
    }
    inside.reset();
    return ERROR_SUCCESS;
}

}  // namespace permora
