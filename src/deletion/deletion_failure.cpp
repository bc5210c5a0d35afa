#include "deletion/deletion_failure.h"

#include <array>

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
constexpr std::array<StepTexts, 11> kTexts = {{
    {DeletionStep::kExamine,      "",                      "cannot get attributes: "},
    {DeletionStep::kAskVolume,    "Error",                 "cannot get disk information: "},
    {DeletionStep::kOpenFile,     "Opening file",          "cannot open file: "},
    {DeletionStep::kGetSize,      "Opening file",          "cannot get file size: "},
    {DeletionStep::kAllocate,     "Error",                 ""},
    {DeletionStep::kWrite,        "Writing file",          "cannot write to file: "},
    {DeletionStep::kFlush,        "Flushing write buffer", "cannot flush writing buffers: "},
    {DeletionStep::kDeleteFile,   "Deleting file",         "cannot delete file: "},
    {DeletionStep::kEnterFolder,  "",                      "cannot open directory: "},
    {DeletionStep::kListFolder,   "",                      "cannot list directory: "},
    {DeletionStep::kRemoveFolder, "",                      "cannot remove directory: "},
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

std::string StatusText(const DeletionFailure& failure) {
    return TextsOf(failure.step).statusText + GetSystemMessageText(failure.error);
}

}  // namespace permora
