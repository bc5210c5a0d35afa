#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/nt/security_descriptor.h"
#include "platform/raw_security.h"
#include "platform/resources.h"

namespace {

using permora::UniqueLocal;

constexpr SECURITY_INFORMATION kEverything = OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION |
                                             DACL_SECURITY_INFORMATION | SACL_SECURITY_INFORMATION;

// The descriptor that a text describes, or none.
UniqueLocal<void> Parse(const char* text, ULONG* size = nullptr) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ConvertStringSecurityDescriptorToSecurityDescriptorA(text, SDDL_REVISION_1, &descriptor, size);
    return UniqueLocal<void>(descriptor);
}

// The text of the requested parts; empty when there is none.
std::string Write(PSECURITY_DESCRIPTOR descriptor, SECURITY_INFORMATION parts = kEverything) {
    LPSTR text = nullptr;
    ULONG length = 0;
    if (!ConvertSecurityDescriptorToStringSecurityDescriptorA(descriptor, SDDL_REVISION_1, parts, &text,
                                                              &length)) {
        return {};
    }
    const UniqueLocal<char> owned(text);
    EXPECT_EQ(length, std::strlen(text) + 1);
    return text;
}

TEST(SddlApi, ReadsSids) {
    const std::pair<const char*, const char*> cases[] = {
        {"BA", "S-1-5-32-544"},
        {"S-1-5-21-1-2-4294967295-1000", "S-1-5-21-1-2-4294967295-1000"},
    };
    for (const auto& [written, expected] : cases) {
        PSID sid = nullptr;
        ASSERT_TRUE(ConvertStringSidToSidA(written, &sid)) << written;
        const UniqueLocal<void> owned(sid);
        EXPECT_EQ(permora::SidOf(sid), permora::nt::Sid::FromText(expected));
    }
    PSID sid = nullptr;
    for (const char* text : {"", "S-1-5-", "S-1-5-32-544 ", "QQ"}) {
        EXPECT_FALSE(ConvertStringSidToSidA(text, &sid)) << text;
        EXPECT_EQ(GetLastError(), ERROR_INVALID_SID);
    }
    EXPECT_EQ(sid, nullptr);
    EXPECT_FALSE(ConvertStringSidToSidA(nullptr, &sid));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST(SddlApi, WritesTheSameTextForBothForms) {
    const std::string text = "O:BAG:SYD:PAI(D;;FA;;;WD)(A;OICI;FA;;;BA)S:(AU;SAFA;FA;;;WD)";
    ULONG size = 0;
    const auto selfRelative = Parse(text.c_str(), &size);
    ASSERT_TRUE(selfRelative);
    EXPECT_TRUE(permora::nt::SecurityDescriptor::FromBytes({static_cast<BYTE*>(selfRelative.get()), size}));
    EXPECT_EQ(Write(selfRelative.get()), text);
    EXPECT_EQ(Write(selfRelative.get(), OWNER_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION),
              "O:BA");
    EXPECT_EQ(Write(selfRelative.get(), DACL_SECURITY_INFORMATION), "D:PAI(D;;FA;;;WD)(A;OICI;FA;;;BA)");

    SECURITY_DESCRIPTOR absolute{};
    std::vector<std::vector<DWORD>> places(4, std::vector<DWORD>(64));
    DWORD absoluteSize = sizeof(absolute);
    DWORD sizes[] = {256, 256, 256, 256};
    ASSERT_TRUE(MakeAbsoluteSD(selfRelative.get(), &absolute, &absoluteSize,
                               reinterpret_cast<PACL>(places[0].data()), &sizes[0],
                               reinterpret_cast<PACL>(places[1].data()), &sizes[1], places[2].data(),
                               &sizes[2], places[3].data(), &sizes[3]));
    EXPECT_EQ(Write(&absolute), text);
}

TEST(SddlApi, RefusesWhatHasNoMeaningAndLeavesTheOutputsAlone) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ULONG size = 4711;
    for (const char* text : {"D:(A;;FA;;;WD", "D:(A;;FA;;;XX)", "O:", "nonsense"}) {
        EXPECT_FALSE(
            ConvertStringSecurityDescriptorToSecurityDescriptorA(text, SDDL_REVISION_1, &descriptor, &size));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER) << text;
    }
    EXPECT_FALSE(ConvertStringSecurityDescriptorToSecurityDescriptorA("O:BA", 2, &descriptor, &size));
    EXPECT_EQ(GetLastError(), ERROR_UNKNOWN_REVISION);
    EXPECT_EQ(descriptor, nullptr);
    EXPECT_EQ(size, 4711U);

    LPSTR text = nullptr;
    BYTE damaged[20] = {1, 0, 0, 0x80, 8};  // its owner lies inside the header
    EXPECT_FALSE(ConvertSecurityDescriptorToStringSecurityDescriptorA(damaged, SDDL_REVISION_1, kEverything,
                                                                      &text, &size));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_SECURITY_DESCR);
    // An entry of a type that the language has no word for must not be left out in silence.
    BYTE opaque[] = {1, 0, 4,  0x80, 0, 0, 0, 0, 0,    0, 0, 0, 0, 0, 0, 0, 20, 0, 0, 0,  //
                     2, 0, 16, 0,    1, 0, 0, 0, 0xF0, 0, 8, 0, 1, 2, 3, 4};
    EXPECT_FALSE(ConvertSecurityDescriptorToStringSecurityDescriptorA(opaque, SDDL_REVISION_1, kEverything,
                                                                      &text, &size));
    EXPECT_EQ(GetLastError(), ERROR_NOT_SUPPORTED);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(size, 4711U);
}

}  // namespace
