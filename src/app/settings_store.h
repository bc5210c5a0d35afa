// Where the settings are kept, and the program's entry in the Explorer's menu for folders: the registry.
//
// HKEY_CURRENT_USER, SOFTWARE\Valdrix\ZEL holds "ProgramSettings" (binary, the scrambled record), "Path"
// (text, the program's folder, which the installation writes), "HistoryDays", "HistoryMegabytes",
// "SecurityColumns", "ShowDotNames", "ShowFolderTree", "FolderTreeWidth", "ShowSources", "AskBeforeLosses",
// "SheetWidth" and "SheetHeight" (numbers) and "ToldInterruption" (text, two numbers). Functions whose result
// is a DWORD return 0 or a system error code.
#pragma once

#include <cstdint>
#include <string>

#include "app/settings_record.h"
#include "history/history_limits.h"
#include "platform/api/base.h"

namespace permora {

// Loads both values into `record`. After a failure the rest is unchanged: when only "Path" cannot be read,
// the stored record has been loaded. ERROR_INVALID_DATA for a malformed value.
DWORD LoadSettings(ProgramSettings& record);
DWORD StoreSettings(const ProgramSettings& record);

// Each limit that is not stored, or is no number, is the usual one; so are both where they cannot be read.
HistoryLimits LoadHistoryLimits();
// The same, but tells why they cannot be read.
DWORD ReadHistoryLimits(HistoryLimits& limits);
DWORD StoreHistoryLimits(const HistoryLimits& limits);

// Whether the security editor shows from which folder each entry is inherited ("ShowSources", a number). No
// unless it is stored otherwise.
bool LoadShowSources();
DWORD StoreShowSources(bool shows);

// What the main window shows beside the usual.
struct BrowserChoices {
    std::uint32_t securityColumns = 0;  // as SecurityColumns::Choose takes them
    bool showsDotNames = false;
    bool showsFolderTree = false;
    std::uint32_t folderTreeWidth = 0;  // logical pixels; 0: the usual width

    friend bool operator==(const BrowserChoices&, const BrowserChoices&) = default;
};

// What is not stored, or is no number, is as usual.
BrowserChoices LoadBrowserChoices();
DWORD StoreBrowserChoices(const BrowserChoices& choices);

// How large the user has made the security editor, in logical pixels; empty when nothing is stored.
Size LoadSheetSize();
DWORD StoreSheetSize(Size size);

// Whether the user is asked before a change takes entries that the window does not show. Yes unless it is
// stored otherwise.
bool LoadAskBeforeLosses();
DWORD StoreAskBeforeLosses(bool asks);

// Whose settings: the user's, or what users have who have none of their own.
enum class SettingsOwner { kUser, kEveryUser };

// For the installation: the program's folder ("Path") as it is stored; empty where none is, or no valid one.
std::string LoadStoredProgramFolder(SettingsOwner owner);
DWORD StoreProgramFolder(SettingsOwner owner, const std::string& folder);

// The last change of the history that was cut off and of which the user has been told.
struct ToldInterruption {
    std::int64_t began = 0;   // when the change began, in seconds since 1970
    std::int64_t number = 0;  // the change's own

    friend bool operator==(const ToldInterruption&, const ToldInterruption&) = default;
};

// Loads into `told`, which stays as it is after a failure. ERROR_INVALID_DATA for a malformed value.
DWORD LoadToldInterruption(ToldInterruption& told);
DWORD StoreToldInterruption(const ToldInterruption& told);

// Adds or removes the entry "Open Permora", which starts `programFolder`\ZEL.exe on a folder. Both do nothing
// on systems of major version 6 and later.
DWORD RegisterExplorerVerb(const std::string& programFolder);
DWORD RemoveExplorerVerb();

// Whether the system is one whose Explorer gets the entry.
bool HasExplorerVerb();

}  // namespace permora
