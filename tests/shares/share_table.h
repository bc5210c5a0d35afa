// A machine without any share but those that the test makes.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "platform/api/shares.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/ui_driver.h"

namespace permora::test {

// The error that changes of shares return instead of being made; nothing: they are made.
inline std::optional<NET_API_STATUS> setInfoAnswer;

class WithShareTable : public ::testing::Test {
  protected:
    void SetUp() override;

    // Shares the folder of the drive T that has the name. `sddl` null: without a descriptor.
    void AddShare(const std::string& name, const char* sddl);
    // "D:..." of the share's list, "none" without a descriptor, "error" and the code for a share that cannot
    // be read.
    static std::string ListOf(const std::string& name);
    // Path, remark and greatest number of users, or "error" and the code.
    static std::string FactsOf(const std::string& name);
    static void RemoveShare(const std::string& name);

    test::TemporaryFolder folder;
    UiDriver ui;
};

}  // namespace permora::test
