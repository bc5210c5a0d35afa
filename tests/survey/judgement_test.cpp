#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "platform/nt/sddl.h"
#include "tests/survey/survey_texts.h"

namespace permora::test {
namespace {

DistinctSecurity SecurityOf(const std::string& sddl, bool isStored = true) {
    DistinctSecurity security;
    const auto descriptor = nt::FromSddl(sddl);
    EXPECT_TRUE(descriptor && descriptor->AppendTo(security.bytes)) << sddl;
    security.isStored = isStored;
    return security;
}

AccountStanding StandingOfText(const nt::Sid& sid) {
    const std::string text = sid.ToText();
    if (text == "S-1-5-21-1-2-3-1001") return AccountStanding::kDeleted;
    if (text == "S-1-5-21-9-9-9-1001") return AccountStanding::kUnknown;
    if (text == "S-1-5-21-7-7-7-1001") return AccountStanding::kUnasked;
    return IsPossibleAccount(sid) ? AccountStanding::kKnown : AccountStanding::kBroken;
}

enum class Stored { kYes, kNo, kAboveOnly };

struct Row {
    const char* own;
    const char* above;  // null: nothing is known of the folder
    const char* codes;
    TreeObjectKind kind = TreeObjectKind::kFile;
    SurveyPlace place = SurveyPlace::kBelow;
    Stored stored = Stored::kYes;
};

constexpr TreeObjectKind kFile = TreeObjectKind::kFile;
constexpr TreeObjectKind kFolder = TreeObjectKind::kFolder;
constexpr TreeObjectKind kLink = TreeObjectKind::kLink;
constexpr SurveyPlace kBelow = SurveyPlace::kBelow;

constexpr const char* kUsual = "O:BAG:BAD:PAI(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)";

TEST(JudgementTest, AnObjectIsJudgedByItsFolderAndItself) {
    const Row rows[] = {
        {"O:BAD:AI(A;ID;FA;;;BA)(A;ID;0x1200a9;;;BU)", kUsual, ""},
        {"O:BAD:AI(A;OICIID;FA;;;BA)(A;OICIID;0x1200a9;;;BU)", kUsual, "", kFolder},
        {"O:BAD:AI(A;;FR;;;BG)(A;ID;FA;;;BA)(A;ID;0x1200a9;;;BU)", kUsual, "own-entries"},
        {"O:BAD:AI(D;;FR;;;BG)(A;ID;FA;;;BA)(A;ID;0x1200a9;;;BU)", kUsual, "own-entries denial"},
        {"O:BAD:AI(A;;FR;;;BG)(D;;FR;;;BG)(A;ID;FA;;;BA)(A;ID;0x1200a9;;;BU)", kUsual,
         "own-entries denial unusual-order"},
        {"O:SYD:AI(A;ID;FA;;;BA)(A;ID;0x1200a9;;;BU)", kUsual, "other-owner"},
        {"O:BAD:PAI(A;;FA;;;BA)", kUsual, "own-entries protected"},
        {"O:BAD:AI(A;ID;FA;;;BA)", kUsual, "stale-inheritance"},
        {"O:BAD:AI(A;ID;0x1200a9;;;BU)(A;ID;FA;;;BA)", kUsual, "stale-inheritance"},
        {"O:BAD:AI(A;;FA;;;BA)", kUsual, "own-entries stale-inheritance"},
        {"O:BAD:AI(A;ID;FA;;;BA)", "O:BAD:NO_ACCESS_CONTROL", "stale-inheritance"},
        {"O:BAD:AI(A;ID;FA;;;BA)", nullptr, ""},
        {"O:BAD:NO_ACCESS_CONTROL", kUsual, "null-list"},
        {"O:BAD:AI", "O:BAD:P(A;;FA;;;BA)", "empty-list"},
        // Three kinds of accounts that are no more, and one that could not be asked about.
        {"O:S-1-5-21-1-2-3-1001D:AI(A;ID;FA;;;BA)", "O:BAD:P(A;OI;FA;;;BA)", "other-owner deleted-account"},
        {"O:BAD:(A;;FR;;;S-1-5-21-9-9-9-1001)(A;;FR;;;S-1-5-21-7)(A;;FR;;;S-1-5-21-7-7-7-1001)",
         "O:BAD:P(A;;FA;;;BA)", "own-entries unknown-account broken-sid unasked-account"},
        // What it has from its folder is remarked on there, and at the top.
        {"O:BAD:AI(A;ID;FA;;;WD)(A;ID;FA;;;S-1-5-21-1-2-3-1001)",
         "O:BAD:P(A;OICI;FA;;;WD)(A;OICI;FA;;;S-1-5-21-1-2-3-1001)", ""},
        {"O:BAD:AI(A;ID;FA;;;WD)(A;ID;FA;;;S-1-5-21-1-2-3-1001)",
         "O:BAD:P(A;OICI;FA;;;WD)(A;OICI;FA;;;S-1-5-21-1-2-3-1001)", "deleted-account open-to-all", kFile,
         SurveyPlace::kTop},
        // Whoever may write, for himself or below.
        {"D:(A;;FR;;;WD)(A;;FX;;;AU)", "D:P", "own-entries"},
        {"D:(A;;0x4;;;BU)", "D:P", "own-entries open-to-all"},
        {"D:(A;;WD;;;AU)", "D:P", "own-entries open-to-all"},
        {"D:(A;;GA;;;WD)", "D:P", "own-entries"},
        {"D:(A;OICIIO;GW;;;WD)", "D:P", "own-entries open-to-all", kFolder},
        {"D:(D;;FA;;;WD)(A;;FA;;;WD)", "D:P", "own-entries denial"},
        // What a mode gives is neither an entry of its own nor stale, unless the folder hands something down.
        {"O:S-1-22-1-7G:S-1-22-2-7D:AI(D;;0x116;;;S-1-22-2-7)(A;;FA;;;S-1-22-1-7)(A;;FR;;;WD)",
         "O:S-1-22-1-7G:S-1-22-2-7D:AI(A;;FA;;;S-1-22-1-7)(A;;FR;;;WD)", "", kFile, kBelow, Stored::kNo},
        {"O:S-1-22-1-7D:AI(A;;FA;;;S-1-22-1-7)(A;;0x1201bf;;;WD)",
         "O:S-1-22-1-7D:AI(A;;FA;;;S-1-22-1-7)(A;;FR;;;WD)", "open-to-all", kFile, kBelow, Stored::kNo},
        {"O:S-1-22-1-7D:AI(A;;FA;;;S-1-22-1-7)(A;;FA;;;WD)",
         "O:S-1-22-1-7D:AI(A;;FA;;;S-1-22-1-7)(A;;FR;;;WD)", "", kLink, kBelow, Stored::kNo},
        {"O:BAD:AI(A;;FA;;;BA)(A;;FR;;;WD)", kUsual, "stale-inheritance", kFile, kBelow, Stored::kAboveOnly},
        {"O:BAD:AI(A;;FA;;;BA)(A;;FR;;;WD)", kUsual, "", kLink, kBelow, Stored::kAboveOnly},
    };
    for (const Row& row : rows) {
        const DistinctSecurity own = SecurityOf(row.own, row.stored == Stored::kYes);
        std::optional<DistinctSecurity> above;
        if (row.above != nullptr) above = SecurityOf(row.above, row.stored != Stored::kNo);
        EXPECT_EQ(CodesOf(JudgeSecurity(own, above ? &*above : nullptr, row.kind, row.place, StandingOfText)),
                  row.codes)
            << row.own;
    }
}

// Lists that other programs and other moments have made of the same entries are no fault.
TEST(JudgementTest, WhatMeansTheSameIsNotStale) {
    const struct {
        const char* above;
        const char* own;
        TreeObjectKind kind;
    } rows[] = {
        // The creator's entry names whoever owned it at the time.
        {"D:P(A;OICIIO;GA;;;CO)", "O:SYD:AI(A;ID;FA;;;SY)", kFile},
        {"D:P(A;OICIIO;GA;;;CO)", "O:BAD:AI(A;ID;FA;;;SY)", kFile},
        {"D:P(A;OICIIO;FA;;;CO)", "O:SYD:AI(A;ID;FA;;;SY)(A;OICIIOID;FA;;;CO)", kFolder},
        {"D:P(A;OIIO;FA;;;CO)", "O:SYD:AI(A;OIIOID;FA;;;CO)", kFolder},
        // One entry or two, generic rights or what they stand for.
        {"D:P(A;OICI;FA;;;BA)", "D:AI(A;ID;FA;;;BA)(A;OICIIOID;GA;;;BA)", kFolder},
        {"D:P(A;OICIIO;GRGX;;;BU)", "D:AI(A;OICIID;FRFX;;;BU)", kFolder},
        {"D:P(A;OICIIO;GA;;;BA)", "D:AI(A;ID;GA;;;BA)", kFile},
        // Twice is once.
        {"D:P(A;OICI;FA;;;BA)(A;OICIIO;FA;;;CO)", "O:BAD:AI(A;OICIID;FA;;;BA)(A;OICIIOID;FA;;;CO)", kFolder},
        {"D:P(A;OICI;FA;;;BA)(A;OICI;FA;;;BA)", "D:AI(A;ID;FA;;;BA)", kFile},
        // Not below the first level, and not on files.
        {"D:P(A;CINP;FA;;;BA)(A;CI;FR;;;BU)", "D:AI(A;ID;FA;;;BA)(A;CIID;FR;;;BU)", kFolder},
        {"D:P(A;CI;FA;;;BA)", "D:AI", kFile},
        // A server below a folder that is not marked as kept up to date leaves out the mark.
        {"D:P(A;OICI;FA;;;BA)", "D:(A;;FA;;;BA)", kFile},
    };
    for (const auto& row : rows) {
        const DistinctSecurity own = SecurityOf(row.own);
        const DistinctSecurity above = SecurityOf(row.above);
        const RemarkSet remarks = JudgeSecurity(own, &above, row.kind, kBelow, StandingOfText);
        EXPECT_FALSE(remarks.HasAnyOf({Remark::kStale, Remark::kOwnEntries})) << row.own << CodesOf(remarks);
    }
}

TEST(JudgementTest, CodesLeadBackToTheirRemarks) {
    for (std::size_t i = 0; i < kRemarkCount; ++i)
        EXPECT_EQ(RemarkOf(CodeOf(static_cast<Remark>(i))), static_cast<Remark>(i));
    EXPECT_EQ(RemarkOf("own"), std::nullopt);
}

}  // namespace
}  // namespace permora::test
