// Part of every test program. What the programs under test change is recorded in a history of the test's own,
// not in that of the user who runs it.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

#include "tests/support/temporary_folder.h"

namespace {

class OwnHistory : public testing::Environment {
  public:
    void SetUp() override {
        folder = permora::test::FolderOf(permora::test::FolderPlace::kMemory) +
                 permora::test::kTemporaryFolderPrefix + "state-XXXXXX";
        if (mkdtemp(folder.data()) == nullptr || setenv("XDG_STATE_HOME", folder.c_str(), 1) != 0) {
            std::perror("a history for the test");
            std::abort();
        }
    }
    void TearDown() override {
        std::error_code error;
        std::filesystem::remove_all(folder, error);
    }

  private:
    std::string folder;
};

const testing::Environment* const kOwnHistory = testing::AddGlobalTestEnvironment(new OwnHistory);

}  // namespace
