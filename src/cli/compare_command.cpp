// compare: what differs between a tree as it was, saved or elsewhere, and a tree as it is.
#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "cli/commands.h"
#include "cli/difference_output.h"
#include "cli/interrupts.h"
#include "cli/object_command.h"
#include "cli/saved_parts.h"
#include "cli/word_option.h"
#include "platform/api/errors.h"
#include "platform/security_change.h"
#include "saved/saved_list_reader.h"
#include "saved/saved_path.h"
#include "saved/tree_comparison.h"
#include "saved/tree_saving.h"

namespace permora {
namespace {

ReadObject AsRead(const SavedObject& object) {
    return {object.path, object.kind,
            object.descriptor ? std::span<const std::uint8_t>(object.descriptor->bytes)
                              : std::span<const std::uint8_t>(),
            object.error};
}

// The objects of a tree that is there, handed to the comparison.
class TakenTree : public TreeVisitor {
  public:
    explicit TakenTree(TreeComparison& taker) : comparison(taker) {}
    bool Visit(const ReadObject& object) override { return comparison.Take(object); }

  private:
    TreeComparison& comparison;
};

// What is known of a text after it was read once.
struct CheckedText {
    SavedHead head;
    std::vector<std::string> tops;
    bool isComplete = false;
};

class CompareCommand : public ObjectCommand {
  public:
    explicit CompareCommand(const CommandParent& parent)
        : ObjectCommand(parent, "compare",
                        "Show what differs between saved lists, or one tree, and another tree: objects\n"
                        "that were added or are missing, entries, owners. Ends with 0 when all is alike\n"
                        "and with 1 when something differs or could not be read",
                        Objects::kPaths,
                        "What was saved (save --output), or a folder; then the tree to compare") {}

    std::string Interpret() override;

  private:
    // Everything is done here: a comparison that could not begin is neither alike nor different.
    ExitCode Begin(const std::vector<Target>& targets) override;
    bool Do(const Target& /*target*/) override { return true; }
    bool End() override { return areAlike; }

    bool CheckText(SavedFileInput& input, CheckedText& text);
    std::optional<std::size_t> ChooseTop(const CheckedText& text, const std::string& path);
    bool CompareText(const Target& was, const Target& now, const HeldObject& tree);
    bool TakeOurs(SavedListReader& reader, std::size_t top, TreeComparison& comparison);
    bool TakeSorted(SavedListReader& reader, TreeComparison& comparison);
    bool CompareTrees(const Target& was, const HeldObject& wasTop, const Target& now,
                      const HeldObject& nowTop);
    bool SayFault(const SavedFault& fault);
    void SayHidden(const Target& tree);
    DifferenceOutput MakeOutput(const Target& now, SECURITY_INFORMATION parts) {
        return {json ? DifferenceForm::kJson : DifferenceForm::kText,
                quiet ? Progress::kQuiet : Progress::kShown, now, parts, messages};
    }

