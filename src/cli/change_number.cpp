#include "cli/change_number.h"

#include <charconv>

namespace permora {

ChangeNumber::ChangeNumber(OptionPlace place, const char* description)
    : TextOption(place, "CHANGE", "", description) {
    Describe({.kind = ValueKind::kChange});
}

std::string ChangeNumber::Interpret(const std::string& text) {
    std::int64_t read = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read);
    if (error != std::errc() || end != text.data() + text.size() || read <= 0)
        return text + ": not the number of a change";
    number = read;
    return {};
}

}  // namespace permora
