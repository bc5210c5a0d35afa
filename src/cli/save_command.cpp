// save: the lists of trees as text.
#include <array>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "cli/commands.h"
#include "cli/interrupts.h"
#include "cli/json_output.h"
#include "cli/object_command.h"
#include "cli/saved_parts.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "cli/text_target.h"
#include "cli/tree_progress.h"
#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/security_change.h"
#include "platform/terminal.h"
#include "saved/tree_saving.h"
#include "saved/utc_time.h"

namespace permora {
namespace {

// What the volume calls itself: "ext4 1a2b3c4d Data".
std::string VolumeText(const std::string& path) {
    std::array<char, 261> label{};  // no name of a volume is longer
    std::array<char, 261> fileSystem{};
    DWORD serial = 0;
    constexpr std::size_t kRootLength = 3;
    if (GetVolumeInformationA(path.substr(0, kRootLength).c_str(), label.data(), label.size(), &serial,
                              nullptr, nullptr, fileSystem.data(), fileSystem.size()) == FALSE)
        return "unknown";
    const std::string text = fileSystem.data() + (' ' + HexText(serial));
    return label[0] == '\0' ? text : text + ' ' + label.data();
}

// --format.
class FormatOption : public TextOption {
  public:
    explicit FormatOption(OptionPlace place)
        : TextOption(place, "--format", "NAME",
                     "The form of the text: permora (if not given), or icacls, that of Windows' own\n"
                     "tool, which holds the permissions and no owners") {
        Describe({ValueKind::kKnown, {{"permora", ""}, {"icacls", "that of Windows' own tool"}}});
    }
    std::string Interpret(const std::string& text) override {
        if (text == "icacls")
            form = SavedForm::kIcacls;
        else if (text != "permora")
            return text + ": the forms are permora and icacls";
        return {};
    }

    SavedForm form = SavedForm::kPermora;
};

// Shows how far the work is, and names what is missing.
class SavingProgress : public SavingObserver {
  public:
    SavingProgress(Progress mode, ConsoleMessages& console) : line(mode), messages(console) {}

    void SetTarget(const Target& next) { target = &next; }
    std::size_t Count() const { return count; }
    bool IsAnythingMissing() const { return isAnythingMissing; }

    bool Begin(std::string_view path) override {
        if (IsInterrupted()) return false;
        line.ShowPath(++count, path);
        return true;
    }
    void PassOver(std::string_view path, SavedKind kind, DWORD error) override {
        if (kind == SavedKind::kMounted) return;
        isAnythingMissing = true;
        line.Clear();
        messages.SetSubject(TypedPath(*target, std::string(path)));
        messages.Say("not saved: " + (kind == SavedKind::kUnlisted ? std::string("what is in it: ") : "") +
                     LineText({error}));
    }
    void End() { line.Clear(); }

  private:
    ProgressLine line;
    ConsoleMessages& messages;
    const Target* target = nullptr;
    std::size_t count = 0;
    bool isAnythingMissing = false;
};

class SaveCommand : public ObjectCommand {
  public:
    explicit SaveCommand(const CommandParent& parent)
        : ObjectCommand(parent, "save",
                        "Save the owners and permissions of files and folders, with everything below\n"
                        "them, as text. Links and what is mounted below are not entered") {}

  private:
    std::string Interpret() override;
    ExitCode Begin(const std::vector<Target>& targets) override;
    bool Do(const Target& target) override;
    bool End() override;
    void PrintSaved(bool isWritten);
    void ChooseParts(const std::vector<Target>& targets);
    DWORD BeginText();
    bool FinishText();
    bool AreInOneFolder(const std::vector<Target>& targets);
    bool Fail(DWORD error);

    TextOption output{*this, "--output", "FILE",
                      "The file to write; it appears when it is complete, and replaces an older one.\n"
                      "- is standard output",
                      Presence::kRequired};
    FormatOption format{*this};
    JsonFlag json{*this};
    QuietFlag quiet{*this};

