#include "platform/link_target.h"

#include <unistd.h>

#include <utility>

#include "tests/platform/linux/files/files_fixture.h"

namespace permora::host {
namespace {

using Links = OnDriveT;

TEST_F(Links, TellWhereTheyLead) {
    folder.MakeFolder("sub");
    for (const auto& [target, told] : {std::pair<std::string, std::string>("x", "T:\\sub\\x"),
                                       {"../sub", "T:\\sub"},
                                       {"/etc/a b", "C:\\etc\\a b"}}) {
        ASSERT_EQ(symlink(target.c_str(), folder.Path("sub/link").c_str()), 0);
        std::string answer;
        EXPECT_EQ(ReadLinkTarget("sub\\link", answer), ERROR_SUCCESS);
        EXPECT_EQ(answer, told);
        ASSERT_EQ(unlink(folder.Path("sub/link").c_str()), 0);
    }
    std::string untouched = "as it was";
    EXPECT_EQ(ReadLinkTarget("sub", untouched), ERROR_INVALID_FUNCTION);
    EXPECT_EQ(ReadLinkTarget("missing", untouched), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(untouched, "as it was");
}

}  // namespace
}  // namespace permora::host
