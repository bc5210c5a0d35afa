// The output of Samba's tools about shares, which users of the machine can influence: every share that is
// read has a name that can be shown and a section, and grants that are read can be written.
#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "platform/linux/accounts/account_names.h"
#include "platform/linux/shares/samba_listing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace permora::host;
    using permora::Require;

    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::vector<SambaSection> sections = ParseSambaSections(text);
    for (const Share& share : SharesOfSections(sections)) {
        Require(IsPlainAccountName(share.name), "a share has a name that means it");
        const bool isOneOfThem = std::ranges::any_of(
            sections, [&](const SambaSection& section) { return IsSameShare(section.name, share.name); });
        Require(isOneOfThem, "a share has a section");
    }
    for (std::size_t i = 1; i < sections.size(); ++i)
        Require(!IsSameShare(sections[i - 1].name, sections[i].name), "a name comes once");
    HasSection(text, "share");

    const auto grants = ParseUserShareAcl(text);
    if (!grants || grants->empty()) return 0;
    permora::nt::SecurityDescriptor descriptor;
    descriptor.daclState = permora::nt::DaclState::kList;
    for (const UserShareGrant& grant : *grants)
        descriptor.dacl.entries.push_back(AceOfGrant(grant.access, permora::nt::Sid(1, {0})));
    const auto written = FormatUserShareAcl(descriptor);
    Require(written.has_value(), "grants can be written");
    return 0;
}
