#include "platform/linux/shell/tree_copy.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/descriptor_path.h"
#include "platform/linux/files/file_handle.h"
#include "platform/linux/files/unmounted_entry.h"
#include "platform/linux/shell/new_file.h"
#include "platform/linux/shell/object_properties.h"
#include "platform/linux/shell/unfinished_files.h"

namespace permora::host {
namespace {

constexpr mode_t kPermissions = 0777;

// The very file that is held, which is known to be one: nothing else is opened on the way. A lease that its
// owner has on it is not waited for.
DWORD OpenContents(const ObjectHandle& file, UniqueFd& opened) {
    opened.Reset(
        open(DescriptorPath(file.Descriptor()).Text(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    return opened ? ERROR_SUCCESS : ErrorFromOpening(errno);
}

}  // namespace

void CopiedFiles::Add(const struct stat& source) {
    states.insert_or_assign(std::pair(source.st_dev, source.st_ino), State{source.st_mtim, source.st_size});
}

bool CopiedFiles::Hold(const struct stat& source) const {
    const auto found = states.find(std::pair(source.st_dev, source.st_ino));
    return found != states.end() && found->second.size == source.st_size &&
           found->second.lastWrite.tv_sec == source.st_mtim.tv_sec &&
           found->second.lastWrite.tv_nsec == source.st_mtim.tv_nsec;
}

void TreeCopy::Copy(const WalkedItem& item, std::string newName, NewFilePlace place, CopiedFiles* copied) {
    topName = std::move(newName);
    topPlace = place;
    record = copied;
    sourceVolume = AskVolume(item.object);
    talk.progress.toFolder = top.ShownPath();
    WalkItem(item, talk, *this);
    entered.clear();
}

const std::string& TreeCopy::NewNameOf(const WalkedItem& item) const {
    return entered.empty() ? topName : item.hostName;
}

// --- Files and links.

void TreeCopy::File(const WalkedItem& item) {
    const ULONGLONG before = talk.progress.bytesDone;
    FileAnswers answers;
    if (entered.empty()) answers.place = topPlace;
    const PutOutcome outcome = PutWithRetries(item, Current(), talk, [&](DWORD& error) {
        talk.progress.bytesDone = before;
        return CopyOnce(item, answers, error);
    });
    if (outcome == PutOutcome::kDone && record != nullptr) record->Add(item.object.Status());
    const bool isFile = S_ISREG(item.object.Status().st_mode);
    if (isFile && !talk.IsCancelled())
        talk.progress.bytesDone = before + static_cast<ULONGLONG>(item.object.Status().st_size);
}

PutOutcome TreeCopy::CopyOnce(const WalkedItem& item, FileAnswers& answers, DWORD& error) {
    TargetFolder& target = Current();
    std::string hostName = NewNameOf(item);
    const bool isLink = item.object.IsLink();
    error = isLink                                  ? RefuseUnreadableFile(item.object)
            : S_ISREG(item.object.Status().st_mode) ? ERROR_SUCCESS
                                                    : ERROR_NOT_SUPPORTED;
    std::optional<Clash> clash;
    if (error == ERROR_SUCCESS) error = target.CheckName(hostName);
    if (error == ERROR_SUCCESS) error = target.FindClash(hostName, clash);
    if (error != ERROR_SUCCESS) return PutOutcome::kFailed;
    if (clash && answers.place == NewFilePlace::kFree) {
        const ClashAnswer answer = AskAboutClash(item, target, *clash, talk, error);
        if (answer != ClashAnswer::kGoOn)
            return answer == ClashAnswer::kFail ? PutOutcome::kFailed : PutOutcome::kPassedOver;
    }
    // What stands there keeps the case of its name, as on Windows.
    if (clash) hostName = clash->hostName;
    answers.place = clash ? NewFilePlace::kReplacing : NewFilePlace::kFree;
    return isLink ? CopyLink(item, hostName, answers.place, error) : CopyFile(item, hostName, answers, error);
}

// Where the host keeps no modes everything has all bits, which says nothing about who may use it.
mode_t TreeCopy::ModeOfCopy(mode_t mode) const {
    constexpr mode_t kOfFiles = 0666;
    const bool isMade = sourceVolume.isNtfs && (mode & kPermissions) == kPermissions;
    return isMade ? kOfFiles : mode & kPermissions;
}

PutOutcome TreeCopy::CopyFile(const WalkedItem& item, const std::string& hostName, FileAnswers& answers,
                              DWORD& error) {
    TargetFolder& target = Current();
    UniqueFd source;
    error = OpenContents(item.object, source);
    if (error != ERROR_SUCCESS) return PutOutcome::kFailed;
    const struct stat& status = item.object.Status();
    NewFile file;
    error = file.Make(target, hostName, ModeOfCopy(status.st_mode), status.st_size, answers.place);
    if (error == ERROR_SUCCESS)
        error = contents.Copy({source.Get(), sourceVolume}, status,
                              {file.Object().Descriptor(), target.Volume()});
    if (error != ERROR_SUCCESS) return PutOutcome::kFailed;
    const PropertyResult properties = CopyProperties(
        item, sourceVolume, {target.Descriptor(), file.NameNow(), file.Object(), target.Volume()}, contents);
    error = properties.error;
    if (error != ERROR_SUCCESS) return PutOutcome::kFailed;
    if (properties.loss != ERROR_SUCCESS && !answers.mayLose) {
        if (!AgreesToLoss(item, properties.loss)) return PutOutcome::kPassedOver;
        answers.mayLose = true;
    }
    error = CopyTimes(item.object, file.Object());
    if (error == ERROR_SUCCESS) error = file.Publish();
    return error == ERROR_SUCCESS ? PutOutcome::kDone : PutOutcome::kFailed;
}

bool TreeCopy::AgreesToLoss(const WalkedItem& item, DWORD loss) {
    return talk.Agrees(
        {.kind = FileOperationQuestionKind::kPropertyLoss,
         .source = item.Described(),
         .target = {.path = Current().ShownPathOf(NewNameOf(item)), .isFolder = item.object.IsFolder()},
         .error = loss});
}

PutOutcome TreeCopy::CopyLink(const WalkedItem& item, const std::string& hostName, NewFilePlace place,
                              DWORD& error) {
    std::string text;
    error = item.object.ReadLinkText(text);
    if (error != ERROR_SUCCESS) return PutOutcome::kFailed;
    if (place == NewFilePlace::kFree) {
        error = PutLink(item, text, hostName, hostName);
        return error == ERROR_SUCCESS ? PutOutcome::kDone : PutOutcome::kFailed;
    }
    Current().SweepOnce();
    // Another process may sweep the link away before it is in its place.
    constexpr int kAttempts = 5;
    error = ERROR_FILE_NOT_FOUND;
    for (int i = 0; i < kAttempts && error == ERROR_FILE_NOT_FOUND; ++i)
        error = PutLink(item, text, TemporaryName(), hostName);
    return error == ERROR_SUCCESS ? PutOutcome::kDone : PutOutcome::kFailed;
}

DWORD TreeCopy::PutLink(const WalkedItem& item, const std::string& text, const std::string& madeName,
                        const std::string& hostName) {
    TargetFolder& target = Current();
    const int folder = target.Descriptor();
    if (symlinkat(text.c_str(), folder, madeName.c_str()) != 0) return ErrorFromErrno(errno);
    ObjectHandle made;
    DWORD error = ObjectHandle::OpenAt(folder, madeName.c_str(), made);
    // Something else may have taken its place by now: then it is not ours to change, nor to remove.
    if (error == ERROR_SUCCESS && !made.IsLink()) error = ERROR_FILE_INVALID;
    if (error != ERROR_SUCCESS) return error;
    error = target.Secure(made);
    if (error == ERROR_SUCCESS) error = CopyTimes(item.object, made);
    if (error == ERROR_SUCCESS && madeName != hostName &&
        renameat(folder, madeName.c_str(), folder, hostName.c_str()) != 0)
        error = ErrorFromErrno(errno);
    if (error == ERROR_SUCCESS)
        target.Took(hostName, made);
    else
        unlinkat(folder, madeName.c_str(), 0);
    return error;
}

// --- Folders.

// However the target was reached: a folder is known by its number, not by its path.
bool TreeCopy::ComesIntoItself(const WalkedItem& item) {
    const auto isItem = [&item](const EnteredTarget& target) {
        return target.folder->Handle().IsSameObject(item.object);
    };
    if (!top.Handle().IsSameObject(item.object) && std::none_of(entered.begin(), entered.end(), isItem))
        return false;
    talk.ComesIntoItself(item.Described(), DescribeObject(top.ShownPath(), top.Handle()));
    return true;
}

bool TreeCopy::Enter(const WalkedItem& item) {
    if (ComesIntoItself(item)) return false;
    return PutWithRetries(item, Current(), talk, [&](DWORD& error) { return EnterOnce(item, error); }) ==
           PutOutcome::kDone;
}

PutOutcome TreeCopy::EnterOnce(const WalkedItem& item, DWORD& error) {
    TargetFolder& target = Current();
    const std::string& hostName = NewNameOf(item);
    std::optional<Clash> clash;
    error = target.CheckName(hostName);
    if (error == ERROR_SUCCESS) error = target.FindClash(hostName, clash);
    if (error != ERROR_SUCCESS) return PutOutcome::kFailed;
    EnteredTarget next{nullptr, !clash};
    if (clash) {
        const ClashAnswer answer = AskAboutClash(item, target, *clash, talk, error);
        if (answer != ClashAnswer::kGoOn)
            return answer == ClashAnswer::kFail ? PutOutcome::kFailed : PutOutcome::kPassedOver;
        next.folder = target.UseSubfolder(std::move(*clash));
    } else {
        // This process must be able to fill it, whatever the source's own mode says.
        const mode_t mode = (item.object.Status().st_mode & kPermissions) | S_IRWXU;
        error = target.MakeSubfolder(hostName, mode, next.folder);
    }
    if (error != ERROR_SUCCESS) return PutOutcome::kFailed;
    entered.push_back(std::move(next));
    talk.progress.toFolder = Current().ShownPath();
    return PutOutcome::kDone;
}

void TreeCopy::Leave(const WalkedItem& item) {
    const EnteredTarget left = std::move(entered.back());
    entered.pop_back();
    talk.progress.toFolder = Current().ShownPath();
    if (!left.isMade) return;
    TargetFolder& folder = *left.folder;
    for (bool mayLose = false;;) {
        const PropertyResult properties = CopyProperties(
            item, sourceVolume, {Current().Descriptor(), NewNameOf(item), folder.Handle(), folder.Volume()},
            contents);
        DWORD error = properties.error;
        if (error == ERROR_SUCCESS && properties.loss != ERROR_SUCCESS && !mayLose) {
            if (!AgreesToLoss(item, properties.loss)) return;
            mayLose = true;
        }
        const mode_t mode = item.object.Status().st_mode;
        const mode_t madeMode = folder.Handle().Status().st_mode;
        const bool isNarrower = (mode & S_IRWXU) != S_IRWXU && !folder.Volume().isNtfs;
        const mode_t narrowed = (madeMode & ~static_cast<mode_t>(S_IRWXU)) | (mode & S_IRWXU);
        const DescriptorPath path(folder.Descriptor());
        if (error == ERROR_SUCCESS && isNarrower && chmod(path.Text(), narrowed & 07777) != 0)
            error = ErrorFromErrno(errno);
        if (error == ERROR_SUCCESS) error = CopyTimes(item.object, folder.Handle());
        if (error == ERROR_SUCCESS) return;
        if (talk.Fails(item.Described(), error) == OperationTalk::AfterFailure::kPassOver) return;
    }
}

}  // namespace permora::host
