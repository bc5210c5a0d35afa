#include "platform/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace permora {

unsigned TerminalColumns(std::FILE* stream) {
    constexpr unsigned kUsualColumns = 80;
    const int descriptor = fileno(stream);
    if (isatty(descriptor) == 0) return 0;
    winsize size{};
    if (ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsualColumns;
    return size.ws_col;
}

}  // namespace permora