    std::string outputName;
    std::unique_ptr<TextTarget> text;
    std::unique_ptr<SavedListWriter> writer;
    SECURITY_INFORMATION parts = 0;
    bool hasBegun = false;
    bool hasFailed = false;  // the text cannot be used
    bool isTargetMissing = false;
    std::optional<SavingProgress> progress;
    Json results = Json::array();
};

std::string SaveCommand::Interpret() {
    std::string problem = ObjectCommand::Interpret();
    if (problem.empty() && json && output.Text() == kStandardOutput)
        problem = "--json needs standard output for itself: --output must name a file";
    return problem;
}

// The tool restores into one folder.
bool SaveCommand::AreInOneFolder(const std::vector<Target>& targets) {
    for (const Target& target : targets)
        if (target.folder.empty() || target.folder != targets.front().folder) return false;
    return true;
}

ExitCode SaveCommand::Begin(const std::vector<Target>& targets) {
    outputName = output.Text().value_or("");
    messages.SetSubject(outputName);
    if (format.form == SavedForm::kIcacls && !AreInOneFolder(targets)) {
        messages.Say("the form icacls holds objects of one folder, and no drive");
        return ExitCode::kUsage;
    }
    const bool isStandardOutput = outputName == kStandardOutput;
    if (isStandardOutput && format.form == SavedForm::kIcacls && TerminalColumns(stdout) != 0) {
        messages.Say("the form icacls is no text for a terminal");
        return ExitCode::kUsage;
    }
    text = TextTarget::Open(outputName, messages);
    if (!text) return ExitCode::kUsage;
    isTargetMissing = targets.size() != ObjectCount();
    writer = SavedListWriter::Make(format.form, *text);
    WatchForInterrupts();
    OutliveReaders();
    ChooseParts(targets);
    progress.emplace(quiet ? Progress::kQuiet : Progress::kShown, messages);
    return ExitCode::kDone;
}

// The text holds the same parts of all objects. What cannot be found is told when its turn comes.
void SaveCommand::ChooseParts(const std::vector<Target>& targets) {
    if (format.form == SavedForm::kIcacls) {
        parts = DACL_SECURITY_INFORMATION;
        return;
    }
    parts = kDescriptorParts;
    for (const Target& target : targets) {
        HeldObject top;
        if (!FindItem(target.object, top).IsDone()) continue;
        const SECURITY_INFORMATION readable = ReadableParts(top);
        if (readable == kDescriptorParts) continue;
        parts &= readable;
        messages.SetSubject(target.argument);
        SaySystemListsHidden("they are not saved", messages);
    }
}

bool SaveCommand::Fail(DWORD error) {
    hasFailed = true;
    if (error == ERROR_OPERATION_ABORTED) return false;
    progress->End();
    messages.SetSubject(outputName);
    messages.Check({error});
    return false;
}

DWORD SaveCommand::BeginText() {
    hasBegun = true;
    return writer->Begin({format.form, UtcTimeText(), parts});
}

bool SaveCommand::Do(const Target& target) {
    if (hasFailed) return false;
    HeldObject top;
    if (!FindTarget(target, top, messages)) {
        isTargetMissing = true;
        return false;
    }
    SavedTop saved{.path = target.folder + target.name, .volume = {}};
    saved.volume = VolumeText(saved.path);
    // The letter of a volume depends on what is mounted. Where there is a path that will lead here again, the
    // text holds that.
    ChangedTop place;
    if (top.FindTop(place) == ERROR_SUCCESS) saved.path = place.path;
    DWORD error = hasBegun ? DWORD{ERROR_SUCCESS} : BeginText();
    if (error == ERROR_SUCCESS) error = writer->BeginTop(saved);
    progress->SetTarget(target);
    const std::size_t before = progress->Count();
    if (error == ERROR_SUCCESS) error = SaveTree(top, parts, *writer, *progress);
    results.push_back({{"path", target.argument}, {"objects", progress->Count() - before}});
    return error == ERROR_SUCCESS || Fail(error);
}

// The text says itself that something is missing, or there is none.
bool SaveCommand::FinishText() {
    DWORD error = ERROR_SUCCESS;
    if (isTargetMissing) error = writer->MarkIncomplete();
    if (error == ERROR_SUCCESS) error = writer->End();
    if (error == ERROR_SUCCESS) error = text->Complete();
    return error == ERROR_SUCCESS || Fail(error);
}

void SaveCommand::PrintSaved(bool isWritten) {
    const bool isComplete = isWritten && !isTargetMissing && !progress->IsAnythingMissing();
    PrintJson(Name(), results,
              {{"file", outputName},
               {"written", isWritten},
               {"complete", isComplete},
               {"parts", PartsJson(parts)},
               {"summary", {{"saved", isWritten ? progress->Count() : 0}}}});
}

bool SaveCommand::End() {
    if (!progress) return false;
    progress->End();
    const bool isWritten = hasBegun && !hasFailed && !IsInterrupted() && FinishText();
    if (json) PrintSaved(isWritten);
    if (isWritten) {
        if (outputName != kStandardOutput && !json)
            Print("saved: " + std::to_string(progress->Count()) + '\n');
        return !isTargetMissing && !progress->IsAnythingMissing();
    }
    if (IsInterrupted()) SayInterrupted(messages, "nothing was saved");
    messages.SetSubject(outputName);
    messages.Say(outputName == kStandardOutput ? "the text is not complete" : "not written");
    return false;
}

}  // namespace

std::unique_ptr<Command> MakeSave(const CommandParent& parent) {
    return std::make_unique<SaveCommand>(parent);
}

}  // namespace permora
