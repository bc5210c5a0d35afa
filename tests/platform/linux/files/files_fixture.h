// A drive of their own for tests of paths, directories and attributes.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/linux/files/drives.h"
#include "tests/support/temporary_folder.h"

namespace permora::host {

// T:\ is a temporary folder, and the current directory is its root.
class OnDriveT : public testing::Test {
  protected:
    OnDriveT() {
        EXPECT_TRUE(PinDrive('T', folder.Path()));
        EXPECT_EQ(chdir(folder.Path().c_str()), 0);
    }
    ~OnDriveT() override {
        EXPECT_EQ(chdir("/"), 0);
        PinDrive('T', "");
    }

    test::TemporaryFolder folder;
};

inline std::string CurrentDirectory() {
    std::string path(GetCurrentDirectoryA(0, nullptr), '\0');
    path.resize(GetCurrentDirectoryA(static_cast<DWORD>(path.size()), path.data()));
    return path;
}

}  // namespace permora::host
