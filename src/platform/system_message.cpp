#include "platform/system_message.h"

#include "platform/api/messages.h"
#include "platform/resources.h"

namespace permora {
namespace {

constexpr DWORD kFirstNetworkError = 2100;
constexpr DWORD kLastNetworkError = 2999;

}  // namespace

std::string GetSystemMessageText(DWORD code) {
    DWORD flags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM;
    UniqueLibrary networkMessages;
    if (code >= kFirstNetworkError && code <= kLastNetworkError) {
        networkMessages.reset(LoadLibraryExA("netmsg.dll", nullptr, LOAD_LIBRARY_AS_DATAFILE));
        if (networkMessages) flags |= FORMAT_MESSAGE_FROM_HMODULE;
    }
    // With FORMAT_MESSAGE_ALLOCATE_BUFFER the buffer argument is the address of a pointer in disguise.
    char* allocated = nullptr;
    FormatMessageA(flags, networkMessages.get(), code, LANG_USER_DEFAULT, reinterpret_cast<LPSTR>(&allocated),
                   0, nullptr);
    const UniqueLocal<char> text(allocated);
    return text ? text.get() : std::string();
}

std::string SystemMessageLine(DWORD code) {
    std::string text = GetSystemMessageText(code);
    text.erase(text.find_last_not_of("\r\n ") + 1);
    return text.empty() ? "system error " + std::to_string(code) : text;
}

}  // namespace permora
