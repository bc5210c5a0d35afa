#include "platform/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>
#include <wchar.h>

#include <string>

namespace permora {

unsigned TerminalColumns(std::FILE* stream) {
    constexpr unsigned kUsualColumns = 80;
    const int descriptor = fileno(stream);
    if (isatty(descriptor) == 0) return 0;
    winsize size{};
    if (ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsualColumns;
    return size.ws_col;
}

void WriteText(std::FILE* stream, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stream);
}

bool WriteInsteadOfWindow(std::FILE* stream, std::string_view text) {
    WriteText(stream, text);
    return std::fflush(stream) == 0 && std::ferror(stream) == 0;
}

void OverwriteLine(std::FILE* stream, std::string_view text) {
    WriteText(stream, '\r' + std::string(text) + "\x1b[K");
}

int ColumnsOfCharacter(char32_t character) {
    return wcwidth(static_cast<wchar_t>(character));
}

}  // namespace permora
