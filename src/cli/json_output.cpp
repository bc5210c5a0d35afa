#include "cli/json_output.h"

#include "cli/listing.h"

namespace permora {

void PrintJson(const Json& document) {
    Print(document.dump(2, ' ', false, Json::error_handler_t::replace) + '\n');
}

void PrintJsonObjects(const Json& objects, std::size_t paths) {
    if (paths != 1) {
        PrintJson(objects);
    } else if (!objects.empty()) {
        PrintJson(objects.front());
    }
}

}  // namespace permora
