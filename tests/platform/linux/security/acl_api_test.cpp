#include <gtest/gtest.h>

#include <vector>

#include "platform/api/errors.h"
#include "platform/api/security.h"

namespace {

using Bytes = std::vector<BYTE>;

Bytes everyone = {1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0};
Bytes noSid = {1, 16};
constexpr DWORD kEntryBytes = 20;  // one entry for Everyone

PACL AclIn(Bytes& bytes, std::size_t offset = 0) {
    return reinterpret_cast<PACL>(bytes.data() + offset);
}

// A list of `size` bytes, in a block of exactly that size.
Bytes EmptyAcl(DWORD size) {
    Bytes bytes(size, 0xCC);
    EXPECT_TRUE(InitializeAcl(AclIn(bytes), size, ACL_REVISION));
    return bytes;
}

TEST(AclApi, BuildsAListByteForByteAlsoWhereItIsNotAligned) {
    const Bytes expected = {
        2, 0, 48, 0, 2,    0, 0,    0,                                      //
        1, 3, 20, 0, 2,    0, 0,    0, 1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0,  // deny
        0, 0, 20, 0, 0xFF, 1, 0x1F, 0, 1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0,  // allow
    };
    for (const std::size_t offset : {0U, 1U}) {
        Bytes block(offset + 48, 0xCC);
        PACL acl = AclIn(block, offset);
        EXPECT_TRUE(InitializeAcl(acl, 48, ACL_REVISION));
        EXPECT_TRUE(AddAccessDeniedAceEx(acl, ACL_REVISION, OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE,
                                         FILE_WRITE_DATA, everyone.data()));
        EXPECT_TRUE(AddAccessAllowedAceEx(acl, ACL_REVISION, 0, FILE_ALL_ACCESS, everyone.data()));
        EXPECT_EQ(Bytes(block.begin() + std::ptrdiff_t(offset), block.end()), expected);
        EXPECT_TRUE(IsValidAcl(acl));

        LPVOID ace = nullptr;
        EXPECT_TRUE(GetAce(acl, 1, &ace));
        EXPECT_EQ(static_cast<BYTE*>(ace), block.data() + offset + 28);
        ACL_SIZE_INFORMATION sizes{};
        EXPECT_TRUE(GetAclInformation(acl, &sizes, sizeof(sizes), AclSizeInformation));
        EXPECT_EQ(sizes.AceCount, 2U);
        EXPECT_EQ(sizes.AclBytesInUse, 48U);
        EXPECT_EQ(sizes.AclBytesFree, 0U);
    }
}

TEST(AclApi, RefusesEntriesThatDoNotBelongAndLeavesTheListAsItWas) {
    struct Case {
        const char* what;
        DWORD size;
        DWORD revision;
        DWORD flags;
        PSID sid;
        DWORD error;
    };
    const Case cases[] = {
        {"no room", 8 + kEntryBytes - 4, ACL_REVISION, 0, everyone.data(), ERROR_ALLOTTED_SPACE_EXCEEDED},
        {"an unknown revision", 64, 5, 0, everyone.data(), ERROR_REVISION_MISMATCH},
        {"a flag that is not about inheritance", 64, ACL_REVISION, 0x40, everyone.data(),
         ERROR_INVALID_FLAGS},
        {"flags beyond a byte", 64, ACL_REVISION, 0x100, everyone.data(), ERROR_INVALID_FLAGS},
        {"a SID that is none", 64, ACL_REVISION, 0, noSid.data(), ERROR_INVALID_SID},
        {"no SID", 64, ACL_REVISION, 0, nullptr, ERROR_INVALID_SID},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        for (const auto add : {AddAccessAllowedAceEx, AddAccessDeniedAceEx}) {
            Bytes block = EmptyAcl(test.size);
            const Bytes untouched = block;
            EXPECT_FALSE(add(AclIn(block), test.revision, test.flags, FILE_READ_DATA, test.sid));
            EXPECT_EQ(GetLastError(), test.error);
            EXPECT_EQ(block, untouched);
        }
    }
}

// Each list claims what it does not hold; the blocks end where the claimed size does.
TEST(AclApi, NeverLeavesAListThatIsDamaged) {
    struct Case {
        const char* what;
        std::size_t offset;  // of the bytes that are changed in a list of two entries and 12 unused bytes
        Bytes change;
    };
    const Case cases[] = {
        {"no revision", 0, {1}},
        {"a later revision", 0, {5}},
        {"a list shorter than its header", 2, {7, 0}},
        {"more entries than there are", 4, {3}},
        {"65535 entries", 4, {0xFF, 0xFF}},
        {"an entry of no size", 8 + 2, {0, 0}},
        {"an entry shorter than its header", 8 + 2, {2, 0}},
        {"an entry that is not whole words", 8 + 2, {21, 0}},
        {"an entry beyond the list", 8 + 2, {0xFC, 0xFF}},
        {"a last entry beyond the list", 28 + 2, {36, 0}},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        Bytes block = EmptyAcl(60);
        EXPECT_TRUE(AddAccessAllowedAceEx(AclIn(block), ACL_REVISION, 0, 1, everyone.data()));
        EXPECT_TRUE(AddAccessAllowedAceEx(AclIn(block), ACL_REVISION, 0, 1, everyone.data()));
        std::fill(block.begin() + 48, block.end(), BYTE(0));
        std::copy(test.change.begin(), test.change.end(), block.begin() + std::ptrdiff_t(test.offset));
        const Bytes untouched = block;

        EXPECT_FALSE(IsValidAcl(AclIn(block)));
        ACL_SIZE_INFORMATION sizes{};
        EXPECT_FALSE(GetAclInformation(AclIn(block), &sizes, sizeof(sizes), AclSizeInformation));
        LPVOID ace = nullptr;
        EXPECT_FALSE(GetAce(AclIn(block), DWORD(block[4] - 1), &ace));
        EXPECT_EQ(ace, nullptr);
        EXPECT_FALSE(AddAccessAllowedAceEx(AclIn(block), ACL_REVISION, 0, 1, everyone.data()));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_ACL);
        EXPECT_EQ(block, untouched);
    }
}

}  // namespace
