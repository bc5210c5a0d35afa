#include "platform/linux/base/letter_case.h"

#include <locale.h>
#include <cwctype>

#include "platform/api/text.h"
#include "platform/linux/base/wide_text.h"

namespace {

// The letters of all scripts, independent of the user's language: names sort the same way for everybody.
locale_t AllLetters() {
    static const locale_t kLocale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return kLocale;
}

}  // namespace

DWORD WINAPI CharUpperBuffW(LPWSTR text, DWORD count) {
    const locale_t letters = AllLetters();
    for (WCHAR* unit = text; unit != text + count; ++unit) {
        const wint_t capital = letters != nullptr ? towupper_l(*unit, letters) : std::towupper(*unit);
        if (capital <= 0xFFFF) *unit = static_cast<WCHAR>(capital);
    }
    return count;
}

std::string permora::host::InSmallLetters(std::string_view text) {
    const locale_t letters = AllLetters();
    std::u16string wide = ToWide(text);
    for (char16_t& unit : wide) {
        const wint_t small = letters != nullptr ? towlower_l(unit, letters) : std::towlower(unit);
        if (small <= 0xFFFF) unit = static_cast<char16_t>(small);
    }
    return ToAnsi(wide);
}
