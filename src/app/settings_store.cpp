#include "app/settings_store.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <initializer_list>
#include <span>
#include <system_error>
#include <utility>

#include "app/registry_key.h"
#include "platform/api/errors.h"
#include "platform/api/system.h"

namespace permora {
namespace {

constexpr const char* kSettingsKey = R"(SOFTWARE\Valdrix\ZEL)";
constexpr const char* kRecordValue = "ProgramSettings";
constexpr const char* kFolderValue = "Path";
constexpr const char* kToldValue = "ToldInterruption";

constexpr const char* kColumnsValue = "SecurityColumns";
constexpr const char* kDotNamesValue = "ShowDotNames";
constexpr const char* kFolderTreeValue = "ShowFolderTree";
constexpr const char* kTreeWidthValue = "FolderTreeWidth";

constexpr const char* kDaysValue = "HistoryDays";
constexpr const char* kMegabytesValue = "HistoryMegabytes";
constexpr const char* kSourcesValue = "ShowSources";
constexpr const char* kAskBeforeLossesValue = "AskBeforeLosses";

constexpr const char* kSheetWidthValue = "SheetWidth";
constexpr const char* kSheetHeightValue = "SheetHeight";
constexpr std::uint32_t kLargestSize = 0x7FFF;  // others may write anything

constexpr const char* kFolderVerbs = R"(Folder\Shell)";
constexpr const char* kVerb = "Permora";
constexpr const char* kVerbKey = R"(Folder\Shell\Permora)";
constexpr const char* kVerbCommandKey = R"(Folder\Shell\Permora\command)";
constexpr const char* kVerbText = "Open Permora";

DWORD LoadRecord(const RegistryKey& key, ProgramSettings& record) {
    StoredSettings stored{};
    ValueBuffer value{std::as_writable_bytes(std::span(stored))};
    const DWORD error = key.Read(kRecordValue, value);
    if (error != ERROR_SUCCESS) return error;
    if (value.type != REG_BINARY) return ERROR_INVALID_DATA;
    const auto loaded = UnscrambleSettings(std::span(stored).first(value.size));
    if (!loaded) return ERROR_INVALID_DATA;
    record = *loaded;
    return ERROR_SUCCESS;
}

// A value that others wrote may lack its NUL, and bytes after a NUL do not count.
DWORD LoadText(const RegistryKey& key, const char* name, std::string& text) {
    std::array<char, sizeof(ProgramSettings::programFolder)> bytes{};
    ValueBuffer value{std::as_writable_bytes(std::span(bytes))};
    const DWORD error = key.Read(name, value);
    if (error != ERROR_SUCCESS) return error;
    if (value.type != REG_SZ) return ERROR_INVALID_DATA;
    text.assign(bytes.data(), value.size);
    text.resize(std::min(text.size(), text.find('\0')));
    return ERROR_SUCCESS;
}

DWORD LoadProgramFolder(const RegistryKey& key, ProgramSettings& record) {
    std::string folder;
    const DWORD error = LoadText(key, kFolderValue, folder);
    if (error != ERROR_SUCCESS) return error;
    return SetProgramFolder(record, folder) ? ERROR_SUCCESS : ERROR_INVALID_DATA;
}

void LoadNumber(const RegistryKey& key, const char* name, std::uint32_t& number) {
    std::uint32_t stored = 0;
    ValueBuffer value{std::as_writable_bytes(std::span(&stored, 1))};
    const bool isRead = key.Read(name, value) == ERROR_SUCCESS;
    if (isRead && value.type == REG_DWORD && value.size == sizeof(stored)) number = stored;
}

DWORD StoreNumbers(std::initializer_list<std::pair<const char*, std::uint32_t>> values) {
    RegistryKey key;
    DWORD error = key.Create(HKEY_CURRENT_USER, kSettingsKey);
    for (const auto& [name, number] : values)
        if (error == ERROR_SUCCESS) error = key.WriteNumber(name, number);
    return error == ERROR_SUCCESS ? key.Close() : error;
}

std::pair<HKEY, std::string> PlaceOf(SettingsOwner owner) {
    if (owner == SettingsOwner::kUser) return {HKEY_CURRENT_USER, kSettingsKey};
    return {HKEY_USERS, std::string(".DEFAULT\\") + kSettingsKey};
}

bool LoadFlag(const char* name, bool usual) {
    std::uint32_t flag = usual ? 1 : 0;
    RegistryKey key;
    if (key.Open(HKEY_CURRENT_USER, kSettingsKey, KEY_READ) == ERROR_SUCCESS) LoadNumber(key, name, flag);
    return flag != 0;
}

// Creates or opens the key and sets one of its values; `name` null: the default value.
DWORD StoreText(HKEY root, const char* path, const char* name, const std::string& text) {
    RegistryKey key;
    DWORD error = key.Create(root, path);
    if (error == ERROR_SUCCESS) error = key.WriteText(name, text);
    return error == ERROR_SUCCESS ? key.Close() : error;
}

}  // namespace

DWORD LoadSettings(ProgramSettings& record) {
    RegistryKey key;
    DWORD error = key.Open(HKEY_CURRENT_USER, kSettingsKey, KEY_READ);
    if (error == ERROR_SUCCESS) error = LoadRecord(key, record);
    if (error == ERROR_SUCCESS) error = LoadProgramFolder(key, record);
    return error == ERROR_SUCCESS ? key.Close() : error;
}

DWORD StoreSettings(const ProgramSettings& record) {
    RegistryKey key;
    DWORD error = key.Create(HKEY_CURRENT_USER, kSettingsKey);
    if (error == ERROR_SUCCESS) error = key.WriteBytes(kRecordValue, ScrambleSettings(record));
    return error == ERROR_SUCCESS ? key.Close() : error;
}

HistoryLimits LoadHistoryLimits() {
    HistoryLimits limits;
    (void)ReadHistoryLimits(limits);
    return limits;
}

DWORD ReadHistoryLimits(HistoryLimits& limits) {
    HistoryLimits read;
    RegistryKey key;
    const DWORD error = key.Open(HKEY_CURRENT_USER, kSettingsKey, KEY_READ);
    if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND) return error;
    if (error == ERROR_SUCCESS) {
        LoadNumber(key, kDaysValue, read.days);
        LoadNumber(key, kMegabytesValue, read.megabytes);
    }
    limits = read;
    return ERROR_SUCCESS;
}

