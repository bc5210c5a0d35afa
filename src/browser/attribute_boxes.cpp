#include "browser/attribute_boxes.h"

#include <array>

#include "platform/api/errors.h"
#include "platform/api/file_control.h"
#include "platform/api/files.h"
#include "platform/api/security.h"
#include "platform/resources.h"

namespace permora {
namespace {

// In the order of AttributeBox.
constexpr std::array<DWORD, kAttributeBoxCount> kFlags = {
    FILE_ATTRIBUTE_ARCHIVE,
    FILE_ATTRIBUTE_READONLY,
    FILE_ATTRIBUTE_HIDDEN,
    FILE_ATTRIBUTE_SYSTEM,
    FILE_ATTRIBUTE_NOT_CONTENT_INDEXED,
    FILE_ATTRIBUTE_TEMPORARY,
    FILE_ATTRIBUTE_OFFLINE,
    FILE_ATTRIBUTE_COMPRESSED,
    FILE_ATTRIBUTE_ENCRYPTED,
};
constexpr std::size_t kWrittenCount = 7;  // the flags before compression

constexpr auto kAllowIndexing = static_cast<std::size_t>(AttributeBox::kAllowIndexing);
constexpr auto kCompressed = static_cast<std::size_t>(AttributeBox::kCompressed);
constexpr auto kEncrypted = static_cast<std::size_t>(AttributeBox::kEncrypted);

// The one box that is checked when its flag is clear.
bool IsInverted(std::size_t box) {
    return box == kAllowIndexing;
}

DWORD Compress(const char* name, bool wanted) {
    const DWORD attributes = GetFileAttributesA(name);
    if (attributes == INVALID_FILE_ATTRIBUTES) return GetLastError();
    HANDLE opened =
        CreateFileA(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, attributes, nullptr);
    if (opened == INVALID_HANDLE_VALUE) return GetLastError();
    const UniqueHandle file(opened);
    WORD format = wanted ? COMPRESSION_FORMAT_DEFAULT : COMPRESSION_FORMAT_NONE;
    DWORD returned = 0;
    const BOOL isDone = DeviceIoControl(file.get(), FSCTL_SET_COMPRESSION, &format, sizeof format, nullptr, 0,
                                        &returned, nullptr);
    return isDone != FALSE ? ERROR_SUCCESS : GetLastError();
}

DWORD Encrypt(const char* name, bool wanted) {
    const BOOL isDone = wanted ? EncryptFileA(name) : DecryptFileA(name, 0);
    return isDone != FALSE ? ERROR_SUCCESS : GetLastError();
}

}  // namespace

CheckedBoxes BoxesOf(DWORD attributes) {
    CheckedBoxes boxes;
    for (std::size_t i = 0; i < kFlags.size(); ++i)
        boxes.set(i, ((attributes & kFlags.at(i)) != 0) != IsInverted(i));
    return boxes;
}

DWORD AttributeWordOf(const CheckedBoxes& boxes) {
    DWORD word = 0;
    for (std::size_t i = 0; i < kWrittenCount; ++i)
        if (boxes.test(i) != IsInverted(i)) word |= kFlags.at(i);
    return word != 0 ? word : FILE_ATTRIBUTE_NORMAL;
}

DWORD ReadFirstAttributes(const Place& place, DWORD& attributes) {
    WIN32_FILE_ATTRIBUTE_DATA first{};
    if (const DWORD error = place.folder->MakeCurrent(); error != ERROR_SUCCESS) return error;
    if (GetFileAttributesExA(place.names.front().c_str(), GetFileExInfoStandard, &first) == FALSE)
        return GetLastError();
    attributes = first.dwFileAttributes;
    return ERROR_SUCCESS;
}

DWORD AssignAttributes(const Place& place, const CheckedBoxes& boxes, const CheckedBoxes& before,
                       const std::function<bool()>& goOn) {
    const DWORD word = AttributeWordOf(boxes);
    const CheckedBoxes changed = boxes ^ before;
    // The calls below take names without a folder.
    if (const DWORD error = place.folder->MakeCurrent(); error != ERROR_SUCCESS) return error;
    for (const std::string& each : place.names) {
        if (!goOn()) return ERROR_CANCELLED;
        const char* name = each.c_str();
        DWORD error = SetFileAttributesA(name, word) != FALSE ? ERROR_SUCCESS : GetLastError();
        if (error == ERROR_SUCCESS && changed.test(kCompressed))
            error = Compress(name, boxes.test(kCompressed));
        if (error == ERROR_SUCCESS && changed.test(kEncrypted)) error = Encrypt(name, boxes.test(kEncrypted));
        if (error != ERROR_SUCCESS) return error;
    }
    return ERROR_SUCCESS;
}

}  // namespace permora
