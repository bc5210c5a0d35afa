// verify: what is not as it should be in the lists of a tree, and mending it.
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/change_output.h"
#include "cli/commands.h"
#include "cli/fault_output.h"
#include "cli/interrupts.h"
#include "cli/json_output.h"
#include "cli/listing.h"
#include "cli/mode_check.h"
#include "cli/object_command.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "cli/tree_progress.h"
#include "platform/api/errors.h"
#include "platform/nt/security_descriptor.h"
#include "platform/security_change.h"
#include "platform/volume_loss.h"
#include "survey/repair.h"
#include "survey/survey.h"
#include "survey/survey_rows.h"

namespace permora {
namespace {

constexpr RemarkSet kMendable = {Remark::kUnusualOrder, Remark::kStale};
constexpr RemarkSet kUnreached = {Remark::kUnreadable, Remark::kUnlisted};
constexpr RemarkSet kFaults = {Remark::kUnusualOrder, Remark::kStale, Remark::kDamaged, Remark::kUnreadable,
                               Remark::kUnlisted};

// The rows of a descriptor's list under a line that names the moment.
std::string ListText(const std::string& path, const char* moment, const nt::SecurityDescriptor& security) {
    AccessEntryList entries(security.dacl.entries);
    return PrintableText(path) + ' ' + moment + ":\n" + RowsText(entries);
}

// What an object has, and what it would have without faults.
struct Mending {
    ReadParts list;  // as WriteSecurity takes what was read
    nt::SecurityDescriptor before;
    nt::SecurityDescriptor after;
    bool IsNeeded() const { return before != after; }
};

DWORD ReadMending(const HeldObject& object, Mending& mending) {
    ReadParts whole;
    ReadParts above;
    DWORD error = object.ReadAbove(DACL_SECURITY_INFORMATION, above);
    if (error == ERROR_SUCCESS) error = object.ReadSecurity(kUsualParts, whole);
    if (error == ERROR_SUCCESS) error = object.ReadSecurity(DACL_SECURITY_INFORMATION, mending.list);
    if (error != ERROR_SUCCESS) return error;
    const auto before = DescriptorOf(whole);
    const auto folder = DescriptorOf(above);
    if (!before) return ERROR_INVALID_SECURITY_DESCR;
    mending.before = *before;
    mending.after = *before;
    if (before->daclState != nt::DaclState::kList) return ERROR_SUCCESS;
    const nt::ObjectKind kind = object.IsFolder() ? nt::ObjectKind::kFolder : nt::ObjectKind::kFile;
    mending.after = Repaired(*before, folder ? &*folder : nullptr, kind);
    return ERROR_SUCCESS;
}

// What has become of an object with a fault.
enum class Mended { kDone, kDoneBefore, kFailed };

// Tells whom mode bits let in otherwise than the lists.
class ModeReporting : public ModeObserver {
  public:
    ModeReporting(const Target& of, FaultOutput& printing, ProgressLine& progress, ConsoleMessages& console)
        : target(of), output(printing), line(progress), messages(console) {}

    std::size_t Found() const { return found; }

    bool Begin(std::string_view path) override {
        if (IsInterrupted()) return false;
        line.ShowPath(++count, path);
        return true;
    }
    void Take(std::string_view path, const ServedFolder& served,
              const std::vector<ModeFinding>& findings) override {
        ++found;
        line.Clear();
        output.AddModes(TypedPath(target, std::string(path)), served.share, findings);
    }
    void Miss(std::string_view path, const ServedFolder& served, DWORD error) override {
        ++found;
        line.Clear();
        const std::string typed = TypedPath(target, std::string(path));
        messages.SetSubject(typed);
        messages.Say("not compared with its mode bits: " +
                     (error != ERROR_SUCCESS ? LineText({error})
                                             : "the share " + served.share +
                                                   " lets users in as others, or keeps lists elsewhere (" +
                                                   served.setting + ')'));
        output.AddMissed(typed, Remark::kModeUnasked, error);
    }

