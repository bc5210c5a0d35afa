#include "cli/json_output.h"

#include "cli/terminal_output.h"

namespace permora {

void PrintJson(const Json& document) {
    Print(JsonText(document) + '\n');
}

void JsonArrayPrinter::Add(const Json& element) {
    Print(array.Add(element));
}

void JsonArrayPrinter::End() {
    Print(array.End());
}

void PrintJsonObjects(const Json& objects, std::size_t paths) {
    if (paths != 1)
        PrintJson(objects);
    else if (!objects.empty())
        PrintJson(objects.front());
}

}  // namespace permora
