#include "browser/folder_rows.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "platform/api/errors.h"
#include "platform/linux/files/drives.h"
#include "tests/support/temporary_folder.h"

namespace permora {
namespace {

TEST(FolderRows, WorkIsRefusedWhenThePathLeadsElsewhere) {
    const test::TemporaryFolder folder;
    ASSERT_TRUE(host::PinDrive('T', folder.Path()));
    const std::filesystem::path shown = folder.Path("shown");
    const std::filesystem::path away = folder.Path("away");
    struct Case {
        const char* what;
        std::function<void()> change;
        DWORD error;
    };
    const Case kCases[] = {
        {"nothing", [] {}, ERROR_SUCCESS},
        {"renamed", [&] { rename(shown, away); }, ERROR_FILE_NOT_FOUND},
        {"removed", [&] { remove(shown); }, ERROR_FILE_NOT_FOUND},
        {"replaced by another folder",
         [&] {
             rename(shown, away);
             create_directory(shown);
         },
         ERROR_CANT_RESOLVE_FILENAME},
        {"replaced by a link to the folder's new place",
         [&] {
             rename(shown, away);
             create_directory_symlink(away, shown);
         },
         ERROR_CANT_RESOLVE_FILENAME},
    };
    for (const Case& each : kCases) {
        std::filesystem::remove_all(shown);
        std::filesystem::remove_all(away);
        std::filesystem::create_directory(shown);
        FolderRows rows(R"(T:\shown)");
        ASSERT_TRUE(rows.Open().IsDone());
        each.change();
        EXPECT_EQ(rows.Verify(), each.error) << each.what;
        Place place;
        std::string path;
        EXPECT_EQ(rows.Hold({"file"}, place).code, each.error) << each.what;
        EXPECT_EQ(rows.FindPath("file", path).code, each.error) << each.what;
        EXPECT_EQ(place.folder != nullptr, each.error == ERROR_SUCCESS) << each.what;
    }
    host::PinDrive('T', "");
}

}  // namespace
}  // namespace permora
