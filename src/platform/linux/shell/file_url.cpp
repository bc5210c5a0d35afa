#include "platform/file_url.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <optional>

#include "platform/linux/base/ascii.h"
#include "platform/linux/files/drives.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/files/path_text.h"
#include "platform/linux/files/paths.h"

namespace permora {
namespace {

constexpr std::string_view kScheme = "file:";
constexpr std::string_view kHexDigits = "0123456789ABCDEF";

// What stands for itself in a path: letters, digits, and the marks that mean nothing there.
bool IsPlainInUrl(char character) {
    constexpr std::string_view kMarks = "-_.~!$&'()*+,=:@";
    const bool isLetter = (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
    return isLetter || (character >= '0' && character <= '9') || kMarks.find(character) != kMarks.npos;
}

std::string Encode(std::string_view hostName) {
    std::string encoded;
    encoded.reserve(hostName.size());
    for (const char character : hostName) {
        if (IsPlainInUrl(character)) {
            encoded += character;
            continue;
        }
        const auto byte = static_cast<unsigned char>(character);
        encoded += {'%', kHexDigits[byte >> 4U], kHexDigits[byte & 0xFU]};
    }
    return encoded;
}

// -1 for what is no hexadecimal digit.
int DigitOf(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    const char lower = host::LowerLetter(character);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// Bytes beyond ASCII are taken as they are, as many programs write them. Neither a NUL nor a slash may hide
// in a name.
std::optional<std::string> Decode(std::string_view encoded) {
    std::string decoded;
    decoded.reserve(encoded.size());
    for (std::size_t i = 0; i < encoded.size(); ++i) {
        const auto byte = static_cast<unsigned char>(encoded[i]);
        if (byte <= ' ' || byte == 0x7F || byte == '?' || byte == '#') return std::nullopt;
        if (byte != '%') {
            decoded += encoded[i];
            continue;
        }
        if (encoded.size() - i < 3) return std::nullopt;
        const int high = DigitOf(encoded[i + 1]);
        const int low = DigitOf(encoded[i + 2]);
        if (high < 0 || low < 0) return std::nullopt;
        const auto character = static_cast<char>(high * 16 + low);
        if (character == '\0' || character == '/') return std::nullopt;
        decoded += character;
        i += 2;
    }
    return decoded;
}

// Nobody, or this machine by one of its names.
bool IsHere(std::string_view computer) {
    std::array<char, 256> name{};
    if (computer.empty() || host::EqualsIgnoringCase(computer, "localhost")) return true;
    return gethostname(name.data(), name.size() - 1) == 0 && host::EqualsIgnoringCase(computer, name.data());
}

bool IsPlainPath(std::string_view hostPath) {
    if (!hostPath.starts_with('/')) return false;
    while (!hostPath.empty()) {
        hostPath.remove_prefix(1);
        const std::string_view component = hostPath.substr(0, hostPath.find('/'));
        if (component == "." || component == "..") return false;
        hostPath.remove_prefix(component.size());
    }
    return true;
}

}  // namespace

std::string FileUrlPart(const std::string& name) {
    std::string hostName;
    return host::DecodeName(name, hostName) ? Encode(hostName) : std::string();
}

std::string FileUrlOf(const std::string& path) {
    host::PathText text;
    if (host::ParsePath(path, text) != ERROR_SUCCESS || text.drive == 0 ||
        text.start != host::PathText::Start::kRoot)
        return {};
    const auto drive = host::FindDrive(text.drive);
    if (!drive) return {};
    std::string url = "file://";
    for (std::string_view rest = drive->hostRoot; rest.size() > 1;) {
        rest.remove_prefix(1);
        const std::string_view component = rest.substr(0, rest.find('/'));
        url += '/' + Encode(component);
        rest.remove_prefix(component.size());
    }
    for (const std::string_view component : text.components) {
        const std::string part = FileUrlPart(std::string(component));
        if (part.empty()) return {};
        url += '/' + part;
    }
    return url;
}

std::string PathFromFileUrl(std::string_view url) {
    if (!host::EqualsIgnoringCase(url.substr(0, kScheme.size()), kScheme)) return {};
    url.remove_prefix(kScheme.size());
    if (url.starts_with("//")) {
        url.remove_prefix(2);
        const std::string_view computer = url.substr(0, url.find('/'));
        if (!IsHere(computer)) return {};
        url.remove_prefix(computer.size());
    }
    const auto hostPath = Decode(url);
    return hostPath && IsPlainPath(*hostPath) ? host::PathFromHost(*hostPath) : std::string();
}

}  // namespace permora
