#include "platform/nt/well_known_sid_types.h"

#include <cstddef>
#include <cstdint>
#include <iterator>

namespace permora::nt {
namespace {

// The numbers after the authority; for kOfDomain, the relative id below a domain's SID.
struct Row {
    enum Kind : std::uint8_t { kAuthorityAlone, kOneSub, kBuiltinAlias, kOfDomain };
    Kind kind;
    std::uint8_t authority;
    std::uint32_t id;
};

constexpr std::uint8_t kNtAuthorityByte = 5;
constexpr std::uint32_t kBuiltinDomain = 32;

constexpr Row Universal(std::uint8_t authority, std::uint32_t id) {
    return {Row::kOneSub, authority, id};
}
constexpr Row Nt(std::uint32_t id) {
    return {Row::kOneSub, kNtAuthorityByte, id};
}
constexpr Row Alias(std::uint32_t id) {
    return {Row::kBuiltinAlias, kNtAuthorityByte, id};
}
constexpr Row OfDomain(std::uint32_t id) {
    return {Row::kOfDomain, kNtAuthorityByte, id};
}

// By type. The comments give the number of the line's first one.
// clang-format off
constexpr Row kRows[] = {
    Universal(0, 0), Universal(1, 0), Universal(2, 0),                                       // 0: null, world, local
    Universal(3, 0), Universal(3, 1), Universal(3, 2), Universal(3, 3),                      // 3: creators
    {Row::kAuthorityAlone, kNtAuthorityByte, 0},                                             // 7: the NT authority
    Nt(1), Nt(2), Nt(3), Nt(4), Nt(6), Nt(7), Nt(8), Nt(9), Nt(10), Nt(11), Nt(12), Nt(13),  // 8: dial-up to terminal server
    Nt(14), Nt(5), Nt(18), Nt(19), Nt(20), Nt(kBuiltinDomain),                               // 20: remote log-on, log-on ids, system, services, built-in
    Alias(544), Alias(545), Alias(546), Alias(547), Alias(548), Alias(549),                  // 26: Administrators to Server Operators
    Alias(550), Alias(551), Alias(552), Alias(554), Alias(555), Alias(556),                  // 32: Print Operators to Network Configuration Operators
    OfDomain(500), OfDomain(501), OfDomain(502), OfDomain(512), OfDomain(513),               // 38: Administrator to Domain Users
    OfDomain(514), OfDomain(515), OfDomain(516), OfDomain(517), OfDomain(518),               // 43: Domain Guests to Schema Admins
    OfDomain(519), OfDomain(520), OfDomain(553),                                             // 48: Enterprise Admins to RAS servers
};
// clang-format on
static_assert(std::size(kRows) == kLastWellKnownSidType + 1);

}  // namespace

std::optional<Sid> SidOfWellKnownType(int type, const Sid* domain) {
    if (type < 0 || type > kLastWellKnownSidType) return std::nullopt;
    const Row& row = kRows[static_cast<std::size_t>(type)];
    switch (row.kind) {
        case Row::kAuthorityAlone:
            return Sid(row.authority, {});
        case Row::kOneSub:
            return Sid(row.authority, {row.id});
        case Row::kBuiltinAlias:
            return Sid(row.authority, {kBuiltinDomain, row.id});
        case Row::kOfDomain:
            return domain != nullptr ? domain->Append(row.id) : std::nullopt;
    }
    return std::nullopt;
}

}  // namespace permora::nt
