#include "browser/file_list.h"

#include <algorithm>
#include <type_traits>

#include "security/text_conversion.h"

namespace permora {
namespace {

// The system's limit, in units of the text.
constexpr std::size_t kLongestPath = 32'767;

template <class Unit>
constexpr bool IsSeparator(Unit unit) {
    return unit == Unit{'\\'} || unit == Unit{'/'};
}

template <class Unit>
constexpr bool IsInNoName(Unit unit) {
    constexpr std::string_view kReserved = ":*?\"<>|";
    return static_cast<std::make_unsigned_t<Unit>>(unit) < ' ' ||
           std::ranges::any_of(kReserved, [unit](char each) { return unit == static_cast<Unit>(each); });
}

template <class Unit>
constexpr bool IsLetter(Unit unit) {
    return (unit >= Unit{'a'} && unit <= Unit{'z'}) || (unit >= Unit{'A'} && unit <= Unit{'Z'});
}

// The system drops dots and blanks at the end of a name, which would then name another object.
template <class Unit>
bool IsName(std::basic_string_view<Unit> name) {
    return name.back() != Unit{'.'} && name.back() != Unit{' '} &&
           std::ranges::none_of(name, [](Unit unit) { return IsInNoName(unit); });
}

template <class Unit>
bool HasShapeOfFile(std::basic_string_view<Unit> path) {
    if (path.size() > kLongestPath || path.size() < 3 || IsSeparator(path.back())) return false;
    const bool isOnDrive = IsLetter(path[0]) && path[1] == Unit{':'} && IsSeparator(path[2]);
    const bool isOnServer = IsSeparator(path[0]) && IsSeparator(path[1]);
    if (!isOnDrive && !isOnServer) return false;
    path.remove_prefix(2);
    std::size_t names = 0;
    while (!path.empty()) {
        const auto end = std::ranges::find_if(path, [](Unit unit) { return IsSeparator(unit); });
        const auto name = path.substr(0, static_cast<std::size_t>(end - path.begin()));
        if (!name.empty() && !IsName(name)) return false;
        if (!name.empty()) ++names;
        path.remove_prefix(std::min(name.size() + 1, path.size()));
    }
    constexpr std::size_t kServerAndShare = 2;
    return names > (isOnDrive ? 0 : kServerAndShare);
}

// Whether all surrogates are in pairs.
bool IsWellFormed(std::basic_string_view<WCHAR> text) {
    const auto isBetween = [](WCHAR unit, unsigned int first, unsigned int last) {
        return unit >= first && unit <= last;
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isBetween(text[i], 0xDC00, 0xDFFF)) return false;
        if (!isBetween(text[i], 0xD800, 0xDBFF)) continue;
        ++i;
        if (i == text.size() || !isBetween(text[i], 0xDC00, 0xDFFF)) return false;
    }
    return true;
}

}  // namespace

std::string FileListOf(std::string_view prefix, std::span<const std::string> names) {
    std::string list;
    for (const std::string& name : names) {
        list += prefix;
        list += name;
        list += '\0';
    }
    return list + '\0';
}

bool IsPathOfFile(std::string_view path) {
    std::basic_string<WCHAR> wide;
    return HasShapeOfFile(path) && WideToAnsi(AnsiToWide(path, wide)) == path;
}

bool IsPathOfFile(std::basic_string_view<WCHAR> path) {
    return HasShapeOfFile(path) && IsWellFormed(path);
}

}  // namespace permora
