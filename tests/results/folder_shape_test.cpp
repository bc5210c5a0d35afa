#include "results/folder_shape.h"

#include <gtest/gtest.h>

#include <optional>

namespace permora::test {
namespace {

using Listing = FolderShape::Listing;
constexpr TreeObjectKind kPlainFile = TreeObjectKind::kFile;
constexpr RemarkSet kOwn = {Remark::kOwnEntries};

struct Row {
    const char* path;
    RemarkSet remarks;
    TreeObjectKind kind = TreeObjectKind::kFolder;
    Listing listing = Listing::kListed;
};

// A line "  name departing/remarked" for each folder that is shown.
std::string ShapeOf(const std::vector<Row>& rows) {
    FolderShape shape;
    for (std::size_t i = 0; i < rows.size(); ++i)
        shape.Add({rows[i].path, 0, rows[i].kind, rows[i].remarks}, i, rows[i].listing);
    std::string text;
    for (std::size_t i = 0; i < shape.Count(); ++i) {
        const ShapedFolder& folder = shape.Folder(i);
        const FiguresBelow below = shape.Below(i);
        text += std::string(folder.level, ' ') + std::string(rows[folder.row].path).substr(folder.nameBegin) +
                ' ' + std::to_string(below.departing) + '/' + std::to_string(below.remarked) + '\n';
    }
    return text;
}

TEST(FolderShapeTest, FoldersThatDepartStandBelowEachOther) {
    const struct {
        const char* what;
        std::vector<Row> rows;
        const char* shape;
    } cases[] = {
        {"the top alone, which is shown in any case", {{"", {}}}, " 0/0\n"},
        {"files are counted and not shown; a remark is counted beside a departure",
         {{"", kOwn},
          {"a", kOwn, kPlainFile},
          {"b", {Remark::kOwnEntries, Remark::kOpenToAll}, kPlainFile},
          {"c", {Remark::kDenial}}},
         " 2/2\n"},
        {"folders between those that are shown stay in the name",
         {{"", {}},
          {"a\\b", kOwn},
          {"a\\b\\c\\d", kOwn},
          {"a\\b\\c\\d\\e", kOwn, kPlainFile},
          {"a\\b\\x", kOwn}},
         " 4/0\n a\\b 3/0\n  c\\d 1/0\n  x 0/0\n"},
        {"a name that only begins alike is beside, not below",
         {{"", {}}, {"a", kOwn}, {"a b", kOwn}, {"a b\\c", kOwn}, {"ab", kOwn}},
         " 4/0\n a 0/0\n a b 1/0\n  c 0/0\n ab 0/0\n"},
        {"what could not be read is a hole in the shape",
         {{"", {}},
          {"a", {Remark::kUnreadable}},
          {"b", {Remark::kUnlisted}},
          {"c", {Remark::kDamaged}, kPlainFile}},
         " 0/3\n a 0/0\n b 0/0\n"},
        {"the next tree begins anew",
         {{"", {}}, {"a", kOwn}, {"", {}}, {"a", kOwn}, {"a\\b", kOwn, kPlainFile}},
         " 1/0\n a 0/0\n 2/0\n a 1/0\n"},
        {"what is deep is counted only, what nobody asked for not even that",
         {{"", kOwn, TreeObjectKind::kFolder, Listing::kLeftOut},
          {"a", kOwn},
          {"a\\b", kOwn, TreeObjectKind::kFolder, Listing::kCounted},
          {"a\\c", kOwn, TreeObjectKind::kFolder, Listing::kLeftOut}},
         " 2/0\n a 1/0\n"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(ShapeOf(each.rows), each.shape) << each.what;
}

}  // namespace
}  // namespace permora::test
