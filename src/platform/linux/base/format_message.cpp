#include <algorithm>
#include <cstring>
#include <string>

#include "platform/api/errors.h"
#include "platform/api/memory.h"
#include "platform/api/messages.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/base/libraries.h"
#include "platform/linux/base/message_table.h"

namespace {

using permora::host::ErrnoForMessage;
using permora::host::FindMessage;
using permora::host::MessagesOf;

constexpr DWORD kSources = FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_FROM_SYSTEM;
// Filling a buffer of the caller is not implemented.
constexpr DWORD kNeededFlags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS;

const char* SystemText(DWORD code) {
    // Not translated, like the tables.
    if (const int errorNumber = ErrnoForMessage(code); errorNumber != 0) return strerrordesc_np(errorNumber);
    return FindMessage(permora::host::SystemMessages(), code);
}

// The text in the sources that `flags` names, a library's own table first. Null when none has it.
const char* FindText(DWORD flags, HMODULE library, DWORD code) {
    if ((flags & FORMAT_MESSAGE_FROM_HMODULE) != 0) {
        if (const auto* table = MessagesOf(library)) {
            if (const char* text = FindMessage(*table, code)) return text;
        }
    }
    return (flags & FORMAT_MESSAGE_FROM_SYSTEM) != 0 ? SystemText(code) : nullptr;
}

}  // namespace

// The tables have one language and no inserts, so the language and the arguments for inserts are ignored.
DWORD WINAPI FormatMessageA(DWORD flags, LPCVOID source, DWORD messageId, DWORD /*languageId*/, LPSTR buffer,
                            DWORD size, va_list* /*arguments*/) {
    if (buffer == nullptr || (flags & kSources) == 0 || (flags & ~kSources) != kNeededFlags) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    // The SDK takes every kind of source as a pointer to constant. Here it is always a library.
    HMODULE library = static_cast<HMODULE>(const_cast<void*>(source));
    // No library means the program itself, which has no table of its own.
    if ((flags & FORMAT_MESSAGE_FROM_HMODULE) != 0 && library != nullptr && MessagesOf(library) == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return 0;
    }
    const char* sentence = FindText(flags, library, messageId);
    if (sentence == nullptr) {
        SetLastError(ERROR_MR_MID_NOT_FOUND);
        return 0;
    }
    const std::string message = std::string(sentence) + ".\r\n";
    // `size` is the smallest buffer that the caller accepts.
    auto* block = static_cast<char*>(LocalAlloc(LMEM_FIXED, std::max<SIZE_T>(message.size() + 1, size)));
    if (block == nullptr) return 0;
    std::memcpy(block, message.c_str(), message.size() + 1);
    std::memcpy(buffer, &block, sizeof(block));  // `buffer` is the address of a pointer
    return static_cast<DWORD>(message.size());
}
