// Two descriptors from a disk that anyone may have written, of an object and of its folder: judged, and
// mended.
#include <cstdint>
#include <optional>
#include <span>

#include "fuzz/require.h"
#include "survey/judgement.h"
#include "survey/repair.h"

namespace permora {
namespace {

std::optional<DistinctSecurity> SecurityIn(std::span<const std::uint8_t> bytes) {
    if (!nt::SecurityDescriptor::FromBytes(bytes)) return std::nullopt;
    DistinctSecurity security;
    security.bytes.assign(bytes.begin(), bytes.end());
    return security;
}

AccountStanding StandingOfAny(const nt::Sid& sid) {
    return IsPossibleAccount(sid) ? AccountStanding::kKnown : AccountStanding::kBroken;
}

void JudgeAndMend(const DistinctSecurity& own, const DistinctSecurity& above, TreeObjectKind kind) {
    const RemarkSet remarks = JudgeSecurity(own, &above, kind, SurveyPlace::kBelow, StandingOfAny);
    const nt::SecurityDescriptor before = own.Descriptor();
    if (before.daclState != nt::DaclState::kList) return;
    const nt::ObjectKind object =
        kind == TreeObjectKind::kFolder ? nt::ObjectKind::kFolder : nt::ObjectKind::kFile;
    const nt::SecurityDescriptor folder = above.Descriptor();
    DistinctSecurity mended;
    if (!Repaired(before, &folder, object).AppendTo(mended.bytes)) return;
    const RemarkSet after = JudgeSecurity(mended, &above, kind, SurveyPlace::kBelow, StandingOfAny);
    Require(!after.HasAnyOf({Remark::kStale, Remark::kUnusualOrder}), "what was mended has no such fault");
    Require(remarks.Has(Remark::kProtected) == after.Has(Remark::kProtected), "protection stays");
}

}  // namespace
}  // namespace permora

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace permora;
    if (size < 2) return 0;
    const std::size_t first = std::size_t{data[0]} << 8U | data[1];
    const std::span<const std::uint8_t> bytes(data + 2, size - 2);
    if (first > bytes.size()) return 0;
    const auto own = SecurityIn(bytes.subspan(0, first));
    const auto above = SecurityIn(bytes.subspan(first));
    if (!own || !above) return 0;
    for (const TreeObjectKind kind : {TreeObjectKind::kFile, TreeObjectKind::kFolder, TreeObjectKind::kLink})
        JudgeAndMend(*own, *above, kind);
    return 0;
}
