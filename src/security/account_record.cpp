#include "security/account_record.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <vector>

#include "platform/accounts.h"
#include "platform/api/errors.h"
#include "platform/raw_security.h"

namespace permora {
namespace {

// Most names fit; a longer one costs a second look-up.
constexpr DWORD kFirstNameSize = 64;

}  // namespace

bool AccountRecord::SetSid(PSID newSid) {
    const std::optional<nt::Sid> value = SidOf(newSid);
    if (value) *this = {value, SidTypeInvalid, {}, {}};
    return value.has_value();
}

PSID AccountRecord::RawSid() const {
    return sid ? permora::RawSid(*sid) : nullptr;
}

bool AccountRecord::Lookup() {
    if (!sid) return false;
    std::array<char, kFirstNameSize> firstName{};
    std::array<char, kFirstNameSize> firstDomain{};
    DWORD nameSize = kFirstNameSize;
    DWORD domainSize = kFirstNameSize;
    SID_NAME_USE foundUse = SidTypeInvalid;
    if (LookupAccountSidA(nullptr, RawSid(), firstName.data(), &nameSize, firstDomain.data(), &domainSize,
                          &foundUse) != FALSE) {
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
    // The reported size of a text that did fit may not count its NUL.
    nameSize = std::max(nameSize, kFirstNameSize);
    domainSize = std::max(domainSize, kFirstNameSize);
    std::vector<char> longName(nameSize);
    std::vector<char> longDomain(domainSize);
    SID_NAME_USE foundUse = SidTypeInvalid;
    if (LookupAccountSidA(nullptr, RawSid(), longName.data(), &nameSize, longDomain.data(), &domainSize,
                          &foundUse) == FALSE) {
        use = SidTypeInvalid;
        return false;
    }
    name = longName.data();
    domain = longDomain.data();
    use = foundUse;
    return true;
}

std::string AccountRecord::GetSidText() const {
    return sid ? sid->ToText() : std::string();
}

bool IsSameAccount(const AccountRecord& one, const AccountRecord& other) {
    return one.sid && one.sid == other.sid;
}

std::string QualifiedAccountName(const std::string& domain, const std::string& name) {
    return domain.empty() ? name : domain + '\\' + name;
}

std::string AccountDisplayName(AccountRecord& record) {
    const std::string text =
        record.Lookup() ? QualifiedAccountName(record.domain, record.name) : std::string();
    return text.empty() ? record.GetSidText() : text;
}

std::string AccountNameSoFar(AccountRecord& record) {
    AccountName found;
    if (!record.sid) return {};
    if (FindAccountName(*record.sid, std::chrono::milliseconds(0), found) != NameAnswer::kKnown)
        return record.GetSidText();
    record.name = found.name;
    record.domain = found.domain;
    record.use = found.use;
    return QualifiedAccountName(found.domain, found.name);
}

}  // namespace permora
