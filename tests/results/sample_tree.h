// A tree for searches: the folder "top" with a folder "sub" in it, which holds a file.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/host_path.h"
#include "results/result_tops.h"
#include "tests/support/access_lists.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {

class SampleTree : public testing::Test {
  protected:
    void SetUp() override {
        const DWORD error = SetDescriptorText(top, "O:BAG:BAD:P(A;OICI;FA;;;BA)(A;OICI;FR;;;BG)");
        if (error == ERROR_NOT_SUPPORTED) GTEST_SKIP() << "the temporary folder holds no access lists";
        ASSERT_EQ(error, ERROR_SUCCESS);
        ASSERT_EQ(SetDescriptorText(sub, "O:BAD:(D;OICI;SD;;;BG)"), 0U);
        ASSERT_EQ(SetDescriptorText(file, "O:S-1-5-21-9-9-9-1001D:(A;;FA;;;S-1-5-21-9-9-9-1001)"), 0U);
    }

    // The named objects in the temporary folder; without names, the folder "top" itself.
    std::vector<ResultTop> Tops(const std::vector<std::string>& names) const {
        auto held = std::make_shared<FolderHandle>();
        const std::string path = PathFromArgument((names.empty() ? top : folder.Path()).c_str());
        EXPECT_EQ(FolderHandle::Open(path, *held), ERROR_SUCCESS);
        return TopsOf({PlaceKind::kFolder, std::move(held), names}, path);
    }

    const TemporaryFolder folder;
    const std::string top = folder.MakeFolder("top");
    const std::string sub = folder.MakeFolder("top/sub");
    const std::string file = folder.MakeFile("top/sub/file");
};

}  // namespace permora::test
