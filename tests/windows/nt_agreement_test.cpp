// The values of platform/nt against the system's own functions: generated lists, descriptors and texts, the
// same ones in each run.
#include <gtest/gtest.h>
#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

#include <cstring>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "platform/nt/sddl.h"
#include "platform/raw_security.h"
#include "platform/resources.h"

namespace permora {
namespace {

constexpr int kCases = 10'000;
constexpr std::uint32_t kAllParts = 15;

class Generator {
  public:
    explicit Generator(std::uint64_t seed) : random(seed) {}

    std::uint32_t Below(std::uint32_t end) { return static_cast<std::uint32_t>(random() % end); }
    std::uint32_t Word() { return static_cast<std::uint32_t>(random()); }

    nt::Sid Sid() {
        switch (Below(4)) {
            case 0:
                return {5, {21, Word(), Word(), Word(), Below(3) == 0 ? 500 + Below(100) : Word()}};
            case 1:
                return {5, {32, 544 + Below(40)}};
            case 2: {
                const std::uint32_t one = Below(21);
                return one < 5 ? nt::Sid{3, {one}} : nt::Sid{5, {one}};
            }
            default: {
                nt::Sid sid{Below(2) == 0 ? 1U : Below(0x80000000), {Below(3)}};
                for (std::uint32_t more = Below(nt::Sid::kMaxSubAuthorities); more > 0; --more)
                    sid = *sid.Append(Word());
                return sid;
            }
        }
    }

    // Of files' lists: whole names of rights, generic ones, and any bits.
    std::uint32_t Mask() {
        constexpr std::uint32_t kCommon[] = {FILE_ALL_ACCESS,    FILE_GENERIC_READ,
                                             FILE_GENERIC_WRITE, FILE_GENERIC_EXECUTE,
                                             GENERIC_ALL,        DELETE,
                                             0x1301BF,           1};
        return Below(2) == 0 ? kCommon[Below(std::size(kCommon))] : Word() & 0xF01F01FF;
    }

    nt::Ace Ace() {
        nt::Ace ace;
        ace.type = Below(3) == 0 ? ACCESS_DENIED_ACE_TYPE : ACCESS_ALLOWED_ACE_TYPE;
        ace.flags = static_cast<std::uint8_t>(Below(0x20));
        ace.mask = Mask();
        ace.sid = Sid();
        return ace;
    }

    nt::Acl Acl() {
        nt::Acl acl;
        for (std::uint32_t entries = Below(9); entries > 0; --entries)
            acl.entries.push_back(Ace());
        return acl;
    }

    nt::SecurityDescriptor Descriptor() {
        nt::SecurityDescriptor descriptor;
        if (Below(8) != 0) descriptor.owner = Sid();
        if (Below(8) != 0) descriptor.group = Sid();
        if (Below(8) != 0) {
            descriptor.daclState = nt::DaclState::kList;
            descriptor.dacl = Acl();
            descriptor.control |= nt::kDaclPresent;
            if (Below(2) != 0) descriptor.control |= nt::kDaclAutoInherited;
            if (Below(3) == 0) descriptor.control |= nt::kDaclProtected;
        }
        return descriptor;
    }

