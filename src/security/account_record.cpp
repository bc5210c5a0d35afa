#include "security/account_record.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>
#include <vector>

#include "platform/api/errors.h"

namespace permora {
namespace {

// A copy of `sid` in a block of its own; null without memory.
UniqueLocal<void> CopyOfSid(PSID sid) {
    const DWORD length = GetLengthSid(sid);
    UniqueLocal<void> copy(LocalAlloc(LMEM_FIXED, length));
    if (!copy || CopySid(length, copy.get(), sid) == FALSE) return nullptr;
    return copy;
}

// Most names fit; a longer one costs a second look-up.
constexpr DWORD kFirstNameSize = 64;

}  // namespace

AccountRecord::AccountRecord(const AccountRecord& other) {
    *this = other;
}

AccountRecord& AccountRecord::operator=(const AccountRecord& other) {
    if (this == &other) return *this;
    Clear();
    if (other.sid) {
        sid = CopyOfSid(other.sid.get());
        if (!sid) return *this;
    }
    use = other.use;
    name = other.name;
    domain = other.domain;
    sidText = other.sidText;
    machine = other.machine;
    return *this;
}

void AccountRecord::Clear() {
    *this = AccountRecord();
}

bool AccountRecord::SetSid(PSID newSid, std::string newMachine) {
    if (newSid == nullptr) return false;
    UniqueLocal<void> copy = CopyOfSid(newSid);
    if (!copy) return false;
    Clear();
    sid = std::move(copy);
    machine = std::move(newMachine);
    return true;
}

bool AccountRecord::SetSid(PSID newSid) {
    return SetSid(newSid, machine);
}

bool AccountRecord::Lookup() {
    if (!sid) return false;
    std::array<char, kFirstNameSize> firstName{};
    std::array<char, kFirstNameSize> firstDomain{};
    DWORD nameSize = kFirstNameSize;
    DWORD domainSize = kFirstNameSize;
    SID_NAME_USE foundUse = SidTypeInvalid;
    if (LookupAccountSidA(machine.empty() ? nullptr : machine.c_str(), sid.get(), firstName.data(), &nameSize,
                          firstDomain.data(), &domainSize, &foundUse) != FALSE) {
        name = firstName.data();
        domain = firstDomain.data();
        use = foundUse;
        return true;
    }
    switch (GetLastError()) {
        case ERROR_INSUFFICIENT_BUFFER:
            return LookupLongNames(nameSize, domainSize);
        case ERROR_NONE_MAPPED:
            name.clear();
            domain.clear();
            use = SidTypeUnknown;
            return true;
        default:
            return false;
    }
}

bool AccountRecord::LookupLongNames(DWORD nameSize, DWORD domainSize) {
    // Of a text that did fit, the length without its NUL may have been reported.
    nameSize = std::max(nameSize, kFirstNameSize);
    domainSize = std::max(domainSize, kFirstNameSize);
    std::vector<char> longName(nameSize);
    std::vector<char> longDomain(domainSize);
    SID_NAME_USE foundUse = SidTypeInvalid;
    if (LookupAccountSidA(machine.c_str(), sid.get(), longName.data(), &nameSize, longDomain.data(),
                          &domainSize, &foundUse) == FALSE) {
        use = SidTypeInvalid;
        return false;
    }
    name = longName.data();
    domain = longDomain.data();
    use = foundUse;
    return true;
}

std::string AccountRecord::GetName() {
    return Lookup() ? name : std::string();
}

std::string AccountRecord::GetDomain() {
    return Lookup() ? domain : std::string();
}

std::string AccountRecord::GetSidText() {
    if (!sid) return {};
    const BYTE(&authority)[6] = GetSidIdentifierAuthority(sid.get())->Value;
    std::string text = "S-1-";
    if (authority[0] != 0 || authority[1] != 0) {
        text += "0x";
        for (const BYTE byte : authority) {
            constexpr const char* kDigits = "0123456789abcdef";
            text += kDigits[byte >> 4];
            text += kDigits[byte & 0xF];
        }
    } else {
        DWORD number = 0;
        for (std::size_t i = 2; i < 6; ++i)
            number = number << 8 | authority[i];
        text += std::to_string(number);
    }
    const BYTE count = *GetSidSubAuthorityCount(sid.get());
    for (DWORD i = 0; i < count; ++i)
        text += '-' + std::to_string(*GetSidSubAuthority(sid.get(), i));
    sidText = text;
    return text;
}

bool IsSameAccount(const AccountRecord& one, const AccountRecord& other) {
    return one.sid && other.sid && EqualSid(one.sid.get(), other.sid.get()) != FALSE;
}

std::string QualifiedAccountName(const std::string& domain, const std::string& name) {
    return domain.empty() ? name : domain + '\\' + name;
}

std::string AccountDisplayName(AccountRecord& record) {
    if (!record.sid || IsValidSid(record.sid.get()) == FALSE) return {};
    const std::string text = QualifiedAccountName(record.GetDomain(), record.GetName());
    return text.empty() ? record.GetSidText() : text;
}

}  // namespace permora
