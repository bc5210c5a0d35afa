#include <gtest/gtest.h>

#include <vector>

#include "platform/api/errors.h"
#include "platform/api/security.h"

namespace {

using Bytes = std::vector<BYTE>;

// S-1-5-32-544 and variations of it, each in a block of exactly its size, so that the sanitizers see every
// read beyond it.
const Bytes kAdministrators = {1, 2, 0, 0, 0, 0, 0, 5, 32, 0, 0, 0, 0x20, 2, 0, 0};
const Bytes kUsers = {1, 2, 0, 0, 0, 0, 0, 5, 32, 0, 0, 0, 0x21, 2, 0, 0};
const Bytes kBuiltin = {1, 1, 0, 0, 0, 0, 0, 5, 32, 0, 0, 0};
const Bytes kSixteenSubAuthorities = {1, 16};
const Bytes kOtherRevision = {2, 1};

PSID SidIn(const Bytes& bytes) {
    return const_cast<BYTE*>(bytes.data());
}

TEST(SidApi, RefusesToWorkOnWhatIsNoSid) {
    for (PSID sid : {SidIn(kSixteenSubAuthorities), SidIn(kOtherRevision), PSID(nullptr)}) {
        Bytes target(SECURITY_MAX_SID_SIZE, 0xCC);
        const Bytes untouched = target;
        EXPECT_EQ(GetLengthSid(sid), 0U);
        EXPECT_FALSE(CopySid(DWORD(target.size()), target.data(), sid));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_SID);
        EXPECT_EQ(target, untouched);
        EXPECT_FALSE(EqualSid(sid, SidIn(kAdministrators)));
        EXPECT_FALSE(EqualSid(SidIn(kAdministrators), sid));
        EXPECT_EQ(GetSidIdentifierAuthority(sid), nullptr);
        EXPECT_EQ(GetSidSubAuthorityCount(sid), nullptr);
        EXPECT_EQ(GetSidSubAuthority(sid, 0), nullptr);
    }
}

TEST(SidApi, ComparesWholeSids) {
    EXPECT_TRUE(EqualSid(SidIn(kAdministrators), SidIn(Bytes(kAdministrators))));
    EXPECT_FALSE(EqualSid(SidIn(kAdministrators), SidIn(kUsers)));
    EXPECT_FALSE(EqualSid(SidIn(kAdministrators), SidIn(kBuiltin)));  // the same as far as it goes
    EXPECT_FALSE(EqualSid(SidIn(kBuiltin), SidIn(kAdministrators)));
}

}  // namespace