DWORD StoreHistoryLimits(const HistoryLimits& limits) {
    return StoreNumbers({{kDaysValue, limits.days}, {kMegabytesValue, limits.megabytes}});
}

Size LoadSheetSize() {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    RegistryKey key;
    if (key.Open(HKEY_CURRENT_USER, kSettingsKey, KEY_READ) != ERROR_SUCCESS) return {};
    LoadNumber(key, kSheetWidthValue, width);
    LoadNumber(key, kSheetHeightValue, height);
    return {static_cast<int>(std::min(width, kLargestSize)),
            static_cast<int>(std::min(height, kLargestSize))};
}

DWORD StoreSheetSize(Size size) {
    return StoreNumbers({{kSheetWidthValue, static_cast<std::uint32_t>(size.cx)},
                         {kSheetHeightValue, static_cast<std::uint32_t>(size.cy)}});
}

bool LoadShowSources() {
    return LoadFlag(kSourcesValue, false);
}

DWORD StoreShowSources(bool shows) {
    return StoreNumbers({{kSourcesValue, shows ? 1U : 0U}});
}

BrowserChoices LoadBrowserChoices() {
    BrowserChoices choices;
    std::uint32_t showsDotNames = 0;
    std::uint32_t showsFolderTree = 0;
    RegistryKey key;
    if (key.Open(HKEY_CURRENT_USER, kSettingsKey, KEY_READ) != ERROR_SUCCESS) return choices;
    LoadNumber(key, kColumnsValue, choices.securityColumns);
    LoadNumber(key, kDotNamesValue, showsDotNames);
    LoadNumber(key, kFolderTreeValue, showsFolderTree);
    LoadNumber(key, kTreeWidthValue, choices.folderTreeWidth);
    choices.showsDotNames = showsDotNames != 0;
    choices.showsFolderTree = showsFolderTree != 0;
    choices.folderTreeWidth = std::min(choices.folderTreeWidth, kLargestSize);
    return choices;
}

