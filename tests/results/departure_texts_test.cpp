#include "results/departure_texts.h"

#include <gtest/gtest.h>

#include "platform/nt/sddl.h"

namespace permora::test {
namespace {

constexpr TreeObjectKind kFolder = TreeObjectKind::kFolder;
constexpr TreeObjectKind kFile = TreeObjectKind::kFile;

TEST(DepartureTextsTest, WhatAnObjectHasIsOneLine) {
    std::string many = "D:";
    for (int i = 0; i < 20; ++i)
        many += "(A;;FR;;;BU)";
    const struct {
        std::string sddl;
        const char* path;
        TreeObjectKind kind;
        RemarkSet remarks;
        const char* text;
        bool isStored = true;
    } cases[] = {
        {"O:BAD:P(A;OICI;0x1301bf;;;BU)(D;OICIIO;0x100116;;;WD)",
         "a",
         kFolder,
         {Remark::kOwnEntries, Remark::kProtected},
         "protected; + S-1-5-32-545: Modify; - S-1-1-0: Write (Subfolders and files only)"},
        {"O:BAD:P(A;OICI;0x1301bf;;;BU)(D;OICIIO;0x100116;;;WD)",
         "",
         kFolder,
         {},
         "owner S-1-5-32-544; + S-1-5-32-545: Modify; - S-1-1-0: Write (Subfolders and files only)"},
        {"O:BAD:AI(A;;FR;;;BU)(A;;0x1f;;;WD)(A;ID;FA;;;BA)",
         "a",
         kFile,
         {Remark::kOwnEntries, Remark::kOtherOwner},
         "owner S-1-5-32-544; + S-1-5-32-545: Read; + S-1-1-0: Special"},
        {"O:BAD:AI(A;ID;FA;;;BA)", "", kFile, {}, "owner S-1-5-32-544; + S-1-5-32-544: Full control"},
        {"O:BAD:AI(A;CINP;FR;;;BU)(A;ID;FA;;;BA)",
         "a",
         kFolder,
         {Remark::kOwnEntries, Remark::kStale},
         "+ S-1-5-32-545: Read (This folder and subfolders; direct children only); stale inherited entries"},
        {"D:NO_ACCESS_CONTROL", "a", kFile, {Remark::kNullList}, "no list: everyone may do everything"},
        {"D:P", "a", kFile, {Remark::kEmptyList, Remark::kProtected}, "protected; empty list"},
        {"O:BAD:(A;;FA;;;WD)", "a", kFile, {Remark::kOpenToAll}, "no list is stored", false},
        {many,
         "a",
         kFile,
         {},
         "+ S-1-5-32-545: Read; + S-1-5-32-545: Read; + S-1-5-32-545: Read; + S-1-5-32-545: Read; "
         "+ S-1-5-32-545: Read; + S-1-5-32-545: Read; + S-1-5-32-545: Read; + S-1-5-32-545: Read; "
         "+ S-1-5-32-545: Read; + S-1-5-32-545: Read; + S-1-5-32-545: Read; + S-1-5-32-545: Read; "
         "and 8 more"},
    };
    for (const auto& each : cases) {
        DistinctSecurity own;
        const auto descriptor = nt::FromSddl(each.sddl);
        ASSERT_TRUE(descriptor && descriptor->AppendTo(own.bytes)) << each.sddl;
        own.isStored = each.isStored;
        const JudgedSecurity judged{&own, nullptr, each.kind, each.remarks};
        const SurveyRow row{each.path, 0, each.kind, each.remarks, &judged};
        EXPECT_EQ(DepartureText(row, [](const nt::Sid& sid) { return sid.ToText(); }), each.text)
            << each.sddl;
    }
}

}  // namespace
}  // namespace permora::test