  private:
    const Target& target;
    FaultOutput& output;
    ProgressLine& line;
    ConsoleMessages& messages;
    std::size_t count = 0;
    std::size_t found = 0;
};

class VerifyCommand : public ObjectCommand, private SurveyObserver {
  public:
    explicit VerifyCommand(const CommandParent& parent)
        : ObjectCommand(parent, "verify",
                        "Name what is not as it should be in the lists of files and folders, from PATH\n"
                        "downwards: damaged descriptors, entries in an unusual order, inherited entries\n"
                        "that are not what the folder hands down; in a Samba server's shares also mode\n"
                        "bits that keep out whom a list lets in. Ends with 1 while there is any.\n"
                        "Links and what is mounted below are not entered") {
        output.DryRunNeeds(repair);
        replaceDamaged.Needs(repair);
    }

  private:
    std::optional<PlannedChange> Plan() override;
    ChangeOutput* OutputOfMissing() override { return repair ? &output : nullptr; }
    void Start() override;
    ExitCode Conclude(ExitCode code) override;
    ExitCode Begin(const std::vector<Target>& targets) override;
    bool Do(const Target& target) override;
    bool End() override;

    bool Begin(std::string_view path) override;
    void Take(const SurveyRow& row) override;

    void CheckModes(HeldObject& top);
    void RepairAll(const HeldObject& top);
    Mended Repair(const HeldObject& top, const std::string& below, RemarkSet faults);
    Mended RepairList(const HeldObject& object, const std::string& below);
    Mended ReplaceWhole(const HeldObject& object, const std::string& below);
    bool SayFailures(const std::string& below, const FailuresBelow& failures);

    Flag repair{*this, "--repair",
                "Mend it, and show the entries before and after: the usual order (denials\n"
                "first), and what the folder hands down now. Damaged descriptors stay"};
    ChangeOutput output{*this, messages,
                        "With --repair: show the entries before and after and write nothing"};
    Flag replaceDamaged{*this, "--replace-damaged",
                        "With --repair: give objects with a damaged descriptor what their folder hands\n"
                        "down to a new one. What the damaged one meant is lost"};
    QuietFlag quiet{*this};
    Recording recording{*this};

