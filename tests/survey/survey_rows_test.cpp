#include "survey/survey_rows.h"

#include <gtest/gtest.h>

namespace permora::test {
namespace {

TEST(SurveyRowsTest, RowsComeBackAsTheyWereAdded) {
    const struct {
        std::size_t top;
        const char* path;
    } given[] = {{0, ""},         {0, "a"}, {0, "a\\b\\c"}, {0, "a\\bc"}, {0, "a\\bc\\d"}, {0, "ab"},
                 {0, "ab\\x\\y"}, {1, ""},  {1, "ab"},      {1, "ab\\x"}, {2, "ab\\x"}};
    const JudgedSecurity security{};
    SurveyRows rows;
    for (const auto& [top, path] : given)
        rows.Add({path, top, TreeObjectKind::kFolder, {Remark::kStale}, &security, 5});
    ASSERT_EQ(rows.Count(), std::size(given));
    std::string path;
    for (std::size_t i = 0; i < rows.Count(); ++i) {
        const SurveyRow row = rows.Row(i, path);
        EXPECT_EQ(row.path, given[i].path);
        EXPECT_EQ(row.top, given[i].top);
        EXPECT_EQ(row.kind, TreeObjectKind::kFolder);
        EXPECT_TRUE(row.remarks == RemarkSet{Remark::kStale} && row.security == &security && row.error == 5);
    }
}

}  // namespace
}  // namespace permora::test
