#include "results/results_frame.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "framework/file_chooser.h"
#include "framework/styles.h"
#include "framework/worker_updates.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "platform/api/shell.h"
#include "platform/sequential_file.h"
#include "platform/system_message.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

constexpr unsigned int kBarCommands[] = {ID_PERMISSIONS, ID_SAVE_RESULTS, ID_STOP_RESULTS};
constexpr unsigned int kContextCommands[] = {ID_PERMISSIONS, ID_SHOW_IN_FOLDER, ID_COPY_PATHS,
                                             ID_SAVE_RESULTS};

constexpr int kMessagePane = 0;
constexpr int kViewMenu = 2;
constexpr unsigned int kMostPages = IDP_LAST_RESULT_PAGE - IDP_FIRST_RESULT_PAGE + 1;
constexpr unsigned int kLastListId = CResultsFrame::kFirstListId + kMostPages - 1;

// A file that is written until the user stops it.
class StoppableFile : public SavedOutput {
  public:
    StoppableFile(FileReplacement& written, const std::atomic<bool>& mustStop)
        : file(written), isStopped(mustStop) {}
    DWORD Write(std::string_view bytes) override {
        return isStopped ? DWORD{ERROR_OPERATION_ABORTED} : file.Write(bytes);
    }

  private:
    FileReplacement& file;
    const std::atomic<bool>& isStopped;
};

DWORD WriteFileOf(ResultSource& source, const SaveFormat& format, const std::string& path,
                  const std::atomic<bool>& isStopped) {
    FileReplacement file;
    DWORD error = FileReplacement::Begin(path, file);
    StoppableFile output(file, isStopped);
    if (error == ERROR_SUCCESS) error = source.Write(format, output);
    return error == ERROR_SUCCESS ? file.Complete() : error;
}

std::string WithoutMnemonic(std::string text) {
    std::erase(text, '&');
    return text;
}

}  // namespace

const MessageMap& CResultsFrame::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CResultsFrame>(
        CFrameWnd::GetMessageMap(),
        {
            {kFirstListId, kLastListId, Notify::kDoubleClick, &CResultsFrame::OnActivate},
            {kFirstListId, kLastListId, Notify::kKeyDown, &CResultsFrame::OnKeyDown},
            {kFirstListId, kLastListId, Notify::kItemChanged, &CResultsFrame::OnSelectionChanged},
            {kFirstListId, kLastListId, Notify::kColumnClick, &CResultsFrame::OnColumnClick},
            {kFirstListId, kLastListId, Notify::kRightClick, &CResultsFrame::OnRightClick},
            {IDC_RESULTS_PAGE, Notify::kSelectionChanged, &CResultsFrame::OnPageChosen},
            {IDOK, Notify::kCommand, &CResultsFrame::OnLeaveBar},
            {IDCANCEL, Notify::kCommand, &CResultsFrame::OnLeaveBar},
            {IDP_FIRST_RESULT_PAGE, IDP_LAST_RESULT_PAGE, Notify::kCommand, &CResultsFrame::OnPage},
            {IDP_FIRST_RESULT_PAGE, IDP_LAST_RESULT_PAGE, Notify::kUpdateCommand,
             &CResultsFrame::OnUpdatePage},
            {ID_PERMISSIONS, Notify::kCommand, &CResultsFrame::EditSelected},
            {ID_SHOW_IN_FOLDER, Notify::kCommand, &CResultsFrame::ShowInFolder},
            {ID_COPY_PATHS, Notify::kCommand, &CResultsFrame::CopyPaths},
            {ID_SELECT_ALL, Notify::kCommand, &CResultsFrame::SelectAll},
            {ID_SAVE_RESULTS, Notify::kCommand, &CResultsFrame::SaveAs},
            {ID_STOP_RESULTS, Notify::kCommand, &CResultsFrame::Stop},
            {ID_HELP_CONTENTS, Notify::kCommand, &CResultsFrame::ShowHelp},
            {ID_CLOSE_RESULTS, Notify::kCommand, &CResultsFrame::PostClose},
            {ID_PERMISSIONS, Notify::kUpdateCommand, &CResultsFrame::OnUpdateCommand},
            {ID_SHOW_IN_FOLDER, Notify::kUpdateCommand, &CResultsFrame::OnUpdateCommand},
            {ID_COPY_PATHS, Notify::kUpdateCommand, &CResultsFrame::OnUpdateCommand},
            {ID_SELECT_ALL, Notify::kUpdateCommand, &CResultsFrame::OnUpdateCommand},
            {ID_SAVE_RESULTS, Notify::kUpdateCommand, &CResultsFrame::OnUpdateCommand},
            {ID_STOP_RESULTS, Notify::kUpdateCommand, &CResultsFrame::OnUpdateCommand},
        });
    return kMap;
}

