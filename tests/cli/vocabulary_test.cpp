#include "cli/vocabulary.h"

#include <gtest/gtest.h>

#include "security/access_rights.h"

namespace permora {
namespace {

TEST(VocabularyTest, EveryWordingOfEveryRightIsUnderstood) {
    for (const AccessRight& right : kAccessRights) {
        for (const char* wording : {right.dialogLabel, right.listName, right.rowName}) {
            std::string problem;
            EXPECT_EQ(ParseRights(wording, problem), right.bits) << wording;
            EXPECT_EQ(problem, "");
        }
    }
}

TEST(VocabularyTest, RightsAreListsOfNamesAndMasks) {
    struct Case {
        const char* list;
        std::optional<DWORD> mask;
        const char* problem;
    };
    // clang-format off
    const Case cases[] = {
        {"read PERMISSIONS, Delete",             READ_CONTROL | DELETE,    ""},
        {" Traverse  folder/ execute FILE ",     FILE_EXECUTE,             ""},
        {"full control",                         FULL_CONTROL_RIGHTS,      ""},
        {"0x1F01FF",                             FULL_CONTROL_RIGHTS,      ""},
        {"0x20000,65536",                        READ_CONTROL | DELETE,    ""},
        {"0x10000000",                           GENERIC_ALL,              ""},
        {"",                                     std::nullopt,             "no right is called \"\""},
        {"Delete,",                              std::nullopt,             "no right is called \"\""},
        {"Delete,Fly",                           std::nullopt,             "no right is called \"Fly\""},
        {"Readattributes",                       std::nullopt,             "no right is called \"Readattributes\""},
        {"0x",                                   std::nullopt,             "no right is called \"0x\""},
        {"-1",                                   std::nullopt,             "no right is called \"-1\""},
        {"0x1000F01FF",                          std::nullopt,             "no right is called \"0x1000F01FF\""},
        {"0x1F01FFF",                            std::nullopt,             "the mask 0x1F01FFF has bits that no right stands for"},
        {"0x100000",                             std::nullopt,             "the list names no right"},
        {"0",                                    std::nullopt,             "the list names no right"},
    };
    // clang-format on
    for (const Case& row : cases) {
        std::string problem;
        EXPECT_EQ(ParseRights(row.list, problem), row.mask) << row.list;
        EXPECT_EQ(problem, row.problem) << row.list;
    }
}

TEST(VocabularyTest, ScopesAreIndexesOrTexts) {
    for (int index = 0; index < 7; ++index) {
        EXPECT_EQ(ParseScope(std::to_string(index)), index);
        EXPECT_EQ(ParseScope(kInheritanceScopes.at(static_cast<std::size_t>(index)).text), index);
    }
    EXPECT_EQ(ParseScope("subfolders AND files only"), 4);
    for (const char* text : {"", "7", "-1", "01", "This folder"})
        EXPECT_EQ(ParseScope(text), std::nullopt) << text;
}

}  // namespace
}  // namespace permora
