#include "platform/linux/files/command_line.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <fstream>

#include "platform/api/errors.h"
#include "platform/api/system.h"
#include "platform/host_path.h"
#include "platform/linux/files/paths.h"

namespace permora::host {
namespace {

std::string QuotedArgument(const std::string& text) {
    std::string quoted = "\"";
    for (const char character : text) {
        if (character == '"') quoted += '\\';
        quoted += character;
    }
    return quoted + '"';
}

// In the host's form; empty when it cannot be read.
std::string ProgramPath() {
    std::array<char, PATH_MAX> program{};
    const ssize_t length = readlink("/proc/self/exe", program.data(), program.size() - 1);
    return length > 0 ? program.data() : "";
}

std::string CurrentCommandLine() {
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    std::vector<std::string> words;
    for (std::string word; std::getline(file, word, '\0');)
        words.push_back(word);
    if (!words.empty()) words.erase(words.begin());  // whatever the program was called by
    return CommandLineOf(ProgramPath(), words);
}

}  // namespace

std::string CommandLineOf(const std::string& program, const std::vector<std::string>& arguments) {
    std::string line = QuotedArgument(PathFromHost(program));
    for (const std::string& argument : arguments) {
        // A shown path has no double quotes.
        const bool isPath = !argument.empty() && argument.front() != '-';
        line += ' ' + QuotedArgument(isPath ? PathFromArgument(argument.c_str()) : argument);
    }
    return line;
}

}  // namespace permora::host

LPSTR WINAPI GetCommandLineA() {
    static std::string line = permora::host::CurrentCommandLine();
    return line.data();
}

DWORD WINAPI GetModuleFileNameA(HMODULE module, LPSTR path, DWORD size) {
    using namespace permora::host;
    const auto fail = [](DWORD error) {
        SetLastError(error);
        return DWORD{0};
    };
    if (module != nullptr) return fail(ERROR_MOD_NOT_FOUND);
    if (size == 0) return fail(ERROR_INSUFFICIENT_BUFFER);
    const std::string program = ProgramPath();
    if (program.empty()) return fail(ERROR_FILE_NOT_FOUND);
    const std::string shown = PathFromHost(program);
    const std::size_t length = std::min<std::size_t>(shown.size(), size - 1);
    path[shown.copy(path, length)] = '\0';
    if (length == shown.size()) return static_cast<DWORD>(length);
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return size;
}
