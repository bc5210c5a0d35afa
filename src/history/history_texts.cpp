#include "history/history_texts.h"

#include <array>
#include <cstddef>
#include <cstdio>

#include "platform/api/errors.h"
#include "platform/api/time.h"
#include "platform/system_message.h"

namespace permora {
namespace {

const char* KindText(ChangeKind kind) {
    switch (kind) {
        case ChangeKind::kPermissions:
            return "permissions of ";
        case ChangeKind::kOwner:
            return "owner of ";
        case ChangeKind::kReset:
            return "reset of everything in ";
        case ChangeKind::kAssign:
            return "rights assigned on ";
        case ChangeKind::kShare:
            return "permissions of ";
        case ChangeKind::kUndo:
            return "undo of change ";
        case ChangeKind::kRestore:
            return "restored permissions of ";
        case ChangeKind::kReplace:
            return "accounts replaced on ";
        case ChangeKind::kClone:
            return "permissions of another object given to ";
        case ChangeKind::kPolicy:
            return "policy applied to ";
    }
    return "change of ";
}

const char* ItemsText(ChangeKind kind) {
    if (kind == ChangeKind::kShare) return " shares";
    return kind == ChangeKind::kReset ? " folders" : " items";
}

// `top` names the one that there is.
std::string TextWith(const ChangeFacts& change, const std::string& top) {
    const std::string kind = KindText(change.kind);
    if (change.kind == ChangeKind::kUndo) return kind + std::to_string(change.undoes);
    if (change.tops > 1) return kind + GroupedNumber(change.tops) + ItemsText(change.kind);
    return kind + (change.kind == ChangeKind::kShare ? "the share " : "") + top;
}

// The root of a drive is a name of its own.
std::string NameOfTop(const std::string& path) {
    const std::size_t before = path.rfind('\\');
    return before == std::string::npos || before + 1 == path.size() ? path : path.substr(before + 1);
}

struct FailureText {
    DWORD error;
    const char* text;
};

constexpr std::array<FailureText, 10> kFailureTexts = {{
    {ERROR_FILE_CORRUPT, "The history is damaged, or the file is none. It was left as it is."},
    {ERROR_UNKNOWN_REVISION, "A newer version of the program has made the history. It was left as it is."},
    {ERROR_CANT_RESOLVE_FILENAME,
     "The history or the folder that holds it is a link, which may lead anywhere. It was not followed."},
    {ERROR_INVALID_OWNER, "The history or the folder that holds it belongs to somebody else."},
    {ERROR_LOCK_VIOLATION, "Another program keeps the history locked."},
    {ERROR_WRITE_PROTECT, "The history is on a volume that cannot be written."},
    {ERROR_DISK_FULL, "The disk that holds the history is full."},
    {ERROR_FILE_NOT_FOUND, "Nothing has been recorded yet."},
    {ERROR_NOT_FOUND, "There is no such change in the history."},
    {ERROR_BUSY, "The change is still being made."},
}};

}  // namespace

std::string ChangeText(const ChangeFacts& change) {
    std::string text = TextWith(change, change.firstTop);
    if (change.tops > 1 && change.kind != ChangeKind::kUndo) text += ", the first " + change.firstTop;
    return text;
}

std::string ShortChangeText(const ChangeFacts& change) {
    return TextWith(change, NameOfTop(change.firstTop));
}

std::string ChangeTimeText(std::int64_t time) {
    constexpr std::int64_t kSecondsBefore1970 = 11'644'473'600;  // since 1601, where file times begin
    constexpr std::int64_t kTicks = 10'000'000;                  // in a second
    constexpr std::int64_t kLastTime = INT64_MAX / kTicks - kSecondsBefore1970;
    SYSTEMTIME universal{};
    SYSTEMTIME local{};
    if (time < 0 || time > kLastTime) return "unknown";
    const auto ticks = static_cast<std::uint64_t>((time + kSecondsBefore1970) * kTicks);
    const FILETIME fileTime{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32U)};
    if (FileTimeToSystemTime(&fileTime, &universal) == FALSE ||
        SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local) == FALSE)
        return "unknown";
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d", local.wYear, local.wMonth,
                  local.wDay, local.wHour, local.wMinute, local.wSecond);
    return text.data();
}

const char* ChangeStateText(ChangeState state) {
    switch (state) {
        case ChangeState::kRunning:
            return "still running";
        case ChangeState::kDone:
            return "done";
        case ChangeState::kInterrupted:
            return "cut off";
        case ChangeState::kUndone:
            return "undone";
        case ChangeState::kPartlyUndone:
            return "partly undone";
    }
    return "unknown";
}

std::string HistoryFailureText(DWORD error) {
    for (const FailureText& each : kFailureTexts)
        if (each.error == error) return each.text;
    const std::string text = SystemMessageLine(error);
    return text + (text.ends_with('.') ? "" : ".");
}

}  // namespace permora
