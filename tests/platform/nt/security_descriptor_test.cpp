#include "platform/nt/security_descriptor.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "tests/support/hex.h"

namespace permora::nt {
namespace {

const Sid kAdministrators(5, {32, 544});

// Every part in the order in which they are written: auditing of everyone, a list, owner SYSTEM, group
// Administrators; protected, with resource manager control.
const char* const kAllPartsHex =
    "01 a5 14d0 4c000000 58000000 14000000 30000000"
    "02 00 1c00 0100 0000 02 c0 1400 00000100 01 01 000000000001 00000000"
    "02 00 1c00 0100 0000 00 03 1400 ff011f00 01 01 000000000001 00000000"
    "01 01 000000000005 12000000"
    "01 02 000000000005 20000000 20020000";

std::vector<std::uint8_t> Written(const SecurityDescriptor& descriptor) {
    std::vector<std::uint8_t> bytes;
    EXPECT_TRUE(descriptor.AppendTo(bytes));
    return bytes;
}

// A freshly made volume's root: eight entries in a list of 4,096 bytes, behind which owner and group lie.
TEST(SecurityDescriptor, ReadsAVolumeRootWithAPaddedList) {
    auto bytes =
        Hex("01 00 0480 14100000 20100000 00000000 14000000 02 00 0010 0800 0000"
            "00 00 1800 ff011f00 01 02 000000000005 20000000 20020000"
            "00 0b 1800 00000010 01 02 000000000005 20000000 20020000"
            "00 00 1400 ff011f00 01 01 000000000005 12000000"
            "00 0b 1400 00000010 01 01 000000000005 12000000"
            "00 00 1400 bf011300 01 01 000000000005 0b000000"
            "00 0b 1400 000001e0 01 01 000000000005 0b000000"
            "00 00 1800 a9001200 01 02 000000000005 20000000 21020000"
            "00 0b 1800 000000a0 01 02 000000000005 20000000 21020000");
    bytes.resize(0x1014);
    for (const std::uint8_t byte : Hex("01 01 000000000005 12000000 01 02 000000000005 20000000 20020000"))
        bytes.push_back(byte);
    const auto descriptor = SecurityDescriptor::FromBytes(bytes);
    ASSERT_TRUE(descriptor);
    EXPECT_EQ(descriptor->dacl.entries.size(), 8U);
    EXPECT_EQ(descriptor->owner, Sid(5, {18}));
    EXPECT_EQ(descriptor->group, kAdministrators);
    const auto written = Written(*descriptor);
    EXPECT_EQ(written.size(), 20 + descriptor->dacl.ByteSize() + 12 + 16);
    EXPECT_EQ(SecurityDescriptor::FromBytes(written), descriptor);
}

TEST(SecurityDescriptor, WritesEveryPartByteForByte) {
    const auto descriptor = SecurityDescriptor::FromBytes(Hex(kAllPartsHex));
    ASSERT_TRUE(descriptor);
    EXPECT_TRUE(descriptor->IsDaclProtected());
    EXPECT_EQ(descriptor->resourceManagerControl, 0xA5);
    EXPECT_EQ(descriptor->saclBytes.size(), 28U);
    EXPECT_EQ(Written(*descriptor), Hex(kAllPartsHex));

    // Offsets count from where the descriptor starts, not from the start of the buffer.
    std::vector<std::uint8_t> behindOthers = {1, 2, 3};
    ASSERT_TRUE(descriptor->AppendTo(behindOthers));
    EXPECT_EQ(std::vector(behindOthers.begin() + 3, behindOthers.end()), Hex(kAllPartsHex));
}

TEST(SecurityDescriptor, ChangingTheDaclKeepsThePaddedSystemListByteForByte) {
    const std::string sacl =
        "02 00 2400 0100 0000 02 c0 1400 00000100 01 01 000000000001 00000000 1122334455667788";
    auto descriptor =
        SecurityDescriptor::FromBytes(Hex("01 00 1080 00000000 00000000 14000000 00000000" + sacl));
    ASSERT_TRUE(descriptor);
    descriptor->daclState = DaclState::kList;
    EXPECT_EQ(Written(*descriptor),
              Hex("01 00 1480 00000000 00000000 14000000 38000000" + sacl + "02 00 0800 0000 0000"));
}

TEST(SecurityDescriptor, AbsentNullAndEmptyDaclAreThreeThings) {
    struct Row {
        DaclState state;
        const char* bytes;
    };
    const Row rows[] = {
        {DaclState::kAbsent, "01 00 0080 00000000 00000000 00000000 00000000"},
        {DaclState::kNull, "01 00 0480 00000000 00000000 00000000 00000000"},
        {DaclState::kList, "01 00 0480 00000000 00000000 00000000 14000000 02 00 0800 0000 0000"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.bytes);
        const auto read = SecurityDescriptor::FromBytes(Hex(row.bytes));
        ASSERT_TRUE(read);
        EXPECT_EQ(read->daclState, row.state);
        EXPECT_TRUE(read->dacl.entries.empty());

        SecurityDescriptor made;
        made.control |= row.state == DaclState::kAbsent ? kDaclPresent : 0U;  // a stale bit is put right
        made.daclState = row.state;
        EXPECT_EQ(Written(made), Hex(row.bytes));
    }
}

TEST(SecurityDescriptor, PresentButNullSystemListStaysSo) {
    const auto bytes = Hex("01 00 1080 00000000 00000000 00000000 00000000");
    const auto descriptor = SecurityDescriptor::FromBytes(bytes);
    ASSERT_TRUE(descriptor);
    EXPECT_TRUE(descriptor->saclBytes.empty());
    EXPECT_EQ(Written(*descriptor), bytes);

    SecurityDescriptor made;
    made.saclBytes = Hex("02 00 0800 0000 0000");
    EXPECT_EQ(Written(made), Hex("01 00 1080 00000000 00000000 14000000 00000000 02 00 0800 0000 0000"));
}

TEST(SecurityDescriptor, OwnerAndGroupMayShareBytesAndOffsetsNeedNoAlignment) {
    const auto shared = SecurityDescriptor::FromBytes(
        Hex("01 00 0080 15000000 15000000 00000000 00000000 00 01 02 000000000005 20000000 20020000"));
    ASSERT_TRUE(shared);
    EXPECT_EQ(shared->owner, kAdministrators);
    EXPECT_EQ(shared->group, kAdministrators);
}

void Store32(std::vector<std::uint8_t>& bytes, std::size_t offset, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i)
        bytes[offset + i] = static_cast<std::uint8_t>(value >> 8U * i);
}

TEST(SecurityDescriptor, RefusesDamagedBytes) {
    // Offsets in kAllPartsHex: system list 20, DACL 48, owner 76, group 88, end 104.
    struct Row {
        const char* damage;
        std::function<void(std::vector<std::uint8_t>&)> apply;
    };
    const Row rows[] = {
        {"revision 2", [](auto& bytes) { bytes[0] = 2; }},
        {"not self-relative", [](auto& bytes) { bytes[3] &= 0x7F; }},
        {"header cut", [](auto& bytes) { bytes.resize(19); }},
        {"last SID cut", [](auto& bytes) { bytes.pop_back(); }},
        {"owner inside the header", [](auto& bytes) { Store32(bytes, 4, 16); }},
        {"owner at the end", [](auto& bytes) { Store32(bytes, 4, 104); }},
        {"owner far behind the end", [](auto& bytes) { Store32(bytes, 4, 0xFFFFFFF0); }},
        {"owner inside the DACL", [](auto& bytes) { Store32(bytes, 4, 64); }},
        {"group partly inside the owner", [](auto& bytes) { Store32(bytes, 8, 77); }},
        {"group inside the system list", [](auto& bytes) { Store32(bytes, 8, 36); }},
        {"group inside the DACL", [](auto& bytes) { Store32(bytes, 8, 64); }},
        {"DACL inside the header", [](auto& bytes) { Store32(bytes, 16, 4); }},
        {"DACL far behind the end", [](auto& bytes) { Store32(bytes, 16, 0xFFFFFFFF); }},
        {"DACL and system list the same", [](auto& bytes) { Store32(bytes, 16, 20); }},
        {"DACL with space that reaches into the owner", [](auto& bytes) { bytes[50] = 32; }},
        {"DACL count too large", [](auto& bytes) { bytes[52] = 2; }},
        {"DACL entry of size 0", [](auto& bytes) { bytes[58] = 0; }},
        {"DACL entry past the list", [](auto& bytes) { bytes[58] = 24; }},
        {"DACL with an offset but not present", [](auto& bytes) { bytes[2] &= 0xFB; }},
        {"system list with an offset but not present", [](auto& bytes) { bytes[2] &= 0xEF; }},
        {"system list entry damaged", [](auto& bytes) { bytes[36] = 2; }},
        {"owner with sixteen sub-authorities", [](auto& bytes) { bytes[77] = 16; }},
        {"group with a sub-authority too many", [](auto& bytes) { bytes[89] = 3; }},
    };
    for (const Row& row : rows) {
        auto bytes = Hex(kAllPartsHex);
        row.apply(bytes);
        EXPECT_FALSE(SecurityDescriptor::FromBytes(bytes)) << row.damage;
    }
}

TEST(SecurityDescriptor, EveryTruncationIsRefused) {
    const auto whole = Hex(kAllPartsHex);
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_FALSE(SecurityDescriptor::FromBytes(std::span(whole).first(size))) << size;
}

TEST(SecurityDescriptor, AListThatIsTooLargeLeavesTheOutputAlone) {
    SecurityDescriptor descriptor;
    descriptor.daclState = DaclState::kList;
    descriptor.dacl.entries.assign(4000, {0, 0, 1, kAdministrators, {}, {}});
    std::vector<std::uint8_t> bytes = {7};
    EXPECT_FALSE(descriptor.AppendTo(bytes));
    descriptor.daclState = DaclState::kAbsent;
    descriptor.saclBytes.resize(0x10000);
    EXPECT_FALSE(descriptor.AppendTo(bytes));
    EXPECT_EQ(bytes, Hex("07"));
}

}  // namespace
}  // namespace permora::nt
