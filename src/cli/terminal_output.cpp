#include "cli/terminal_output.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "cli/terminal_text.h"
#include "platform/terminal.h"

namespace permora {
namespace {

void Write(std::FILE* stream, std::string_view text) {
    std::string printable;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        printable += PrintableText(line);
        if (line.size() < text.size()) printable += '\n';
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    WriteText(stream, printable);
}

}  // namespace

void Print(std::string_view text) {
    Write(stdout, text);
}

bool IsAllPrinted() {
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
}

void PrintError(std::string_view text) {
    Write(stderr, text);
}

void OverwriteErrorLine(std::string_view text) {
    OverwriteLine(stderr, PrintableText(text));
}

}  // namespace permora
