#include "app/settings_store.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "app/registry_key.h"
#include "platform/api/errors.h"
#include "tests/app/system_fakes.h"

namespace permora {
namespace {

constexpr const char* kKey = R"(SOFTWARE\Valdrix\ZEL)";

class SettingsStore : public ::testing::Test {
  protected:
    static RegistryKey& Create(RegistryKey& key) {
        EXPECT_EQ(key.Create(HKEY_CURRENT_USER, kKey), ERROR_SUCCESS);
        return key;
    }
    static std::string TextAt(HKEY root, const char* path, const char* name) {
        RegistryKey key;
        std::array<std::byte, 300> bytes{};
        ValueBuffer value{bytes};
        if (key.Open(root, path, KEY_READ) != ERROR_SUCCESS || key.Read(name, value) != ERROR_SUCCESS)
            return "(none)";
        const std::string text(reinterpret_cast<const char*>(bytes.data()), value.size);
        return text.ends_with('\0') ? text.c_str() : text + " without its end";
    }

    test::SystemFakes registry;
};

TEST_F(SettingsStore, WhatIsNotThereOrNotSoundFailsAndLeavesTheDefaults) {
    ProgramSettings record;
    EXPECT_EQ(LoadSettings(record), ERROR_FILE_NOT_FOUND) << "no key";
    ASSERT_EQ(StoreProgramFolder(SettingsOwner::kUser, "C:\\"), ERROR_SUCCESS);
    EXPECT_EQ(LoadSettings(record), ERROR_FILE_NOT_FOUND) << "no record";

    RegistryKey key;
    Create(key);
    const StoredSettings sound = ScrambleSettings(record);
    ASSERT_EQ(key.WriteText("ProgramSettings", std::string(kSettingsSize - 1, 'x')), ERROR_SUCCESS);
    EXPECT_EQ(LoadSettings(record), ERROR_INVALID_DATA) << "a text";
    ASSERT_EQ(key.WriteBytes("ProgramSettings", std::span(sound).first(100)), ERROR_SUCCESS);
    EXPECT_EQ(LoadSettings(record), ERROR_INVALID_DATA) << "too short";
    ASSERT_EQ(key.WriteBytes("ProgramSettings", std::vector<std::uint8_t>(5000, 0)), ERROR_SUCCESS);
    EXPECT_EQ(LoadSettings(record), ERROR_MORE_DATA) << "too long";
    ASSERT_EQ(key.WriteBytes("ProgramSettings", std::vector<std::uint8_t>(kSettingsSize, 0)), ERROR_SUCCESS);
    EXPECT_EQ(LoadSettings(record), ERROR_INVALID_DATA) << "other bytes";
    EXPECT_EQ(record, ProgramSettings());
}

TEST_F(SettingsStore, KeepsOfWhichInterruptionTheUserWasTold) {
    ToldInterruption told{7, 8};
    EXPECT_EQ(LoadToldInterruption(told), ERROR_FILE_NOT_FOUND) << "no key";
    RegistryKey key;
    Create(key);
    EXPECT_EQ(LoadToldInterruption(told), ERROR_FILE_NOT_FOUND) << "no value";
    for (const char* text : {"", "12", "12 ", "12 x", " 12 3", "12 3 ", "12,3", "99999999999999999999 1"}) {
        ASSERT_EQ(key.WriteText("ToldInterruption", text), ERROR_SUCCESS);
        EXPECT_EQ(LoadToldInterruption(told), ERROR_INVALID_DATA) << text;
    }
    EXPECT_EQ(told, (ToldInterruption{7, 8}));
    const ToldInterruption stored{1'790'000'000, 9'000'000'000};
    ASSERT_EQ(StoreToldInterruption(stored), ERROR_SUCCESS);
    EXPECT_EQ(LoadToldInterruption(told), ERROR_SUCCESS);
    EXPECT_EQ(told, stored);
}

TEST_F(SettingsStore, AFolderThatCannotBeReadLeavesTheStoredRecord) {
    ProgramSettings stored;
    stored.block.viewMode = 3;
    ASSERT_EQ(StoreSettings(stored), ERROR_SUCCESS);
    ProgramSettings record;
    EXPECT_EQ(LoadSettings(record), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(record.block.viewMode, 3U);

    RegistryKey key;
    Create(key);
    ASSERT_EQ(key.WriteBytes("Path", ScrambleSettings(stored)), ERROR_SUCCESS);
    EXPECT_EQ(LoadSettings(record), ERROR_MORE_DATA);
    ASSERT_EQ(key.WriteBytes("Path", std::vector<std::uint8_t>{'C', ':'}), ERROR_SUCCESS);
    EXPECT_EQ(LoadSettings(record), ERROR_INVALID_DATA);
}

TEST_F(SettingsStore, TheLimitsOfTheHistoryAreKeptAndUsualWhereTheyAreNoNumbers) {
    EXPECT_EQ(LoadHistoryLimits(), HistoryLimits());
    const HistoryLimits own = {.days = 7, .megabytes = 0};
    ASSERT_EQ(StoreHistoryLimits(own), ERROR_SUCCESS);
    EXPECT_EQ(LoadHistoryLimits(), own);
    EXPECT_EQ(LoadSheetSize(), Size());
    ASSERT_EQ(StoreSheetSize({900, 700}), ERROR_SUCCESS);
    EXPECT_EQ(LoadSheetSize(), (Size{900, 700}));
    RegistryKey key;
    Create(key);
    ASSERT_EQ(key.WriteText("HistoryDays", "365"), ERROR_SUCCESS);
    EXPECT_EQ(LoadHistoryLimits(), (HistoryLimits{.days = 90, .megabytes = 0}));
    ASSERT_EQ(key.WriteBytes("HistoryMegabytes", std::vector<std::uint8_t>(8, 1)), ERROR_SUCCESS);
    EXPECT_EQ(LoadHistoryLimits(), HistoryLimits());
}

TEST_F(SettingsStore, TheChoicesForTheListAreKept) {
    EXPECT_EQ(LoadBrowserChoices(), BrowserChoices());
    const BrowserChoices own = {
        .securityColumns = 9, .showsDotNames = true, .showsFolderTree = true, .folderTreeWidth = 250};
    ASSERT_EQ(StoreBrowserChoices(own), ERROR_SUCCESS);
    EXPECT_EQ(LoadBrowserChoices(), own);
}

TEST_F(SettingsStore, TheVerbComesAndGoesOnOldSystems) {
    registry.majorVersion = 5;
    RegistryKey shell;
    ASSERT_EQ(shell.Create(HKEY_CLASSES_ROOT, R"(Folder\Shell)"), ERROR_SUCCESS);
    EXPECT_EQ(RemoveExplorerVerb(), ERROR_SUCCESS) << "it was never there";

    ASSERT_EQ(RegisterExplorerVerb(R"(C:\Tools)"), ERROR_SUCCESS);
    EXPECT_EQ(TextAt(HKEY_CLASSES_ROOT, R"(Folder\Shell\Permora)", nullptr), "Open Permora");
    EXPECT_EQ(TextAt(HKEY_CLASSES_ROOT, R"(Folder\Shell\Permora\command)", nullptr),
              R"(C:\Tools\ZEL.exe "%L")");

    RegistryKey deep;
    ASSERT_EQ(deep.Create(HKEY_CLASSES_ROOT, R"(Folder\Shell\Permora\a\b\c)"), ERROR_SUCCESS);
    EXPECT_EQ(RemoveExplorerVerb(), ERROR_SUCCESS);
    RegistryKey gone;
    EXPECT_EQ(gone.Open(HKEY_CLASSES_ROOT, R"(Folder\Shell\Permora)", KEY_READ), ERROR_FILE_NOT_FOUND);
}

TEST_F(SettingsStore, TheVerbIsLeftAloneOnLaterSystems) {
    registry.majorVersion = 6;
    EXPECT_EQ(RegisterExplorerVerb(R"(C:\Tools)"), ERROR_SUCCESS);
    EXPECT_EQ(TextAt(HKEY_CLASSES_ROOT, R"(Folder\Shell\Permora)", nullptr), "(none)");
    EXPECT_EQ(RemoveExplorerVerb(), ERROR_SUCCESS) << "no look at the registry, where nothing is";
}

TEST_F(SettingsStore, FailuresOfTheRegistryAreTold) {
    registry.majorVersion = 5;
    registry.writeError = ERROR_ACCESS_DENIED;
    EXPECT_EQ(StoreProgramFolder(SettingsOwner::kUser, std::string(260, 'x')), ERROR_FILENAME_EXCED_RANGE);
    EXPECT_EQ(StoreSettings(ProgramSettings()), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegisterExplorerVerb("C:\\"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RemoveExplorerVerb(), ERROR_FILE_NOT_FOUND) << "no folder verbs at all";
}

}  // namespace
}  // namespace permora
