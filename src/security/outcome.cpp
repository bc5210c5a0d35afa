#include "security/outcome.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/system_message.h"

namespace permora {
namespace {

enum class Kind { kError, kInformation };

// In the texts, {system} is the system's text, {reason} the same without its line break, {object} and {place}
// are those of the outcome.
struct StepTexts {
    Step step;
    std::string_view box;
    std::string_view line = {};  // empty: as in the box
    Kind kind = Kind::kError;
};

// clang-format off
constexpr std::array<StepTexts, 39> kTexts = {{
    {Step::kNone,              "{system}"},

    {Step::kFindAgain,         "\"{object}\" is left alone: another object has this name since it was shown here.",
                               "left alone: another object has this name by now"},
    {Step::kFindFolderAgain,   "What is below \"{object}\" is left alone: another object has this name since it was shown here.",
                               "left alone: another object has this name by now"},
    {Step::kAwaitAnswer,       "No answer from {object}"},
    {Step::kChangeContents,    "What is below \"{object}\" was left as it is: {system}",
                               "what is below it was left as it is: {reason}"},
    {Step::kUseAccessControl,  "Access control is not supported by the file system", {}, Kind::kInformation},
    {Step::kCarryDown,         "{reason}\n\nThis is about \"{object}\". \"{place}\" itself was changed.",
                               "{reason}"},
    {Step::kRecord,            "The change was stopped at \"{object}\", because the history of changes cannot be written: {system}\n"
                               "What was changed before can be undone.",
                               "the change was stopped here, because the history of changes cannot be written: {reason} "
                               "What was changed before can be undone"},
    {Step::kPassOverMounted,   "Something is mounted on \"{object}\". What is mounted is a volume of its own and was left as it is.",
                               "something is mounted on it, which is a volume of its own", Kind::kInformation},
    {Step::kPassOverLinked,    "\"{object}\" has further names (hard links). Under these it may be in another's folder, so it was left as it is.",
                               "it has further names (hard links), under which it may be in another's folder", Kind::kInformation},

    {Step::kLoadLibrary,       "{system}"},
    {Step::kFindListFunctions, "Error: cannot load functions to apply settings"},
    {Step::kTakeBuffer,        "Error: cannot allocate buffer"},
    {Step::kInitializeList,    "Error: cannot initialize object's access control list"},
    {Step::kMakeAbsolute,      "Error: cannot convert security descriptor to absolute format"},
    {Step::kAssignDescriptor,  "Cannot assign new security descriptor: {system}"},
    {Step::kShareFolder,       "Error: cannot share the folder: {system}"},

    {Step::kEndChange,         "Error: the history of changes cannot be brought up to date: {system}"},

    {Step::kOpenPolicy,        "Error: cannot open local security policy"},
    {Step::kEnumerateUsers,    "Error: cannot enumerate users"},
    {Step::kReadOwner,         "Cannot get owner information: {system}"},

    {Step::kEnumerateShares,   "Error: cannot enumerate shared resources: {system}"},
    {Step::kRemoveShares,      "Error: one or more shared resources coud not be removed: {system}"},

    {Step::kExamine,           "Error: deleting \"{object}\": {system}", "cannot get attributes: {system}"},
    {Step::kCompare,           "Its name leads to something else by now: {system}",
                               "not deleted, its name leads to something else by now: {system}"},
    {Step::kAskVolume,         "Error: {system}",                        "cannot get disk information: {system}"},
    {Step::kOpenFile,          "Opening file: {system}",                 "cannot open file: {system}"},
    {Step::kGetSize,           "Opening file: {system}",                 "cannot get file size: {system}"},
    {Step::kTakeZeros,         "Error: {system}",                        "{system}"},
    {Step::kWrite,             "Writing file: {system}",                 "cannot write to file: {system}"},
    {Step::kFlush,             "Flushing write buffer: {system}",        "cannot flush writing buffers: {system}"},
    {Step::kCloseFile,         "Error: cannot close file"},
    {Step::kDeleteFile,        "Deleting file: {system}",                "cannot delete file: {system}"},
    {Step::kEnterFolder,       "Error: deleting \"{object}\": {system}", "cannot open directory: {system}"},
    {Step::kListFolder,        "Error: deleting \"{object}\": {system}", "cannot list directory: {system}"},
    {Step::kRemoveFolder,      "Error: deleting \"{object}\": {system}", "cannot remove directory: {system}"},
    {Step::kSeclude,           "Error: deleting \"{object}\": {system}", "cannot be moved to where its names are counted: {system}"},
    {Step::kGiveBack,          "Error: deleting \"{object}\": {system}", "left in the new folder \"{place}\", it cannot go back: {system}"},
    {Step::kRemoveSeclusion,   "Error: deleting \"{object}\": {system}", "the new folder \"{place}\" cannot be removed: {system}"},
}};
// clang-format on

constexpr bool IsInOrder() {
    for (std::size_t i = 0; i < kTexts.size(); ++i)
        if (kTexts[i].step != static_cast<Step>(i)) return false;
    return kTexts.back().step == Step::kRemoveSeclusion;
}
static_assert(IsInOrder(), "a row for each step, in the order of the steps");

const StepTexts& TextsOf(Step step) {
    return kTexts.at(static_cast<std::size_t>(step));
}

std::string Fill(std::string_view text, const Outcome& outcome, const std::string& systemText) {
    std::string filled;
    while (!text.empty()) {
        const std::size_t begin = std::min(text.find('{'), text.size());
        filled += text.substr(0, begin);
        text.remove_prefix(begin);
        if (text.empty()) break;
        const std::string_view name = text.substr(1, text.find('}') - 1);
        text.remove_prefix(name.size() + 2);
        if (name == "system") filled += systemText;
        if (name == "reason") filled += SystemMessageLine(outcome.code);
        if (name == "object") filled += outcome.object;
        if (name == "place") filled += outcome.place;
    }
    return filled;
}

}  // namespace

Outcome OutcomeOfChange(DWORD code, const ChangeRecorder& recorder) {
    const bool isStopped = code != ERROR_SUCCESS && recorder.Error() != ERROR_SUCCESS;
    return {code, isStopped ? Step::kRecord : Step::kNone};
}

std::string BoxText(const Outcome& outcome) {
    const std::string_view text = TextsOf(outcome.step).box;
    const std::string systemText = GetSystemMessageText(outcome.code);
    const bool isSilent = systemText.empty() && text.find("{system}") != text.npos;
    return isSilent ? std::string() : Fill(text, outcome, systemText);
}

std::string NamedBoxText(const Outcome& outcome) {
    std::string text = BoxText(outcome);
    const bool isNamed = TextsOf(outcome.step).box.find("{object}") != std::string_view::npos;
    if (!text.empty() && !isNamed && !outcome.object.empty()) text += "\n" + outcome.object;
    return text;
}

bool IsInformation(Step step) {
    return TextsOf(step).kind == Kind::kInformation;
}

std::string LineText(const Outcome& outcome) {
    const StepTexts& texts = TextsOf(outcome.step);
    const std::string systemText = GetSystemMessageText(outcome.code);
    return Fill(texts.line.empty() ? texts.box : texts.line, outcome,
                systemText.empty() ? SystemMessageLine(outcome.code) : systemText);
}

}  // namespace permora
