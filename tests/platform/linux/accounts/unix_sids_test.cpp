#include "platform/linux/accounts/unix_sids.h"

#include <gtest/gtest.h>

namespace permora::host {
namespace {

constexpr id_t kNobody = 0xFFFFFFFF;

const nt::Sid& Machine() {
    static const nt::Sid machine(5, {21, 1, 2, 3});
    return machine;
}

TEST(UnixSidsTest, NumbersHaveTheSidsThatSambaGivesThem) {
    const struct {
        AccountKind kind;
        id_t id;
        const char* unixSid;
        const char* computed;  // null: the number is too large
    } cases[] = {
        {AccountKind::kUser, 0, "S-1-22-1-0", "S-1-5-21-1-2-3-1000"},
        {AccountKind::kGroup, 0, "S-1-22-2-0", "S-1-5-21-1-2-3-1001"},
        {AccountKind::kUser, 1000, "S-1-22-1-1000", "S-1-5-21-1-2-3-3000"},
        {AccountKind::kGroup, 65534, "S-1-22-2-65534", "S-1-5-21-1-2-3-132069"},
        {AccountKind::kUser, 2147483147, "S-1-22-1-2147483147", "S-1-5-21-1-2-3-4294967294"},
        {AccountKind::kGroup, 2147483147, "S-1-22-2-2147483147", "S-1-5-21-1-2-3-4294967295"},
        {AccountKind::kUser, 2147483148, "S-1-22-1-2147483148", nullptr},
        {AccountKind::kGroup, 2147483148, "S-1-22-2-2147483148", nullptr},
        {AccountKind::kUser, 4294967294, "S-1-22-1-4294967294", nullptr},
    };
    for (const auto& entry : cases) {
        const AccountKind other = entry.kind == AccountKind::kUser ? AccountKind::kGroup : AccountKind::kUser;
        const nt::Sid unixSid = UnixSid(entry.kind, entry.id);
        EXPECT_EQ(unixSid.ToText(), entry.unixSid);
        EXPECT_EQ(IdOfUnixSid(entry.kind, unixSid), entry.id) << entry.unixSid;
        EXPECT_EQ(IdOfUnixSid(other, unixSid), std::nullopt) << entry.unixSid;

        const std::optional<nt::Sid> computed = ComputedSid(entry.kind, Machine(), entry.id);
        EXPECT_EQ(computed.has_value(), entry.computed != nullptr) << entry.unixSid;
        if (!computed || entry.computed == nullptr) continue;
        EXPECT_EQ(computed->ToText(), entry.computed);
        EXPECT_EQ(IdOfComputedSid(entry.kind, Machine(), *computed), entry.id) << entry.computed;
        EXPECT_EQ(IdOfComputedSid(other, Machine(), *computed), std::nullopt) << entry.computed;
    }
}

TEST(UnixSidsTest, OtherSidsStandForNoNumber) {
    for (const char* text :
         {"S-1-22-1", "S-1-22-2", "S-1-22-3-0", "S-1-22-1-0-0", "S-1-5-1-0", "S-1-22-1-4294967295",
          "S-1-22-2-4294967295", "S-1-5-21-1-2-3", "S-1-5-21-1-2-3-500", "S-1-5-21-1-2-3-513",
          "S-1-5-21-1-2-3-999", "S-1-5-21-1-2-4-1000", "S-1-5-21-1-2-3-1000-1000", "S-1-0-0"}) {
        const nt::Sid sid = nt::Sid::FromText(text).value();
        for (const AccountKind kind : {AccountKind::kUser, AccountKind::kGroup}) {
            EXPECT_FALSE(IdOfUnixSid(kind, sid)) << text;
            EXPECT_FALSE(IdOfComputedSid(kind, Machine(), sid)) << text;
        }
    }
    EXPECT_FALSE(ComputedSid(AccountKind::kUser, Machine(), kNobody));
}

}  // namespace
}  // namespace permora::host
