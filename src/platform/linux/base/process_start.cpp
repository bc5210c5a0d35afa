#include "platform/process_start.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

#include "platform/ascii.h"
#include "platform/linux/base/foreign_environment.h"

namespace permora {
namespace {

// Only variables with ordinary names, since these are printed on a terminal.
std::string Listed(const std::vector<std::string>& variables) {
    std::string list;
    for (const std::string& variable : variables)
        list += (list.empty() ? "" : ", ") + variable;
    std::ranges::replace_if(
        list,
        [](char c) {
            return IsControl(c) || !IsAscii({&c, 1});
        },
        '?');
    return list;
}

}  // namespace

void PrepareProcess() {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        // This is the lowest free descriptor. "/" always exists, and with O_PATH it can be neither read nor
        // written.
        if (fcntl(stream, F_GETFD) < 0) (void)!open("/", O_PATH | O_DIRECTORY);
    }
    std::signal(SIGXFSZ, SIG_IGN);
    std::vector<std::string> variables = host::ForgetForeignPlaces();
    if (variables.empty()) return;
    std::ranges::sort(variables);
    std::fprintf(stderr,
                 "permora: ignored in the environment, since others than root decide what is there: %s\n",
                 Listed(variables).c_str());
}

}  // namespace permora
