#include "platform/linux/files/command_line.h"

#include <unistd.h>

#include <array>
#include <climits>
#include <fstream>

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

std::string CurrentCommandLine() {
    std::array<char, PATH_MAX> program{};
    const ssize_t length = readlink("/proc/self/exe", program.data(), program.size() - 1);
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    std::vector<std::string> words;
    for (std::string word; std::getline(file, word, '\0');)
        words.push_back(word);
    if (!words.empty()) words.erase(words.begin());  // whatever the program was called by
    return CommandLineOf(length > 0 ? program.data() : "", words);
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
