#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/linux/security/descriptor_view.h"

namespace {

using Bytes = std::vector<BYTE>;

const Bytes kOwner = {1, 1, 0, 0, 0, 0, 0, 5, 18, 0, 0, 0};                 // S-1-5-18
const Bytes kGroup = {1, 2, 0, 0, 0, 0, 0, 5, 32, 0, 0, 0, 0x20, 2, 0, 0};  // S-1-5-32-544
const Bytes kDacl = {2, 0, 28, 0, 1, 0, 0, 0, 0, 0, 20, 0, 1, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0};
const Bytes kSacl = {2, 0, 12, 0, 0, 0, 0, 0, 0, 0, 0, 0};  // empty, with unused space
constexpr WORD kBothLists = SE_DACL_PRESENT | SE_SACL_PRESENT;

// A self-relative descriptor of the parts that are not empty, in a block of exactly its size. The parts stand
// right behind each other from byte `start` on, so that an odd one makes all of them unaligned.
Bytes SelfRelative(WORD control, const Bytes& owner, const Bytes& group, const Bytes& sacl, const Bytes& dacl,
                   DWORD start = 20) {
    SECURITY_DESCRIPTOR_RELATIVE header{1, 0, WORD(control | SE_SELF_RELATIVE), 0, 0, 0, 0};
    Bytes bytes(start, 0xCC);
    const auto append = [&bytes](const Bytes& part, DWORD& offset) {
        if (part.empty()) return;
        offset = DWORD(bytes.size());
        bytes.insert(bytes.end(), part.begin(), part.end());
    };
    append(sacl, header.Sacl);
    append(dacl, header.Dacl);
    append(owner, header.Owner);
    append(group, header.Group);
    std::memcpy(bytes.data(), &header, sizeof(header));
    return bytes;
}

Bytes Whole(DWORD start = 20) {
    return SelfRelative(kBothLists, kOwner, kGroup, kSacl, kDacl, start);
}

Bytes BytesAt(const void* part, std::size_t size) {
    const auto* first = static_cast<const BYTE*>(part);
    return {first, first + size};
}

// What is said about a descriptor in either form.
void ExpectWholeDescriptor(PSECURITY_DESCRIPTOR descriptor, WORD expectedControl) {
    EXPECT_TRUE(IsValidSecurityDescriptor(descriptor));
    WORD control = 0;
    DWORD revision = 0;
    EXPECT_TRUE(GetSecurityDescriptorControl(descriptor, &control, &revision));
    EXPECT_EQ(control, expectedControl);
    EXPECT_EQ(revision, SECURITY_DESCRIPTOR_REVISION);
    PACL dacl = nullptr;
    BOOL present = FALSE;
    BOOL defaulted = TRUE;
    ASSERT_TRUE(GetSecurityDescriptorDacl(descriptor, &present, &dacl, &defaulted));
    EXPECT_TRUE(present);
    EXPECT_FALSE(defaulted);
    const auto view = permora::host::DescriptorView::Of(descriptor);
    ASSERT_TRUE(view);
    EXPECT_EQ(BytesAt(view->owner, kOwner.size()), kOwner);
    EXPECT_EQ(BytesAt(view->group, kGroup.size()), kGroup);
    EXPECT_EQ(BytesAt(dacl, kDacl.size()), kDacl);
    PACL sacl = nullptr;
    present = FALSE;
    defaulted = TRUE;
    ASSERT_TRUE(GetSecurityDescriptorSacl(descriptor, &present, &sacl, &defaulted));
    EXPECT_TRUE(present);
    EXPECT_FALSE(defaulted);
    EXPECT_EQ(BytesAt(sacl, kSacl.size()), kSacl);
}

struct AbsoluteParts {
    SECURITY_DESCRIPTOR descriptor{};
    Bytes dacl, sacl, owner, group;
    DWORD descriptorSize = 0, daclSize = 0, saclSize = 0, ownerSize = 0, groupSize = 0;

