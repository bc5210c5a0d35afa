#include "deletion/deletion_failure.h"

#include <array>
#include <cstddef>
#include <string_view>

#include "platform/system_message.h"

namespace permora {
namespace {

// An empty prefix stands for the one with the name in it.
struct StepTexts {
    DeletionStep step;
    const char* boxPrefix;
    const char* statusText;
};

// clang-format off
constexpr std::array<StepTexts, 15> kTexts = {{
    {DeletionStep::kExamine,         "",                      "cannot get attributes: "},
    {DeletionStep::kCompare,         "Its name leads to something else by now", "not deleted, its name leads to something else by now: "},
    {DeletionStep::kAskVolume,       "Error",                 "cannot get disk information: "},
    {DeletionStep::kOpenFile,        "Opening file",          "cannot open file: "},
    {DeletionStep::kGetSize,         "Opening file",          "cannot get file size: "},
    {DeletionStep::kAllocate,        "Error",                 ""},
    {DeletionStep::kWrite,           "Writing file",          "cannot write to file: "},
    {DeletionStep::kFlush,           "Flushing write buffer", "cannot flush writing buffers: "},
    {DeletionStep::kDeleteFile,      "Deleting file",         "cannot delete file: "},
    {DeletionStep::kEnterFolder,     "",                      "cannot open directory: "},
    {DeletionStep::kListFolder,      "",                      "cannot list directory: "},
    {DeletionStep::kRemoveFolder,    "",                      "cannot remove directory: "},
    {DeletionStep::kSeclude,         "",                      "cannot be moved to where its names are counted: "},
    {DeletionStep::kGiveBack,        "",                      "left in the new folder \"%s\", it cannot go back: "},
    {DeletionStep::kRemoveSeclusion, "",                      "the new folder \"%s\" cannot be removed: "},
}};
// clang-format on

const StepTexts& TextsOf(DeletionStep step) {
    return kTexts.at(static_cast<std::size_t>(step));
}

}  // namespace

std::string BoxPrefix(const DeletionFailure& failure) {
    const std::string prefix = TextsOf(failure.step).boxPrefix;
    return prefix.empty() ? "Error: deleting \"" + failure.name + "\"" : prefix;
}

bool IsNamedInBox(const DeletionFailure& failure) {
    return *TextsOf(failure.step).boxPrefix == '\0';
}

std::string StatusText(const DeletionFailure& failure) {
    std::string text = TextsOf(failure.step).statusText;
    constexpr std::string_view kFolder = "%s";
    if (const std::size_t place = text.find(kFolder); place != text.npos)
        text.replace(place, kFolder.size(), failure.leftIn);
    return text + GetSystemMessageText(failure.error);
}

const char* ObstacleText(OverwriteObstacle obstacle) {
    switch (obstacle) {
        case OverwriteObstacle::kSeveralNames:
            return "it has further names (hard links)";
        case OverwriteObstacle::kCopyOnWriteVolume:
            return "its file system never writes over what is there";
        case OverwriteObstacle::kCompressed:
            return "it is compressed";
        case OverwriteObstacle::kEncrypted:
            return "it is encrypted";
        case OverwriteObstacle::kSparse:
            return "it is sparse";
        case OverwriteObstacle::kNamedStreams:
            return "it has named streams, which this mount moves when it writes them";
        case OverwriteObstacle::kJournaled:
            return "its file system writes it by way of the journal";
        case OverwriteObstacle::kOpenersUnknown:
            return "whether another program has it open cannot be known";
        case OverwriteObstacle::kNamesUnknown:
            return "whether it has further names (hard links) cannot be known, as no folder can be made here "
                   "that is "
                   "closed to others";
    }
    return "";
}

bool IsUncertainty(OverwriteObstacle obstacle) {
    return obstacle == OverwriteObstacle::kOpenersUnknown || obstacle == OverwriteObstacle::kNamesUnknown;
}

}  // namespace permora
