#include "platform/process_start.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

namespace permora {

void PrepareProcess() {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        // The lowest number that is free is this one. A folder that is only held can neither be read nor
        // written, and it is always there.
        if (fcntl(stream, F_GETFD) < 0) (void)!open("/", O_PATH | O_DIRECTORY);
    }
    std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace permora