CResultsFrame::CResultsFrame(std::unique_ptr<ResultSource> filledFrom, ResultsHost& program,
                             std::function<void(CResultsFrame&)> closed)
    : source(std::move(filledFrom)), host(program), onClosed(std::move(closed)) {}

CResultsFrame::~CResultsFrame() {
    StopAndClose();
}

bool CResultsFrame::Open(const Rect& neighbour) {
    if (!LoadFrame(IDR_RESULTS)) return false;
    constexpr int kOffset = 40;
    constexpr int kWidth = 980;
    constexpr int kHeight = 560;
    const int left = neighbour.left + kOffset;
    const int top = neighbour.top + kOffset;
    SetPlacement({{left, top, left + kWidth, top + kHeight}, ShowState::kNormal});
    StartRun();
    return true;
}

bool CResultsFrame::OnCreate() {
    SetWindowText(source->Title());
    contextMenu = CMenu::Load(IDR_RESULTS_CONTEXT);
    if (!bar.Create(*this, IDD_RESULTS_BAR) || !statusBar.Create(*this)) return false;
    bar.ShowWindow(SW_SHOW);
    statusBar.SetIndicators({CStatusBar::kSeparator});
    auto& choice = *bar.GetDlgItem<CComboBox>(IDC_RESULTS_PAGE);
    CMenu viewMenu = GetMenu().GetSubMenu(kViewMenu);
    for (ResultPage* page : source->Pages()) {
        const auto place = static_cast<unsigned int>(pages.size());
        pages.push_back(std::make_unique<PageList>(*page));
        if (!pages.back()->Create(*this, kFirstListId + place)) return false;
        pages.back()->SetWindowText(WithoutMnemonic(page->Title()));
        choice.AddString(WithoutMnemonic(page->Title()));
        viewMenu.AppendRadio(IDP_FIRST_RESULT_PAGE + place, page->Title());
    }
    ShowPage(0);
    return !pages.empty() && pages.size() <= kMostPages;
}

// ---- The worker ----

void CResultsFrame::StartRun() {
    constexpr std::chrono::milliseconds kPause(60);
    work = Work::kSearching;
    const DWORD error = worker.Start([this] { source->Run(isStopped); });
    if (error != ERROR_SUCCESS) {
        work = Work::kNone;
        ShowSystemErrorBox(GetSafeHwnd(), error);
    }
    news.Start(kPause, [this] { TakeNews(); });
    ShowState();
}

// The worker's end is looked for first, so that all that it has found is taken.
void CResultsFrame::TakeNews() {
    const bool hasEnded = worker.HasEnded(std::chrono::milliseconds(0));
    if (hasEnded && isClosing) {
        news.Stop();
        DestroyWindow();
        const auto closed = onClosed;  // which may destroy this object
        closed(*this);
        return;
    }
    if (work == Work::kSearching) {
        source->TakeNews();
        for (const auto& page : pages)
            page->TakeRows();
        ShowStatus(source->Status());
    }
    if (!hasEnded || work == Work::kNone) return;
    const Work ended = std::exchange(work, Work::kNone);
    if (ended == Work::kSearching)
        EndRun();
    else
        EndSaving();
}

void CResultsFrame::EndRun() {
    news.Stop();
    for (const auto& page : pages)
        page->SortAgain();
    ShowStatus(source->Status());
    ShowState();
}

void CResultsFrame::EndSaving() {
    news.Stop();
    ShowState();
    if (saved == ERROR_SUCCESS) {
        ShowStatus("Saved as " + savedAs + ": " + source->Status());
        return;
    }
    ShowStatus("Nothing was saved: " + source->Status());
    if (saved != ERROR_OPERATION_ABORTED)
        ShowErrorBox(GetSafeHwnd(),
                     (savedAs + ": " + SystemMessageLine(saved) + "\nNothing was saved.").c_str());
}

void CResultsFrame::Stop() {
    isStopped = true;
}

void CResultsFrame::OnClose() {
    isStopped = true;
    isClosing = true;
    ShowWindow(SW_HIDE);
    constexpr std::chrono::milliseconds kPause(10);
    news.Start(kPause, [this] { TakeNews(); });
}

void CResultsFrame::StopAndClose() {
    isStopped = true;
    news.Stop();
    worker.Wait();
    DestroyWindow();
}

// ---- What is shown ----

void CResultsFrame::ShowStatus(const std::string& text) {
    statusBar.SetPaneText(kMessagePane, text);
}

void CResultsFrame::ShowState() {
    for (const unsigned int id : kBarCommands) {
        CWnd* button = bar.GetDlgItem(id);
        if (button == nullptr || button->IsWindowEnabled() == IsEnabled(id)) continue;
        if (button->HasFocus()) Page().SetFocus();
        button->EnableWindow(IsEnabled(id));
    }
}

