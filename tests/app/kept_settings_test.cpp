// Settings that earlier versions have stored.
#include <gtest/gtest.h>

#include <filesystem>

#include "app/settings_store.h"
#include "platform/api/errors.h"
#include "tests/app/system_fakes.h"
#include "tests/support/kept_files.h"

namespace permora {
namespace {

// Nothing as it is without any settings.
ProgramSettings OwnSettings() {
    ProgramSettings settings;
    settings.windowRect = {30, 40, 930, 740};
    settings.showCommand = kShowMaximised;
    settings.reserved.fill(7);
    settings.block = {.viewMode = 3,
                      .useOwnIcons = 0,
                      .showToolTips = 0,
                      .askBeforeSecureDeletion = 0,
                      .showIntermediateInfo = 0,
                      .explorerMenu = 0};
    EXPECT_TRUE(SetProgramFolder(settings, R"(C:\opt\Permora's "folder")"));
    return settings;
}
constexpr HistoryLimits kOwnLimits = {.days = 30, .megabytes = 200};
constexpr BrowserChoices kOwnChoices = {
    .securityColumns = 5, .showsDotNames = true, .showsFolderTree = true, .folderTreeWidth = 260};
constexpr Size kOwnSheet = {901, 702};
constexpr ToldInterruption kOwnInterruption = {1'790'000'000, 9'000'000'000};

// The one file of the user's registry.
std::string RegistryFile() {
    return std::string(getenv("XDG_CONFIG_HOME")) + "/permora/registry.reg";  // NOLINT(concurrency-mt-unsafe)
}

TEST(KeptSettings, OfEveryVersionAreReadBack) {
    const test::TemporaryFolder folder;
    const auto make = [](const std::string& path) {
        const test::SystemFakes registry;
        EXPECT_EQ(StoreSettings(OwnSettings()), ERROR_SUCCESS);
        EXPECT_EQ(StoreProgramFolder(SettingsOwner::kUser, ProgramFolder(OwnSettings())), ERROR_SUCCESS);
        EXPECT_EQ(StoreHistoryLimits(kOwnLimits), ERROR_SUCCESS);
        EXPECT_EQ(StoreShowSources(true), ERROR_SUCCESS);
        EXPECT_EQ(StoreBrowserChoices(kOwnChoices), ERROR_SUCCESS);
        EXPECT_EQ(StoreSheetSize(kOwnSheet), ERROR_SUCCESS);
        EXPECT_EQ(StoreAskBeforeLosses(false), ERROR_SUCCESS);
        EXPECT_EQ(StoreToldInterruption(kOwnInterruption), ERROR_SUCCESS);
        std::filesystem::copy_file(RegistryFile(), path);
    };
    for (const std::string& file : test::KeptFiles(folder.Path(), "registry.reg", make)) {
        SCOPED_TRACE(file);
        const test::SystemFakes registry;
        std::filesystem::create_directory(std::filesystem::path(RegistryFile()).parent_path());
        std::filesystem::copy_file(file, RegistryFile());
        ProgramSettings settings;
        EXPECT_EQ(LoadSettings(settings), ERROR_SUCCESS);
        EXPECT_EQ(settings, OwnSettings());
        EXPECT_EQ(LoadHistoryLimits(), kOwnLimits);
        EXPECT_TRUE(LoadShowSources());
        EXPECT_EQ(LoadBrowserChoices(), kOwnChoices);
        EXPECT_EQ(LoadSheetSize(), kOwnSheet);
        EXPECT_FALSE(LoadAskBeforeLosses());
        ToldInterruption told;
        EXPECT_EQ(LoadToldInterruption(told), ERROR_SUCCESS);
        EXPECT_EQ(told, kOwnInterruption);

        // A change keeps the others.
        EXPECT_EQ(StoreShowSources(false), ERROR_SUCCESS);
        EXPECT_FALSE(LoadShowSources());
        EXPECT_EQ(LoadBrowserChoices(), kOwnChoices);
    }
}

}  // namespace
}  // namespace permora