    WordOption words{*this};
    JsonFlag json{*this};
    QuietFlag quiet{*this};
    bool areAlike = false;
};

std::string CompareCommand::Interpret() {
    if (std::string problem = ObjectCommand::Interpret(); !problem.empty()) return problem;
    return ObjectCount() != 2 ? "compare takes two: what was saved, and a tree" : words.Interpret();
}

ExitCode CompareCommand::Begin(const std::vector<Target>& targets) {
    HeldObject was;
    HeldObject now;
    if (targets.size() != 2) return ExitCode::kUsage;
    messages.SetSubject(targets[0].argument);
    if (!FindTarget(targets[0], was, messages)) return ExitCode::kUsage;
    messages.SetSubject(targets[1].argument);
    if (!FindTarget(targets[1], now, messages)) return ExitCode::kUsage;
    WatchForInterrupts();
    messages.SetSubject(targets[0].argument);
    const bool isCompared = was.IsFolder() ? CompareTrees(targets[0], was, targets[1], now)
                                           : CompareText(targets[0], targets[1], now);
    return isCompared ? ExitCode::kDone : ExitCode::kUsage;
}

bool CompareCommand::SayFault(const SavedFault& fault) {
    messages.Say((fault.line == 0 ? "" : "line " + std::to_string(fault.line) + ": ") + fault.reason);
    return false;
}

void CompareCommand::SayHidden(const Target& tree) {
    messages.SetSubject(tree.argument);
    SaySystemListsHidden("they are not compared", messages);
}

// Reads the text to its end: nothing is said about the tree by a text that is not whole.
bool CompareCommand::CheckText(SavedFileInput& input, CheckedText& text) {
    SavedFault fault;
    const auto reader = SavedListReader::Open(input, fault, words.Accounts());
    if (!reader) return SayFault(fault);
    SavedObject object;
    while (reader->Next(object, fault)) {
        if (IsInterrupted()) return false;
        if (reader->TopCount() > text.tops.size()) text.tops.push_back(reader->Top().path);
    }
    if (!fault.reason.empty()) return SayFault(fault);
    text.head = reader->Head();
    text.isComplete = reader->IsComplete();
    return true;
}

// Which of several trees in the text is compared: that of the same path.
std::optional<std::size_t> CompareCommand::ChooseTop(const CheckedText& text, const std::string& path) {
    if (text.tops.size() < 2) return 1;
    const auto found = std::find(text.tops.begin(), text.tops.end(), path);
    if (found != text.tops.end()) return static_cast<std::size_t>(found - text.tops.begin()) + 1;
    messages.Say("several trees were saved, and none of them at this path");
    return std::nullopt;
}

bool CompareCommand::CompareText(const Target& was, const Target& now, const HeldObject& tree) {
    SavedFileInput input;
    CheckedText text;
    if (!messages.Check({SavedFileInput::Open(was.folder + was.name, input)}) || !CheckText(input, text))
        return false;
    const std::optional<std::size_t> top = ChooseTop(text, now.folder + now.name);
    if (!top) return false;
    if (input.Rewind() != ERROR_SUCCESS) {
        messages.Say("it must be a file: it is read twice");
        return false;
    }
    SavedFault fault;
    const auto reader = SavedListReader::Open(input, fault, words.Accounts());
    if (!reader) return SayFault(fault);
    if (!text.isComplete) messages.Say("something could not be read when it was saved");

    SECURITY_INFORMATION parts = text.head.parts;
    if (SystemListFor(parts) == SystemList::kIncluded) parts &= ReadableParts(tree);
    DifferenceOutput output = MakeOutput(now, parts);
    if (parts != text.head.parts) SayHidden(now);
    TreeComparison comparison(text.head.parts, tree, parts, output);
    const bool isOurs = text.head.form == SavedForm::kPermora;
    if (!isOurs && !messages.Check({comparison.BeginBelowTop()})) return false;
    const bool isRead = isOurs ? TakeOurs(*reader, *top, comparison) : TakeSorted(*reader, comparison);
    if (isRead) comparison.End();
    output.End();
    if (IsInterrupted()) SayInterrupted(messages, "the rest was not compared");
    areAlike = isRead && output.Differences() == 0 && text.isComplete && !IsInterrupted();
    return isRead || IsInterrupted();
}

// False when the text is another one by now.
bool CompareCommand::TakeOurs(SavedListReader& reader, std::size_t top, TreeComparison& comparison) {
    SavedObject object;
    SavedFault fault;
    while (reader.Next(object, fault))
        if (reader.TopCount() == top && !comparison.Take(AsRead(object))) return false;
    return fault.reason.empty() || SayFault(fault);
}

// The other form has no order, so it is held in memory.
bool CompareCommand::TakeSorted(SavedListReader& reader, TreeComparison& comparison) {
    std::vector<SavedObject> objects;
    std::unordered_map<std::string, std::shared_ptr<const SavedDescriptor>> known;
    SavedObject object;
    SavedFault fault;
    while (reader.Next(object, fault)) {
        const auto& bytes = object.descriptor->bytes;
        object.descriptor =
            known.emplace(std::string(bytes.begin(), bytes.end()), object.descriptor).first->second;
        objects.push_back(std::move(object));
    }
    if (!fault.reason.empty()) return SayFault(fault);
    std::stable_sort(objects.begin(), objects.end(), [](const SavedObject& one, const SavedObject& other) {
        return ComesBefore(one.path, other.path);
    });
    return std::all_of(objects.begin(), objects.end(),
                       [&](const SavedObject& each) { return comparison.Take(AsRead(each)); });
}

bool CompareCommand::CompareTrees(const Target& was, const HeldObject& wasTop, const Target& now,
                                  const HeldObject& nowTop) {
    SECURITY_INFORMATION parts = kDescriptorParts;
    for (const auto& [target, top] : {std::pair(&was, &wasTop), std::pair(&now, &nowTop)}) {
        const SECURITY_INFORMATION readable = ReadableParts(*top);
        if (readable != kDescriptorParts) SayHidden(*target);
        parts &= readable;
    }
    DifferenceOutput output = MakeOutput(now, parts);
    TreeComparison comparison(parts, nowTop, parts, output);
    TakenTree taken(comparison);
    const bool isRead = ReadTree(wasTop, parts, taken) == ERROR_SUCCESS && comparison.End();
    output.End();
    if (IsInterrupted()) SayInterrupted(messages, "the rest was not compared");
    areAlike = isRead && output.Differences() == 0;
    return true;
}

}  // namespace

std::unique_ptr<Command> MakeCompare(const CommandParent& parent) {
    return std::make_unique<CompareCommand>(parent);
}

}  // namespace permora
