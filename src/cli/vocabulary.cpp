#include "cli/vocabulary.h"

#include <algorithm>
#include <charconv>
#include <vector>

#include "platform/ascii.h"
#include "security/access_rights.h"
#include "wizard/account_rights.h"

namespace permora {
namespace {

// The bits that mean something in the entry of a file or folder: the rights themselves, the generic rights
// that stand for several of them, and the right to the system access list.
constexpr DWORD kKnownMaskBits =
    FILE_ALL_ACCESS | GENERIC_ALL | GENERIC_EXECUTE | GENERIC_WRITE | GENERIC_READ | ACCESS_SYSTEM_SECURITY;

// The form in which names are compared: lower case, blanks only between words, none beside a slash.
std::string Normalized(std::string_view text) {
    std::string normalized;
    bool blankPending = false;
    for (char letter : text) {
        if (letter == ' ' || letter == '\t') {
            blankPending = true;
            continue;
        }
        const bool afterWord = !normalized.empty() && normalized.back() != '/';
        if (blankPending && afterWord && letter != '/') normalized += ' ';
        blankPending = false;
        normalized += LowerLetter(letter);
    }
    return normalized;
}

// A whole text as an unsigned number of 32 bits: hexadecimal after 0x, else decimal.
std::optional<DWORD> ParseNumber(std::string_view text) {
    int base = 10;
    if (text.starts_with("0x")) {
        base = 16;
        text.remove_prefix(2);
    }
    DWORD number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

// The items between the commas; an empty list has one empty item.
std::vector<std::string_view> ItemsOf(std::string_view list) {
    std::vector<std::string_view> items;
    for (;;) {
        items.push_back(list.substr(0, list.find(',')));
        if (items.back().size() == list.size()) return items;
        list.remove_prefix(items.back().size() + 1);
    }
}

std::optional<DWORD> RightByName(const std::string& normalized) {
    for (const AccessRight& right : kAccessRights) {
        if (normalized == Normalized(right.listName) || normalized == Normalized(right.rowName) ||
            normalized == Normalized(right.dialogLabel)) {
            return right.bits;
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<DWORD> ParseRights(std::string_view list, std::string& problem) {
    DWORD mask = 0;
    for (const std::string_view item : ItemsOf(list)) {
        const std::string name = Normalized(item);
        std::optional<DWORD> bits = ParseNumber(name);
        if (!bits) bits = RightByName(name);
        if (!bits) {
            problem = "no right is called \"" + std::string(item) + "\"";
            return std::nullopt;
        }
        if ((*bits & ~kKnownMaskBits) != 0) {
            problem = "the mask " + std::string(item) + " has bits that no right stands for";
            return std::nullopt;
        }
        mask |= *bits;
    }
    mask &= ~DWORD{SYNCHRONIZE};
    if (mask == 0) {
        problem = "the list names no right";
        return std::nullopt;
    }
    return mask;
}

bool NamesFullControl(std::string_view list) {
    return std::ranges::any_of(ItemsOf(list), [](std::string_view item) {
        return RightByName(Normalized(item)) == FULL_CONTROL_RIGHTS;
    });
}

std::optional<DWORD> ParseCombination(std::string_view text) {
    const std::string name = Normalized(text);
    for (const UsableCombination& combination : kUsableCombinations)
        if (name == Normalized(combination.text)) return combination.mask;
    return std::nullopt;
}

std::optional<int> ParseScope(std::string_view text) {
    const std::string name = Normalized(text);
    for (std::size_t i = 0; i < kInheritanceScopes.size(); ++i) {
        const int index = static_cast<int>(i);
        if (name == std::to_string(index) || name == Normalized(kInheritanceScopes.at(i).text)) return index;
    }
    return std::nullopt;
}

}  // namespace permora