void CResultsFrame::ShowPage(std::size_t page) {
    if (page >= pages.size()) return;
    shownPage = page;
    for (const auto& each : pages)
        each->ShowWindow(each.get() == &Page() ? SW_SHOW : SW_HIDE);
    SetView(Page());
    bar.GetDlgItem<CComboBox>(IDC_RESULTS_PAGE)->SetCurSel(static_cast<int>(page));
    ShowState();
}

bool CResultsFrame::IsEnabled(unsigned int command) const {
    switch (command) {
        case ID_PERMISSIONS:
        case ID_COPY_PATHS:
            return Page().FirstSelected().has_value();
        case ID_SHOW_IN_FOLDER:
            return Page().GetSelectedCount() == 1 && Page().FirstSelected().has_value();
        case ID_SELECT_ALL:
            return Page().GetItemCount() > 0;
        case ID_SAVE_RESULTS:
            return work == Work::kNone && !source->Formats().empty();
        case ID_STOP_RESULTS:
            return work != Work::kNone;
        default:
            return true;
    }
}

void CResultsFrame::OnUpdateCommand(Notification& notification) {
    notification.state.enabled = IsEnabled(notification.id);
}

void CResultsFrame::OnPage(Notification& notification) {
    ShowPage(notification.id - IDP_FIRST_RESULT_PAGE);
    Page().SetFocus();
}

void CResultsFrame::OnUpdatePage(Notification& notification) {
    notification.state.checked = notification.id - IDP_FIRST_RESULT_PAGE == shownPage;
}

void CResultsFrame::OnPageChosen() {
    ShowPage(static_cast<std::size_t>(bar.GetDlgItem<CComboBox>(IDC_RESULTS_PAGE)->GetCurSel()));
}

void CResultsFrame::OnLeaveBar() {
    Page().SetFocus();
}

// ---- The lists ----

void CResultsFrame::OnActivate(Notification& notification) {
    notification.handled = false;
    if (notification.row >= 0) RunCommand(ID_PERMISSIONS);
}

void CResultsFrame::OnKeyDown(Notification& notification) {
    constexpr unsigned int kEnter = 0x0D;
    notification.handled = notification.key == kEnter;
    if (notification.handled) RunCommand(ID_PERMISSIONS);
}

// Comes for each of very many rows that are selected at once.
void CResultsFrame::OnSelectionChanged() {
    QueueWork(*this, [this] { ShowState(); });
}

void CResultsFrame::OnColumnClick(Notification& notification) {
    Page().SortBy(notification.column);
}

void CResultsFrame::OnRightClick(Notification& notification) {
    if (!contextMenu || notification.row < 0) return;
    const Rect place = Page().GetWindowRect();
    CMenu popup = contextMenu.GetSubMenu(0);
    for (const unsigned int id : kContextCommands)
        popup.Enable(id, IsEnabled(id));
    const unsigned int command =
        popup.TrackPopup({place.left + notification.point.x, place.top + notification.point.y}, *this);
    if (command != 0) RunCommand(command);
}

// ---- Commands ----

void CResultsFrame::EditSelected() {
    host.EditResults(*this, Page().SelectedObjects());
}

void CResultsFrame::ShowInFolder() {
    if (const auto object = Page().FirstSelected()) host.ShowInFolder(*object);
}

void CResultsFrame::SelectAll() {
    for (int row = 0; row < Page().GetItemCount(); ++row)
        Page().SetSelected(row, true);
}

void CResultsFrame::ShowHelp() {
    if (CWinApp* application = GetApp()) application->OnHelp(*this, IDD_RESULTS_BAR);
}

void CResultsFrame::CopyPaths() {
    std::string text;
    for (const ResultObject& object : Page().SelectedObjects())
        text += object.path + '\n';
    CopyTextOrTell(*this, text);
}

void CResultsFrame::SaveAs() {
    const std::span<const SaveFormat> formats = source->Formats();
    std::vector<FileKind> kinds;
    for (const SaveFormat& format : formats)
        kinds.push_back({format.name, format.extension});
    ChosenFile file;
    if (!ChooseFileToSave(*this, "Save results", kinds, file)) return;
    constexpr std::chrono::milliseconds kPause(60);
    isStopped = false;
    savedAs = file.path;
    work = Work::kSaving;
    const DWORD error = worker.Start([this, &format = formats[file.kind], path = file.path] {
        saved = WriteFileOf(*source, format, path, isStopped);
    });
    if (error != ERROR_SUCCESS) saved = error;
    ShowStatus("Saving as " + savedAs + "...");
    ShowState();
    news.Start(kPause, [this] { TakeNews(); });
}

}  // namespace permora
