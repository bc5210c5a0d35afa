#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "platform/api/files.h"
#include "tests/platform/linux/shell/file_operation_fixture.h"
#include "tests/support/access_lists.h"

namespace permora::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

TEST_F(FileOperations, CopiesATreeAndLeavesItWhereItWas) {
    const TemporaryFolder from;
    const TemporaryFolder to;
    from.MakeFolder("tree");
    from.MakeFolder("tree/sub");
    WriteFileText(from.Path("tree/sub/a"), "one");
    symlink("/nowhere", from.Path("tree/link").c_str());
    EXPECT_EQ(Run(FO_COPY, {from.Path("tree")}, to.Path()), 0U);
    EXPECT_FALSE(isAborted);
    EXPECT_THAT(Below(to.Path()), ElementsAre("tree", "tree/link->/nowhere", "tree/sub", "tree/sub/a=one"));
    EXPECT_EQ(Below(from.Path()), Below(to.Path()));
    // Once more: into the folder where it lies.
    EXPECT_EQ(Run(FO_COPY, {to.Path("tree"), to.Path("tree/sub/a")}, to.Path()), 0U);
    EXPECT_EQ(Run(FO_COPY, {to.Path("a"), to.Path("a")}, to.Path()), 0U);
    for (const char* name : {"a", "a - Copy", "a - Copy (2)", "tree - Copy/sub/a"})
        EXPECT_EQ(ReadWholeFile(to.Path(name)), "one") << name;
}

}  // namespace
}  // namespace permora::test
