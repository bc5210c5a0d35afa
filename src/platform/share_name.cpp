#include "platform/share_name.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "platform/api/shares.h"

namespace permora {
namespace {

using WideView = std::basic_string_view<WCHAR>;

constexpr std::string_view kForbidden = "\"/\\[]:|<>+=;,*?";
constexpr std::array<std::string_view, 4> kReserved = {"IPC$", "ADMIN$", "PIPE", "MAILSLOT"};

bool IsForbidden(WCHAR unit) {
    constexpr WCHAR kFirstPrintable = 0x20;
    constexpr WCHAR kDelete = 0x7F;
    return unit < kFirstPrintable || unit == kDelete ||
           (unit < kDelete && kForbidden.find(static_cast<char>(unit)) != kForbidden.npos);
}

bool IsHighHalf(WCHAR unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLowHalf(WCHAR unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

bool HasHalfCharacter(WideView name) {
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (IsLowHalf(name[i])) return true;
        if (!IsHighHalf(name[i])) continue;
        if (++i == name.size() || !IsLowHalf(name[i])) return true;
    }
    return false;
}

bool EqualsReserved(WideView name, std::string_view reserved) {
    return std::equal(name.begin(), name.end(), reserved.begin(), reserved.end(),
                      [](WCHAR unit, char capital) {
                          const bool isSmall = unit >= u'a' && unit <= u'z';
                          return (isSmall ? unit - u'a' + u'A' : unit) == capital;
                      });
}

}  // namespace

ShareNameFault FindShareNameFault(WideView name) {
    if (name.empty()) return ShareNameFault::kEmpty;
    if (name.size() > NNLEN) return ShareNameFault::kTooLong;
    if (std::any_of(name.begin(), name.end(), IsForbidden) || HasHalfCharacter(name))
        return ShareNameFault::kForbiddenCharacter;
    if (name.front() == u' ' || name.back() == u' ') return ShareNameFault::kOuterBlank;
    const bool isReserved =
        std::any_of(kReserved.begin(), kReserved.end(),
                    [name](std::string_view reserved) { return EqualsReserved(name, reserved); });
    return isReserved ? ShareNameFault::kReserved : ShareNameFault::kNone;
}

}  // namespace permora
