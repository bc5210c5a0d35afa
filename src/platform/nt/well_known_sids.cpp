#include "platform/nt/well_known_sids.h"

#include <algorithm>

namespace permora::nt {
namespace {

constexpr std::uint64_t kNullAuthority = 0;
constexpr std::uint64_t kWorldAuthority = 1;
constexpr std::uint64_t kLocalAuthority = 2;
constexpr std::uint64_t kCreatorAuthority = 3;
constexpr std::uint64_t kNtAuthority = 5;
constexpr std::uint64_t kAppPackageAuthority = 15;
constexpr std::uint64_t kLabelAuthority = 16;
constexpr std::uint64_t kAuthenticationAuthority = 18;

constexpr std::string_view kNt = "NT AUTHORITY";
constexpr std::string_view kBuiltin = "BUILTIN";
constexpr std::string_view kPackages = "APPLICATION PACKAGE AUTHORITY";
constexpr std::string_view kLabels = "Mandatory Label";

// The table's order: by authority, then by sub-authorities as words of a dictionary.
bool ComesBefore(const Sid& one, const Sid& other) {
    if (one.Authority() != other.Authority()) return one.Authority() < other.Authority();
    const std::size_t common = std::min(one.SubAuthorityCount(), other.SubAuthorityCount());
    for (std::size_t i = 0; i < common; ++i)
        if (one.SubAuthority(i) != other.SubAuthority(i)) return one.SubAuthority(i) < other.SubAuthority(i);
    return one.SubAuthorityCount() < other.SubAuthorityCount();
}

constexpr RelativeAccount kRelativeAccounts[] = {
    {498, SidUse::kGroup, "RO", "Enterprise Read-only Domain Controllers"},
    {500, SidUse::kUser, "LA", "Administrator"},
    {501, SidUse::kUser, "LG", "Guest"},
    {502, SidUse::kUser, "", "krbtgt"},
    {503, SidUse::kUser, "", "DefaultAccount"},
    {504, SidUse::kUser, "", "WDAGUtilityAccount"},
    {512, SidUse::kGroup, "DA", "Domain Admins"},
    {513, SidUse::kGroup, "DU", "Domain Users"},
    {514, SidUse::kGroup, "DG", "Domain Guests"},
    {515, SidUse::kGroup, "DC", "Domain Computers"},
    {516, SidUse::kGroup, "DD", "Domain Controllers"},
    {517, SidUse::kAlias, "CA", "Cert Publishers"},
    {518, SidUse::kGroup, "SA", "Schema Admins"},
    {519, SidUse::kGroup, "EA", "Enterprise Admins"},
    {520, SidUse::kGroup, "PA", "Group Policy Creator Owners"},
    {521, SidUse::kGroup, "", "Read-only Domain Controllers"},
    {522, SidUse::kGroup, "CN", "Cloneable Domain Controllers"},
    {525, SidUse::kGroup, "AP", "Protected Users"},
    {526, SidUse::kGroup, "KA", "Key Admins"},
    {527, SidUse::kGroup, "EK", "Enterprise Key Admins"},
    {553, SidUse::kAlias, "RS", "RAS and IAS Servers"},
    {571, SidUse::kAlias, "", "Allowed RODC Password Replication Group"},
    {572, SidUse::kAlias, "", "Denied RODC Password Replication Group"},
};

}  // namespace

std::span<const WellKnownSid> WellKnownSids() {
    constexpr SidUse kGroup = SidUse::kWellKnownGroup;
    constexpr SidUse kAlias = SidUse::kAlias;
    // clang-format off
    static const WellKnownSid kTable[] = {
        {{kNullAuthority, {0}}, kGroup, "", "", "NULL SID"},

        {{kWorldAuthority, {0}}, kGroup, "WD", "", "Everyone"},

        {{kLocalAuthority, {0}}, kGroup, "", "", "LOCAL"},
        {{kLocalAuthority, {1}}, kGroup, "", "", "CONSOLE LOGON"},

        {{kCreatorAuthority, {0}}, kGroup, "CO", "", "CREATOR OWNER"},
        {{kCreatorAuthority, {1}}, kGroup, "CG", "", "CREATOR GROUP"},
        {{kCreatorAuthority, {2}}, kGroup, "", "", "CREATOR OWNER SERVER"},
        {{kCreatorAuthority, {3}}, kGroup, "", "", "CREATOR GROUP SERVER"},
        {{kCreatorAuthority, {4}}, kGroup, "OW", "", "OWNER RIGHTS"},

        {{kNtAuthority, {1}}, kGroup, "", kNt, "DIALUP"},
        {{kNtAuthority, {2}}, kGroup, "NU", kNt, "NETWORK"},
        {{kNtAuthority, {3}}, kGroup, "", kNt, "BATCH"},
        {{kNtAuthority, {4}}, kGroup, "IU", kNt, "INTERACTIVE"},
        {{kNtAuthority, {6}}, kGroup, "SU", kNt, "SERVICE"},
        {{kNtAuthority, {7}}, kGroup, "AN", kNt, "ANONYMOUS LOGON"},
        {{kNtAuthority, {8}}, kGroup, "", kNt, "PROXY"},
        {{kNtAuthority, {9}}, kGroup, "ED", kNt, "ENTERPRISE DOMAIN CONTROLLERS"},
        {{kNtAuthority, {10}}, kGroup, "PS", kNt, "SELF"},
        {{kNtAuthority, {11}}, kGroup, "AU", kNt, "Authenticated Users"},
        {{kNtAuthority, {12}}, kGroup, "RC", kNt, "RESTRICTED"},
        {{kNtAuthority, {13}}, kGroup, "", kNt, "TERMINAL SERVER USER"},
        {{kNtAuthority, {14}}, kGroup, "", kNt, "REMOTE INTERACTIVE LOGON"},
        {{kNtAuthority, {15}}, kGroup, "", kNt, "This Organization"},
        {{kNtAuthority, {17}}, kGroup, "", kNt, "IUSR"},
        {{kNtAuthority, {18}}, kGroup, "SY", kNt, "SYSTEM"},
        {{kNtAuthority, {19}}, kGroup, "LS", kNt, "LOCAL SERVICE"},
        {{kNtAuthority, {20}}, kGroup, "NS", kNt, "NETWORK SERVICE"},

        {{kNtAuthority, {21, 0, 0, 0, 496}}, kGroup, "", kNt, "Compounded Authentication"},
        {{kNtAuthority, {21, 0, 0, 0, 497}}, kGroup, "", kNt, "Claims Valid"},

        {{kNtAuthority, {32}}, SidUse::kDomain, "", kBuiltin, "BUILTIN"},
        {{kNtAuthority, {32, 544}}, kAlias, "BA", kBuiltin, "Administrators"},
        {{kNtAuthority, {32, 545}}, kAlias, "BU", kBuiltin, "Users"},
        {{kNtAuthority, {32, 546}}, kAlias, "BG", kBuiltin, "Guests"},
        {{kNtAuthority, {32, 547}}, kAlias, "PU", kBuiltin, "Power Users"},
        {{kNtAuthority, {32, 548}}, kAlias, "AO", kBuiltin, "Account Operators"},
        {{kNtAuthority, {32, 549}}, kAlias, "SO", kBuiltin, "Server Operators"},
        {{kNtAuthority, {32, 550}}, kAlias, "PO", kBuiltin, "Print Operators"},
        {{kNtAuthority, {32, 551}}, kAlias, "BO", kBuiltin, "Backup Operators"},
        {{kNtAuthority, {32, 552}}, kAlias, "RE", kBuiltin, "Replicator"},
        {{kNtAuthority, {32, 553}}, kAlias, "", kBuiltin, "RAS Servers"},
        {{kNtAuthority, {32, 554}}, kAlias, "RU", kBuiltin, "Pre-Windows 2000 Compatible Access"},
        {{kNtAuthority, {32, 555}}, kAlias, "RD", kBuiltin, "Remote Desktop Users"},
        {{kNtAuthority, {32, 556}}, kAlias, "NO", kBuiltin, "Network Configuration Operators"},
        {{kNtAuthority, {32, 557}}, kAlias, "", kBuiltin, "Incoming Forest Trust Builders"},
        {{kNtAuthority, {32, 558}}, kAlias, "MU", kBuiltin, "Performance Monitor Users"},
        {{kNtAuthority, {32, 559}}, kAlias, "LU", kBuiltin, "Performance Log Users"},
        {{kNtAuthority, {32, 560}}, kAlias, "", kBuiltin, "Windows Authorization Access Group"},
        {{kNtAuthority, {32, 561}}, kAlias, "", kBuiltin, "Terminal Server License Servers"},
        {{kNtAuthority, {32, 562}}, kAlias, "", kBuiltin, "Distributed COM Users"},
        {{kNtAuthority, {32, 568}}, kAlias, "IS", kBuiltin, "IIS_IUSRS"},
        {{kNtAuthority, {32, 569}}, kAlias, "CY", kBuiltin, "Cryptographic Operators"},
        {{kNtAuthority, {32, 573}}, kAlias, "ER", kBuiltin, "Event Log Readers"},
        {{kNtAuthority, {32, 574}}, kAlias, "CD", kBuiltin, "Certificate Service DCOM Access"},
        {{kNtAuthority, {32, 575}}, kAlias, "RA", kBuiltin, "RDS Remote Access Servers"},
        {{kNtAuthority, {32, 576}}, kAlias, "ES", kBuiltin, "RDS Endpoint Servers"},
        {{kNtAuthority, {32, 577}}, kAlias, "MS", kBuiltin, "RDS Management Servers"},
        {{kNtAuthority, {32, 578}}, kAlias, "HA", kBuiltin, "Hyper-V Administrators"},
        {{kNtAuthority, {32, 579}}, kAlias, "AA", kBuiltin, "Access Control Assistance Operators"},
        {{kNtAuthority, {32, 580}}, kAlias, "RM", kBuiltin, "Remote Management Users"},
        {{kNtAuthority, {32, 581}}, kAlias, "", kBuiltin, "System Managed Accounts Group"},
        {{kNtAuthority, {32, 582}}, kAlias, "", kBuiltin, "Storage Replica Administrators"},
        {{kNtAuthority, {32, 583}}, kAlias, "", kBuiltin, "Device Owners"},
        {{kNtAuthority, {32, 584}}, kAlias, "HO", kBuiltin, "User Mode Hardware Operators"},
        {{kNtAuthority, {32, 585}}, kAlias, "SH", kBuiltin, "OpenSSH Users"},

        {{kNtAuthority, {33}}, kGroup, "WR", kNt, "WRITE RESTRICTED"},
        {{kNtAuthority, {64, 10}}, kGroup, "", kNt, "NTLM Authentication"},
        {{kNtAuthority, {64, 14}}, kGroup, "", kNt, "SChannel Authentication"},
        {{kNtAuthority, {64, 21}}, kGroup, "", kNt, "Digest Authentication"},
        {{kNtAuthority, {65, 1}}, kGroup, "", kNt, "This Organization Certificate"},
        {{kNtAuthority, {80, 0}}, kGroup, "", "NT SERVICE", "ALL SERVICES"},
        {{kNtAuthority, {80, 956008885, 3418522649, 1831038044, 1853292631, 2271478464}}, kGroup, "", "NT SERVICE",
         "TrustedInstaller"},
        {{kNtAuthority, {83, 0}}, kGroup, "", "NT VIRTUAL MACHINE", "Virtual Machines"},
        {{kNtAuthority, {84, 0, 0, 0, 0, 0}}, kGroup, "UD", kNt, "USER MODE DRIVERS"},
        {{kNtAuthority, {90, 0}}, kGroup, "", "Window Manager", "Window Manager Group"},
        {{kNtAuthority, {113}}, kGroup, "", kNt, "Local account"},
        {{kNtAuthority, {114}}, kGroup, "", kNt, "Local account and member of Administrators group"},
        {{kNtAuthority, {1000}}, kGroup, "", kNt, "Other Organization"},

        {{kAppPackageAuthority, {2, 1}}, kGroup, "AC", kPackages, "ALL APPLICATION PACKAGES"},
        {{kAppPackageAuthority, {2, 2}}, kGroup, "", kPackages, "ALL RESTRICTED APPLICATION PACKAGES"},

        {{kLabelAuthority, {0}}, SidUse::kLabel, "", kLabels, "Untrusted Mandatory Level"},
        {{kLabelAuthority, {4096}}, SidUse::kLabel, "LW", kLabels, "Low Mandatory Level"},
        {{kLabelAuthority, {8192}}, SidUse::kLabel, "ME", kLabels, "Medium Mandatory Level"},
        {{kLabelAuthority, {8448}}, SidUse::kLabel, "MP", kLabels, "Medium Plus Mandatory Level"},
        {{kLabelAuthority, {12288}}, SidUse::kLabel, "HI", kLabels, "High Mandatory Level"},
        {{kLabelAuthority, {16384}}, SidUse::kLabel, "SI", kLabels, "System Mandatory Level"},
        {{kLabelAuthority, {20480}}, SidUse::kLabel, "", kLabels, "Protected Process Mandatory Level"},
        {{kLabelAuthority, {28672}}, SidUse::kLabel, "", kLabels, "Secure Process Mandatory Level"},

        {{kAuthenticationAuthority, {1}}, kGroup, "AS", "", "Authentication authority asserted identity"},
        {{kAuthenticationAuthority, {2}}, kGroup, "SS", "", "Service asserted identity"},
        {{kAuthenticationAuthority, {3}}, kGroup, "", "", "Fresh public key identity"},
        {{kAuthenticationAuthority, {4}}, kGroup, "", "", "Key trust identity"},
        {{kAuthenticationAuthority, {5}}, kGroup, "", "", "Key property multi-factor authentication"},
        {{kAuthenticationAuthority, {6}}, kGroup, "", "", "Key property attestation"},
    };
    // clang-format on
    return kTable;
}

const WellKnownSid* FindWellKnownSid(const Sid& sid) {
    const auto table = WellKnownSids();
    const auto row = std::ranges::lower_bound(table, sid, ComesBefore, &WellKnownSid::sid);
    return row != table.end() && row->sid == sid ? &*row : nullptr;
}

std::span<const RelativeAccount> RelativeAccounts() {
    return kRelativeAccounts;
}

}  // namespace permora::nt