    BOOL MakeFrom(PSECURITY_DESCRIPTOR selfRelative) {
        return MakeAbsoluteSD(selfRelative, descriptorSize != 0 ? &descriptor : nullptr, &descriptorSize,
                              reinterpret_cast<PACL>(dacl.data()), &daclSize,
                              reinterpret_cast<PACL>(sacl.data()), &saclSize, owner.data(), &ownerSize,
                              group.data(), &groupSize);
    }
    void Provide() {
        dacl.resize(daclSize);
        sacl.resize(saclSize);
        owner.resize(ownerSize);
        group.resize(groupSize);
    }
};

TEST(DescriptorApi, ReadsPartsThatAreNotAligned) {
    for (const DWORD start : {20U, 21U, 400U}) {
        Bytes bytes = Whole(start);
        ExpectWholeDescriptor(bytes.data(), kBothLists | SE_SELF_RELATIVE);
    }
}

TEST(DescriptorApi, TellsAbsentNullAndEmptyListsApart) {
    const Bytes emptyList = {2, 0, 8, 0, 0, 0, 0, 0};
    struct Case {
        WORD control;
        Bytes dacl;
        bool present;
        bool hasList;
    };
    const Case cases[] = {{0, {}, false, false},
                          {0, kDacl, false, false},  // the control word decides
                          {SE_DACL_PRESENT, {}, true, false},
                          {SE_DACL_PRESENT, emptyList, true, true}};
    for (const Case& test : cases) {
        Bytes bytes = SelfRelative(test.control, {}, {}, {}, test.dacl);
        BOOL present = 42;
        BOOL defaulted = 42;
        PACL dacl = nullptr;
        ASSERT_TRUE(GetSecurityDescriptorDacl(bytes.data(), &present, &dacl, &defaulted));
        EXPECT_EQ(present, test.present ? TRUE : FALSE);
        EXPECT_EQ(dacl != nullptr, test.hasList);
        EXPECT_EQ(defaulted, test.present ? FALSE : 42);
    }
}

TEST(DescriptorApi, RefusesDescriptorsThatAreNotSound) {
    Bytes otherRevision = Whole();
    otherRevision[0] = 2;
    Bytes ownerInHeader = Whole();
    ownerInHeader[4] = 8;
    const std::pair<const char*, Bytes> cases[] = {
        {"another revision", otherRevision},
        {"an owner inside the header", ownerInHeader},
        {"an owner of sixteen sub-authorities", SelfRelative(0, {1, 16}, {}, {}, {})},
        {"a group of another revision", SelfRelative(0, {}, {2, 1}, {}, {})},
        {"a list that ends before its entry",
         SelfRelative(SE_DACL_PRESENT, {}, {}, {}, {2, 0, 12, 0, 1, 0, 0, 0, 0, 0, 20, 0})},
        {"a system list without entries that it counts",
         SelfRelative(SE_SACL_PRESENT, {}, {}, {2, 0, 8, 0, 1, 0, 0, 0}, {})},
    };
    for (const auto& [what, bytes] : cases) {
        SCOPED_TRACE(what);
        Bytes descriptor = bytes;
        EXPECT_FALSE(IsValidSecurityDescriptor(descriptor.data()));
        AbsoluteParts absolute;
        EXPECT_FALSE(absolute.MakeFrom(descriptor.data()));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_SECURITY_DESCR);
        EXPECT_EQ(absolute.descriptorSize, 0U);
    }
    EXPECT_FALSE(IsValidSecurityDescriptor(nullptr));
    WORD control = 0;
    DWORD revision = 0;
    EXPECT_FALSE(GetSecurityDescriptorControl(otherRevision.data(), &control, &revision));
}

TEST(DescriptorApi, MakesAbsoluteDescriptorsInTwoCalls) {
    Bytes selfRelative = Whole(21);
    AbsoluteParts absolute;
    EXPECT_FALSE(absolute.MakeFrom(selfRelative.data()));
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(absolute.descriptorSize, sizeof(SECURITY_DESCRIPTOR));
    EXPECT_EQ(absolute.daclSize, kDacl.size());
    EXPECT_EQ(absolute.saclSize, kSacl.size());
    EXPECT_EQ(absolute.ownerSize, kOwner.size());
    EXPECT_EQ(absolute.groupSize, kGroup.size());

    absolute.Provide();
    ASSERT_TRUE(absolute.MakeFrom(selfRelative.data()));
    ExpectWholeDescriptor(&absolute.descriptor, kBothLists);
    EXPECT_EQ(absolute.descriptor.Sacl, reinterpret_cast<PACL>(absolute.sacl.data()));
    EXPECT_EQ(absolute.sacl, kSacl);

    AbsoluteParts again;
    EXPECT_FALSE(again.MakeFrom(&absolute.descriptor));
    EXPECT_EQ(GetLastError(), ERROR_BAD_DESCRIPTOR_FORMAT);
}

TEST(DescriptorApi, MakesAbsoluteDescriptorsWithoutPartsThatAreMissing) {
    Bytes selfRelative = SelfRelative(SE_DACL_PRESENT | SE_DACL_PROTECTED, kOwner, {}, {}, {});
    AbsoluteParts absolute;
    absolute.MakeFrom(selfRelative.data());
    EXPECT_EQ(absolute.daclSize, 0U);
    EXPECT_EQ(absolute.groupSize, 0U);
    absolute.Provide();
    ASSERT_TRUE(absolute.MakeFrom(selfRelative.data()));
    EXPECT_EQ(absolute.descriptor.Control, SE_DACL_PRESENT | SE_DACL_PROTECTED);
    EXPECT_EQ(absolute.descriptor.Dacl, nullptr) << "present and null: everyone";
    EXPECT_EQ(absolute.descriptor.Group, nullptr);
}

}  // namespace