  private:
    std::mt19937_64 random;
};

std::vector<std::uint8_t> BytesOf(const void* block, std::size_t size) {
    std::vector<std::uint8_t> bytes(size);
    if (size > 0) std::memcpy(bytes.data(), block, size);
    return bytes;
}

// The list as the system's functions build it.
std::vector<std::uint8_t> SystemList(const nt::Acl& acl) {
    std::vector<std::uint32_t> block(acl.ByteSize() / sizeof(std::uint32_t));
    auto* list = reinterpret_cast<PACL>(block.data());
    const auto size = static_cast<DWORD>(acl.ByteSize());
    if (InitializeAcl(list, size, ACL_REVISION) == FALSE) return {};
    for (const nt::Ace& ace : acl.entries) {
        auto* const add = ace.type == ACCESS_DENIED_ACE_TYPE ? &AddAccessDeniedAceEx : &AddAccessAllowedAceEx;
        if (add(list, ACL_REVISION, ace.flags, ace.mask, RawSid(*ace.sid)) == FALSE) return {};
    }
    return BytesOf(list, size);
}

std::vector<std::uint8_t> OurList(const nt::Acl& acl) {
    std::vector<std::uint8_t> bytes;
    return acl.AppendTo(bytes) ? bytes : std::vector<std::uint8_t>();
}

std::vector<std::uint8_t> OurDescriptor(const nt::SecurityDescriptor& descriptor) {
    std::vector<std::uint8_t> bytes;
    return descriptor.AppendTo(bytes) ? bytes : std::vector<std::uint8_t>();
}

std::optional<nt::SecurityDescriptor> ReadBySystemFromText(const std::string& text) {
    PSECURITY_DESCRIPTOR read = nullptr;
    ULONG size = 0;
    if (ConvertStringSecurityDescriptorToSecurityDescriptorA(text.c_str(), SDDL_REVISION_1, &read, &size) ==
        FALSE)
        return std::nullopt;
    const UniqueLocal<void> owned(read);
    return nt::SecurityDescriptor::FromBytes(BytesOf(read, GetSecurityDescriptorLength(read)));
}

std::string WrittenBySystem(const nt::SecurityDescriptor& descriptor) {
    std::vector<std::uint8_t> bytes = OurDescriptor(descriptor);
    SECURITY_INFORMATION parts = DACL_SECURITY_INFORMATION;
    if (descriptor.owner) parts |= OWNER_SECURITY_INFORMATION;
    if (descriptor.group) parts |= GROUP_SECURITY_INFORMATION;
    char* text = nullptr;
    if (ConvertSecurityDescriptorToStringSecurityDescriptorA(bytes.data(), SDDL_REVISION_1, parts, &text,
                                                             nullptr) == FALSE)
        return "error " + std::to_string(GetLastError());
    const UniqueLocal<char> owned(text);
    return text;
}

TEST(NtAgreement, SidsHaveTheSystemsBytesAndText) {
    Generator generator(1);
    for (int i = 0; i < kCases; ++i) {
        const nt::Sid sid = generator.Sid();
        SCOPED_TRACE(sid.ToText());
        char* text = nullptr;
        ASSERT_TRUE(ConvertSidToStringSidA(RawSid(sid), &text));
        const UniqueLocal<char> ownedText(text);
        ASSERT_EQ(sid.ToText(), text);
        PSID read = nullptr;
        ASSERT_TRUE(ConvertStringSidToSidA(text, &read));
        const UniqueLocal<void> ownedSid(read);
        ASSERT_EQ(SidOf(read), sid);
        ASSERT_EQ(GetLengthSid(read), sid.ByteSize());
    }
}

TEST(NtAgreement, ListsHaveTheSystemsBytes) {
    Generator generator(2);
    for (int i = 0; i < kCases; ++i) {
        const nt::Acl acl = generator.Acl();
        const std::vector<std::uint8_t> system = SystemList(acl);
        ASSERT_FALSE(system.empty());
        ASSERT_EQ(OurList(acl), system) << "case " << i;
        ASSERT_EQ(nt::Acl::FromBytes(system), acl) << "case " << i;
    }
}

// The system may lay the parts of a descriptor out in another order, so each side reads what the other wrote.
TEST(NtAgreement, DescriptorsAreReadAsTheyWereWritten) {
    Generator generator(3);
    for (int i = 0; i < kCases; ++i) {
        SCOPED_TRACE(i);
        const nt::SecurityDescriptor descriptor = generator.Descriptor();
        std::vector<std::uint8_t> ours = OurDescriptor(descriptor);
        ASSERT_TRUE(IsValidSecurityDescriptor(ours.data()));
        ASSERT_EQ(GetSecurityDescriptorLength(ours.data()), ours.size());
        PSID owner = nullptr;
        PSID group = nullptr;
        PACL dacl = nullptr;
        BOOL isDefaulted = FALSE;
        BOOL isPresent = FALSE;
        ASSERT_TRUE(GetSecurityDescriptorOwner(ours.data(), &owner, &isDefaulted));
        ASSERT_TRUE(GetSecurityDescriptorGroup(ours.data(), &group, &isDefaulted));
        ASSERT_TRUE(GetSecurityDescriptorDacl(ours.data(), &isPresent, &dacl, &isDefaulted));
        ASSERT_EQ(SidOf(owner), descriptor.owner);
        ASSERT_EQ(SidOf(group), descriptor.group);
        ASSERT_EQ(isPresent != FALSE, descriptor.daclState == nt::DaclState::kList);
        if (isPresent != FALSE) ASSERT_EQ(AclOf(dacl), descriptor.dacl);

        SECURITY_DESCRIPTOR absolute{};
        ASSERT_TRUE(InitializeSecurityDescriptor(&absolute, SECURITY_DESCRIPTOR_REVISION));
        ASSERT_TRUE(SetSecurityDescriptorOwner(&absolute, owner, FALSE));
        ASSERT_TRUE(SetSecurityDescriptorGroup(&absolute, group, FALSE));
        ASSERT_TRUE(SetSecurityDescriptorDacl(&absolute, isPresent, dacl, FALSE));
        constexpr SECURITY_DESCRIPTOR_CONTROL kInherit = SE_DACL_AUTO_INHERITED | SE_DACL_PROTECTED;
        ASSERT_TRUE(SetSecurityDescriptorControl(
            &absolute, kInherit, static_cast<SECURITY_DESCRIPTOR_CONTROL>(descriptor.control & kInherit)));
        std::vector<std::uint8_t> system(ours.size() + 64);
        auto size = static_cast<DWORD>(system.size());
        ASSERT_TRUE(MakeSelfRelativeSD(&absolute, system.data(), &size));
        system.resize(GetSecurityDescriptorLength(system.data()));
        ASSERT_EQ(nt::SecurityDescriptor::FromBytes(system), nt::SecurityDescriptor::FromBytes(ours));
    }
}

TEST(NtAgreement, AuthoritiesBeyond32BitsHaveTheSystemsText) {
    const nt::Sid sid(0x010000000005, {1, 2});
    char* text = nullptr;
    ASSERT_TRUE(ConvertSidToStringSidA(RawSid(sid), &text));
    const UniqueLocal<char> owned(text);
    EXPECT_EQ(sid.ToText(), text);
}

// The system must read what we write; `words` says how rights and accounts are spelled.
void ExpectOurTextIsRead(nt::SddlWords words) {
    Generator generator(4);
    for (int i = 0; i < kCases; ++i) {
        const nt::SecurityDescriptor descriptor = generator.Descriptor();
        const std::string text = nt::ToSddl(descriptor, kAllParts, words).value();
        ASSERT_EQ(ReadBySystemFromText(text), nt::SecurityDescriptor::FromBytes(OurDescriptor(descriptor)))
            << text << " is " << WrittenBySystem(descriptor);
    }
}

TEST(NtAgreement, TheSystemReadsOurTextInNumbers) {
    ExpectOurTextIsRead(nt::SddlWords::kNumbers);
}

TEST(NtAgreement, TheSystemReadsOurTextInAbbreviations) {
    ExpectOurTextIsRead(nt::SddlWords::kAbbreviations);
}

TEST(NtAgreement, WeReadTheSystemsText) {
    Generator generator(5);
    for (int i = 0; i < kCases; ++i) {
        const nt::SecurityDescriptor descriptor = generator.Descriptor();
        const std::string text = WrittenBySystem(descriptor);
        const auto read = nt::FromSddl(text);
        ASSERT_TRUE(read) << text;
        ASSERT_EQ(OurDescriptor(*read), OurDescriptor(descriptor)) << text;
    }
}

TEST(NtAgreement, OurTextIsTheSystemsText) {
    Generator generator(6);
    for (int i = 0; i < kCases; ++i) {
        const nt::SecurityDescriptor descriptor = generator.Descriptor();
        ASSERT_EQ(nt::ToSddl(descriptor, kAllParts), WrittenBySystem(descriptor)) << "case " << i;
    }
}

}  // namespace
}  // namespace permora