    Survey survey;
    ModeCheck modeCheck;
    bool areSharesKnown = true;
    std::size_t otherModes = 0;
    std::optional<FaultOutput> faultOutput;
    std::optional<ProgressLine> line;
    const Target* target = nullptr;
    std::optional<SurveyRows> faulty;  // of one tree
    std::size_t missing = 0;           // targets, when nothing is repaired
    std::size_t objects = 0;
    std::size_t faults = 0;
    std::size_t repaired = 0;
};

std::optional<ObjectCommand::PlannedChange> VerifyCommand::Plan() {
    if (!repair || output.IsDryRun()) return std::nullopt;
    return PlannedChange{ChangeKind::kPermissions, recording};
}

void VerifyCommand::Start() {
    output.Start();
    faultOutput.emplace(output.IsJson() ? FaultForm::kJson : FaultForm::kLines);
}

ExitCode VerifyCommand::Begin(const std::vector<Target>& targets) {
    missing = Paths().size() - targets.size();
    WatchForInterrupts();
    line.emplace(quiet ? Progress::kQuiet : Progress::kShown);
    messages.SetSubject("");
    if (const DWORD error = modeCheck.Prepare(); error != ERROR_SUCCESS) {
        areSharesKnown = false;
        messages.Say("not known which folders are shares, and so not compared with mode bits: " +
                     LineText({error}));
    }
    return ExitCode::kDone;
}

bool VerifyCommand::Begin(std::string_view path) {
    if (IsInterrupted()) return false;
    line->ShowPath(++objects, path);
    return true;
}

void VerifyCommand::Take(const SurveyRow& row) {
    if (!row.remarks.HasAnyOf(kFaults)) return;
    ++faults;
    line->Clear();
    const std::string path = TypedPath(*target, std::string(row.path));
    if (row.remarks.HasAnyOf(kUnreached)) {
        messages.SetSubject(path);
        messages.Say(
            (row.remarks.Has(Remark::kUnlisted) ? "not verified, what is in it: " : "not verified: ") +
            LineText({row.error}));
    }
    for (const Remark remark : row.remarks)
        if (kUnreached.Has(remark))
            faultOutput->AddMissed(path, remark, row.error);
        else if (kFaults.Has(remark))
            faultOutput->Add(path, remark);
    if (repair) faulty->Add(row);
}

bool VerifyCommand::Do(const Target& next) {
    HeldObject top;
    if (repair) output.BeginObject(next.argument);
    if (!FindTarget(next, top, messages)) {
        if (repair) output.EndObject(false);
        ++missing;
        return false;
    }
    output.LeaveObject();
    target = &next;
    faulty.emplace();
    (void)survey.Walk(top, *this);  // it is ended by an interrupt alone
    line->Clear();
    CheckModes(top);
    RepairAll(top);
    return true;
}

void VerifyCommand::CheckModes(HeldObject& top) {
    ModeReporting reporting(*target, *faultOutput, *line, messages);
    ChangedTop place;
    if (areSharesKnown && top.FindTop(place) == ERROR_SUCCESS) modeCheck.Run(top, place.path, reporting);
    line->Clear();
    otherModes += reporting.Found();
}

// A folder comes before what is in it, and a part of that is mended with it.
void VerifyCommand::RepairAll(const HeldObject& top) {
    std::string below;
    for (std::size_t i = 0; i < faulty->Count(); ++i) {
        if (IsInterrupted() || recording.IsStopped()) return;
        const SurveyRow row = faulty->Row(i, below);
        const std::string path = TypedPath(*target, below);
        messages.SetSubject(path);
        output.BeginObject(path);
        // The reason was printed.
        const bool isReached = !row.remarks.HasAnyOf(kUnreached);
        const Mended mended = isReached ? Repair(top, below, row.remarks) : Mended::kFailed;
        if (mended == Mended::kDone) output.SetChanged();
        if (mended != Mended::kFailed) ++repaired;
        output.EndObject(mended != Mended::kFailed);
    }
}

Mended VerifyCommand::Repair(const HeldObject& top, const std::string& below, RemarkSet remarks) {
    const bool isDamaged = remarks.Has(Remark::kDamaged);
    if (isDamaged && !replaceDamaged) {
        messages.Say(
            "not repaired: its descriptor is damaged (--replace-damaged gives it what its folder hands "
            "down)");
        return Mended::kFailed;
    }
    HeldObject object;
    DWORD error = top.HoldBelow(below, object);
    if (error == ERROR_SUCCESS && !output.IsDryRun()) error = object.TakeTurn();
    if (!messages.Check({error})) return Mended::kFailed;
    return isDamaged ? ReplaceWhole(object, below) : RepairList(object, below);
}

bool VerifyCommand::SayFailures(const std::string& below, const FailuresBelow& failures) {
    if (failures.count == 0) return true;
    const auto [path, failure] = failures.ToTell();
    messages.SetSubject(TypedPath(*target, path.empty() ? below : below + '\\' + path));
    messages.SaySystemError(failure);
    messages.SetSubject(TypedPath(*target, below));
    if (IsVolumeLost(failure)) {
        messages.Say(
            "repaired itself, and what is below it that inherits only to a part: the rest was not reached");
        return false;
    }
    messages.Say(
        "repaired itself, but not everything below that inherits: " + std::to_string(failures.count) +
        (failures.count == 1 ? " object" : " objects") + " could not be reached or changed");
    return false;
}

Mended VerifyCommand::RepairList(const HeldObject& object, const std::string& below) {
    const std::string path = TypedPath(*target, below);
    constexpr int kAttempts = 5;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        Mending mending;
        std::vector<std::uint8_t> list;
        FailuresBelow failures;
        if (!messages.Check({ReadMending(object, mending)})) return Mended::kFailed;
        if (!mending.IsNeeded()) return Mended::kDoneBefore;
        if (!mending.after.dacl.AppendTo(list)) {
            messages.Check({ERROR_INVALID_ACL});
            return Mended::kFailed;
        }
        const std::string shown =
            ListText(path, "before", mending.before) + ListText(path, "after", mending.after);
        if (output.IsDryRun()) {
            messages.PrintForPeople(shown);
            return Mended::kDone;
        }
        const NewParts parts{.dacl = reinterpret_cast<PACL>(list.data())};
        const DWORD error = object.WriteSecurity(
            DACL_SECURITY_INFORMATION, parts, mending.list.descriptor.get(), recording.Recorder(), failures);
        if (error == ERROR_REVISION_MISMATCH) continue;
        if (!messages.Check(OutcomeOfChange(error, recording.Recorder()))) return Mended::kFailed;
        messages.PrintForPeople(shown);
        return SayFailures(below, failures) ? Mended::kDone : Mended::kFailed;
    }
    messages.Say("not repaired: another program changes it all the time");
    return Mended::kFailed;
}

Mended VerifyCommand::ReplaceWhole(const HeldObject& object, const std::string& below) {
    const std::string path = TypedPath(*target, below);
    if (output.IsDryRun()) {
        messages.PrintForPeople(PrintableText(path) + ": would get what its folder hands down\n");
        return Mended::kDone;
    }
    FailuresBelow failures;
    const DWORD error = object.ReplaceDamaged(recording.Recorder(), failures);
    if (error == ERROR_REVISION_MISMATCH) return Mended::kDoneBefore;
    if (!messages.Check(OutcomeOfChange(error, recording.Recorder()))) return Mended::kFailed;
    Mending made;
    if (ReadMending(object, made) == ERROR_SUCCESS)
        messages.PrintForPeople(ListText(path, "after", made.before));
    return SayFailures(below, failures) ? Mended::kDone : Mended::kFailed;
}

bool VerifyCommand::End() {
    line->Clear();
    output.SetChangeNumber(recording.Number());
    std::string text = "verified: " + std::to_string(objects) + ", with faults: " + std::to_string(faults);
    if (repair)
        text +=
            std::string(output.IsDryRun() ? ", would repair: " : ", repaired: ") + std::to_string(repaired);
    if (otherModes > 0) text += ", with other mode bits: " + std::to_string(otherModes);
    messages.PrintForPeople(text + '\n');
    if (otherModes > 0 && repair) {
        messages.SetSubject("");
        messages.Say(
            "mode bits are not repaired: what opens a file to users of a share opens it to users of this "
            "machine, too");
    }
    if (IsInterrupted()) SayInterrupted(messages);
    // A check says what a repair would do, which leaves mode bits alone.
    if (output.IsCheck()) return faults == repaired && !IsInterrupted();
    const std::size_t left = output.IsDryRun() ? faults : faults - repaired;
    return left == 0 && otherModes == 0 && areSharesKnown && !IsInterrupted();
}

ExitCode VerifyCommand::Conclude(ExitCode code) {
    Json rest = output.EndDocument();
    if (repair)
        rest["repairs"] = output.Results();
    else
        rest = {
            {"summary", {{"failed", missing}}}, {"messages", rest["messages"]}, {"leftOut", rest["leftOut"]}};
    rest["summary"]["verified"] = objects;
    rest["summary"]["faults"] = faults;
    rest["summary"]["otherModes"] = otherModes;
    faultOutput->End(rest);
    return output.Conclude(code);
}

}  // namespace

std::unique_ptr<Command> MakeVerify(const CommandParent& parent) {
    return std::make_unique<VerifyCommand>(parent);
}

}  // namespace permora
