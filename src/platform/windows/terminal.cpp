// A console takes UTF-16, which shows every character whatever its code page is; nothing of the console is
// changed, so nothing has to be restored.
#include "platform/terminal.h"

#include <windows.h>

#include <io.h>

#include <algorithm>
#include <array>
#include <string>

#include "platform/resources.h"

namespace permora {
namespace {

HANDLE HandleOf(std::FILE* stream) {
    const int descriptor = _fileno(stream);
    if (descriptor < 0) return INVALID_HANDLE_VALUE;
    const intptr_t handle = _get_osfhandle(descriptor);
    return handle < 0 ? INVALID_HANDLE_VALUE : reinterpret_cast<HANDLE>(handle);
}

bool IsConsole(HANDLE handle) {
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != FALSE;
}

bool WriteToConsole(HANDLE console, std::wstring_view text) {
    constexpr std::size_t kMostAtOnce = 8192;  // older consoles refuse more than 64 KB in one call
    while (!text.empty()) {
        std::size_t count = std::min(text.size(), kMostAtOnce);
        // A character of two units is written in one call.
        if (count < text.size() && IS_HIGH_SURROGATE(text[count - 1])) --count;
        DWORD written = 0;
        if (WriteConsoleW(console, text.data(), static_cast<DWORD>(count), &written, nullptr) == FALSE ||
            written == 0)
            return false;
        text.remove_prefix(written);
    }
    return true;
}

std::wstring WideText(std::string_view text) {
    const int size = static_cast<int>(text.size());
    const int length = MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(std::max(length, 0)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), length);
    return wide;
}

bool WriteToConsoleOfCaller(std::wstring_view text) {
    if (AttachConsole(ATTACH_PARENT_PROCESS) == FALSE) return false;
    HANDLE opened = CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                nullptr, OPEN_EXISTING, 0, nullptr);
    const UniqueHandle console(opened == INVALID_HANDLE_VALUE ? nullptr : opened);
    const bool isWritten = IsConsole(console.get()) && WriteToConsole(console.get(), text);
    FreeConsole();
    return isWritten;
}

struct CharacterRange {
    char32_t first;
    char32_t last;
};

template <std::size_t Count>
bool IsIn(const std::array<CharacterRange, Count>& ranges, char32_t character) {
    return std::ranges::any_of(ranges, [character](const CharacterRange& range) {
        return character >= range.first && character <= range.last;
    });
}

// Control characters (C0, DEL, C1), surrogates, and the two code points of each plane that are no characters.
bool HasNoPicture(char32_t character) {
    return character < 0x20 || (character >= 0x7F && character < 0xA0) ||
           (character >= 0xD800 && character <= 0xDFFF) || (character & 0xFFFE) == 0xFFFE ||
           (character >= 0xFDD0 && character <= 0xFDEF) || character > 0x10FFFF;
}

// Blocks of combining marks: the Unicode Character Database, general categories Mn and Me.
constexpr std::array<CharacterRange, 29> kStandOnOthers = {{
    {0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x05BF, 0x05BF},   {0x05C1, 0x05C2},
    {0x05C4, 0x05C5}, {0x0610, 0x061A}, {0x064B, 0x065F}, {0x0670, 0x0670},   {0x06D6, 0x06DC},
    {0x06DF, 0x06E4}, {0x06E7, 0x06E8}, {0x06EA, 0x06ED}, {0x0900, 0x0902},   {0x093C, 0x093C},
    {0x0941, 0x0948}, {0x094D, 0x094D}, {0x0E31, 0x0E31}, {0x0E34, 0x0E3A},   {0x0E47, 0x0E4E},
    {0x1160, 0x11FF}, {0x1AB0, 0x1ACE}, {0x1DC0, 0x1DFF}, {0x20D0, 0x20F0},   {0x302A, 0x302D},
    {0x3099, 0x309A}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xE0100, 0xE01EF},
}};

// Characters of two columns: East_Asian_Width W and F of the Unicode Character Database, in whole blocks.
constexpr std::array<CharacterRange, 16> kWide = {{
    {0x1100, 0x115F},
    {0x2E80, 0x303E},
    {0x3041, 0x33FF},
    {0x3400, 0x4DBF},
    {0x4E00, 0x9FFF},
    {0xA000, 0xA4CF},
    {0xA960, 0xA97C},
    {0xAC00, 0xD7A3},
    {0xF900, 0xFAFF},
    {0xFE30, 0xFE6F},
    {0xFF01, 0xFF60},
    {0xFFE0, 0xFFE6},
    {0x1F300, 0x1F64F},
    {0x1F680, 0x1F6FF},
    {0x1F900, 0x1FAFF},
    {0x20000, 0x3FFFD},
}};

}  // namespace

unsigned TerminalColumns(std::FILE* stream) {
    constexpr unsigned kUsualColumns = 80;
    const HANDLE handle = HandleOf(stream);
    if (!IsConsole(handle)) return 0;
    CONSOLE_SCREEN_BUFFER_INFO info{};
    // Only what is printed on has a width.
    if (GetConsoleScreenBufferInfo(handle, &info) == FALSE) return kUsualColumns;
    const int columns = info.srWindow.Right - info.srWindow.Left + 1;
    return columns > 0 ? static_cast<unsigned>(columns) : kUsualColumns;
}

void WriteText(std::FILE* stream, std::string_view text) {
    const HANDLE handle = HandleOf(stream);
    if (IsConsole(handle) && std::fflush(stream) == 0 && WriteToConsole(handle, WideText(text))) return;
    std::fwrite(text.data(), 1, text.size(), stream);
}

bool WriteInsteadOfWindow(std::FILE* stream, std::string_view text) {
    if (GetFileType(HandleOf(stream)) != FILE_TYPE_UNKNOWN) {
        WriteText(stream, text);
        return std::fflush(stream) == 0 && std::ferror(stream) == 0;
    }
    const std::wstring wide = WideText(text);
    return WriteToConsoleOfCaller(wide) ||
           MessageBoxW(nullptr, wide.c_str(), L"Permora", MB_OK | MB_ICONINFORMATION) != 0;
}

void OverwriteLine(std::FILE* stream, std::string_view text) {
    WriteText(stream, '\r' + std::string(text));
    const HANDLE handle = HandleOf(stream);
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (GetConsoleScreenBufferInfo(handle, &info) == FALSE) return;
    DWORD cleared = 0;
    const auto rest = static_cast<DWORD>(info.dwSize.X - info.dwCursorPosition.X);
    FillConsoleOutputCharacterW(handle, L' ', rest, info.dwCursorPosition, &cleared);
}

int ColumnsOfCharacter(char32_t character) {
    if (character == 0) return 0;
    if (HasNoPicture(character)) return -1;
    if (IsIn(kStandOnOthers, character)) return 0;
    return IsIn(kWide, character) ? 2 : 1;
}

}  // namespace permora
