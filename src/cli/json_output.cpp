#include "cli/json_output.h"

#include "cli/terminal_output.h"

namespace permora {

void JsonPrinter::Add(const Json& result) {
    Print(document.Add(result));
}

void JsonPrinter::End(const Json& rest) {
    Print(document.End(rest));
}

void PrintJson(const std::string& command, const Json& results, const Json& rest) {
    JsonPrinter printer(command);
    for (const Json& result : results)
        printer.Add(result);
    printer.End(rest);
}

}  // namespace permora
