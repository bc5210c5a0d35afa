#include "cli/tree_edit_run.h"

#include "cli/interrupts.h"
#include "cli/listing.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"
#include "platform/system_message.h"
#include "security/outcome.h"

namespace permora {
namespace {

std::string ErrorText(DWORD error) {
    switch (error) {
        case ERROR_REVISION_MISMATCH:
            return "not changed: another program keeps changing it";
        case ERROR_BUSY:
            return "not changed: another program of yours is still changing it";
        case ERROR_FILE_INVALID:
            return "not changed: another object has its name now";
        case ERROR_NOT_SAME_DEVICE:
            return "not changed, nor anything in it: something else is mounted there";
        case kHasFurtherNames:
            return "not changed: its owner would change under further names, too (hard links; --linked does "
                   "it all the same)";
        default:
            return "not changed: " + LineText({error});
    }
}

std::string FaultText(NotEdited fault, DWORD error) {
    switch (fault) {
        case NotEdited::kError:
            break;
        case NotEdited::kUnlisted:
            return "what is in it was not changed, or not to its end: " + SystemMessageLine(error);
        case NotEdited::kHiddenAccount:
            return "not changed: an account to be replaced stands in an entry in which it cannot be replaced";
        case NotEdited::kUnknownFolder:
            return "not changed: what its folder hands down cannot be read";
        case NotEdited::kNoList:
            return "not changed: there is no access list, so everyone may do everything, and only those in "
                   "the new list could afterwards";
    }
    return ErrorText(error);
}

const char* RemarkText(EditRemark remark, ChangeMode mode) {
    switch (remark) {
        case EditRemark::kLetsNobodyIn:
            return mode == ChangeMode::kDryRun ? "its list would let nobody in"
                                               : "its list lets nobody in now";
        case EditRemark::kInheritedStay:
            return "it inherits such entries from the folder above, where they stay";
        case EditRemark::kOtherTypesStay:
            return "entries for the account stay, since they are of other types than allow and deny "
                   "(--drop-other-entries removes them)";
        case EditRemark::kSystemListsStay:
            return "system access lists (audits) cannot be read without a privilege: they stay, also where "
                   "the account stands in them";
    }
    return "";
}

}  // namespace

TreeEditRun::TreeEditRun(const How& manner, ChangeRecorder& changeRecorder, ChangeOutput& changeOutput)
    : how(manner),
      recorder(changeRecorder),
      output(changeOutput),
      messages(changeOutput.Messages()),
      progress(manner.progress) {
    WatchForInterrupts();
}

// A failure of the whole tree was printed.
void TreeEditRun::Stop(bool isDone) {
    if (isDone) return;
    isWhole = false;
    output.SetFailed();
}

void TreeEditRun::Edit(const Target& next, DescriptorEdit& edit) {
    target = &next;
    messages.SetSubject(next.argument);
    HeldObject object;
    bool isSupported = false;
    if (!FindTarget(next, object, messages) || !messages.Check({object.AskAccessControl(isSupported)}))
        return Stop(false);
    if (!isSupported) return Stop(messages.Check({ERROR_NOT_SUPPORTED, Step::kUseAccessControl}));
    const TreeEditOptions options = {output.IsDryRun() ? TreeListMode::kCountOnly : TreeListMode::kWrite,
                                     how.linked, how.linkedTop};
    if (output.IsDryRun()) nested.Add(next, object, messages);
    const ObjectCounts before = CountsSoFar();
    const DWORD error = EditTree(object, edit, options, *this, recorder, counts);
    progress.Clear();
    output.Count(CountsSoFar() - before);
    if (error == ERROR_OPERATION_ABORTED) output.SetFailed();
    if (error == ERROR_SUCCESS || error == ERROR_OPERATION_ABORTED) return;
    messages.SetSubject(next.argument);
    Stop(messages.Check(OutcomeOfChange(error, recorder)));
}

bool TreeEditRun::End() {
    progress.Clear();
    messages.PrintForPeople((output.IsDryRun() ? "would change: " : "changed: ") +
                            std::to_string(counts.changed) +
                            ", already so: " + std::to_string(counts.unchanged) +
                            ", failed: " + std::to_string(counts.failed) + '\n');
    if (IsInterrupted()) SayInterrupted(messages);
    return isWhole && counts.failed == 0 && !IsInterrupted();
}

bool TreeEditRun::Begin(std::string_view path) {
    if (IsInterrupted()) return false;
    if (path.empty())
        progress.Show(++begun, target->argument);
    else
        progress.ShowPath(++begun, path);
    return true;
}

bool TreeEditRun::IsStopped() const {
    return IsInterrupted();
}

void TreeEditRun::Preview(const std::string& path, bool isFolder, const nt::SecurityDescriptor& before,
                          const nt::SecurityDescriptor& after) {
    progress.Clear();
    const ComparedObject kind = isFolder ? ComparedObject::kFolder : ComparedObject::kFile;
    const std::vector<ComparedRow> rows = ChangedRows(&before, &after, kind);
    const std::string name = TypedPath(*target, path);
    messages.PrintForPeople("would change: " + PrintableText(name) + '\n' + ChangedRowsText(rows));
    output.AddDifference(name, rows);
}

void TreeEditRun::Fail(const std::string& path, NotEdited fault, DWORD error) {
    Say(path, FaultText(fault, error), error);
}

void TreeEditRun::Remark(const std::string& path, EditRemark remark) {
    Say(path, RemarkText(remark, output.Mode()));
}

void TreeEditRun::Say(const std::string& path, const std::string& text, DWORD code) {
    progress.Clear();
    messages.SetSubject(TypedPath(*target, path));
    messages.Say(text, code);
}

}  // namespace permora