DWORD StoreBrowserChoices(const BrowserChoices& choices) {
    return StoreNumbers({{kColumnsValue, choices.securityColumns},
                         {kDotNamesValue, choices.showsDotNames ? 1U : 0U},
                         {kFolderTreeValue, choices.showsFolderTree ? 1U : 0U},
                         {kTreeWidthValue, choices.folderTreeWidth}});
}

bool LoadAskBeforeLosses() {
    return LoadFlag(kAskBeforeLossesValue, true);
}

DWORD StoreAskBeforeLosses(bool asks) {
    return StoreNumbers({{kAskBeforeLossesValue, asks ? 1U : 0U}});
}

std::string LoadStoredProgramFolder(SettingsOwner owner) {
    const auto [root, path] = PlaceOf(owner);
    RegistryKey key;
    std::string folder;
    if (key.Open(root, path.c_str(), KEY_READ) != ERROR_SUCCESS ||
        LoadText(key, kFolderValue, folder) != ERROR_SUCCESS)
        return {};
    return folder;
}

DWORD StoreProgramFolder(SettingsOwner owner, const std::string& folder) {
    ProgramSettings record;
    if (!SetProgramFolder(record, folder)) return ERROR_FILENAME_EXCED_RANGE;  // it could not be read back
    const auto [root, path] = PlaceOf(owner);
    return StoreText(root, path.c_str(), kFolderValue, folder);
}

DWORD LoadToldInterruption(ToldInterruption& told) {
    RegistryKey key;
    std::string text;
    DWORD error = key.Open(HKEY_CURRENT_USER, kSettingsKey, KEY_READ);
    if (error == ERROR_SUCCESS) error = LoadText(key, kToldValue, text);
    if (error != ERROR_SUCCESS) return error;
    ToldInterruption loaded;
    const char* end = text.data() + text.size();
    const auto [behindTime, timeProblem] = std::from_chars(text.data(), end, loaded.began);
    if (timeProblem != std::errc() || behindTime == end || *behindTime != ' ') return ERROR_INVALID_DATA;
    const auto [behindNumber, numberProblem] = std::from_chars(behindTime + 1, end, loaded.number);
    if (numberProblem != std::errc() || behindNumber != end) return ERROR_INVALID_DATA;
    told = loaded;
    return key.Close();
}

DWORD StoreToldInterruption(const ToldInterruption& told) {
    return StoreText(HKEY_CURRENT_USER, kSettingsKey, kToldValue,
                     std::to_string(told.began) + ' ' + std::to_string(told.number));
}

bool HasExplorerVerb() {
    // Later Explorers ask for the administrator's consent themselves.
    constexpr DWORD kLastVersion = 5;
    OSVERSIONINFOA version{};
    version.dwOSVersionInfoSize = sizeof(version);
    return GetVersionExA(&version) != FALSE && version.dwMajorVersion <= kLastVersion;
}

DWORD RegisterExplorerVerb(const std::string& programFolder) {
    if (!HasExplorerVerb()) return ERROR_SUCCESS;
    const DWORD error = StoreText(HKEY_CLASSES_ROOT, kVerbKey, nullptr, kVerbText);
    if (error != ERROR_SUCCESS) return error;
    return StoreText(HKEY_CLASSES_ROOT, kVerbCommandKey, nullptr, programFolder + R"(\ZEL.exe "%L")");
}

DWORD RemoveExplorerVerb() {
    if (!HasExplorerVerb()) return ERROR_SUCCESS;
    RegistryKey verbs;
    DWORD error = verbs.Open(HKEY_CLASSES_ROOT, kFolderVerbs, KEY_READ | KEY_WRITE);
    if (error == ERROR_SUCCESS) error = verbs.DeleteTree(kVerb);
    return error == ERROR_SUCCESS ? verbs.Close() : error;
}

}  // namespace permora
