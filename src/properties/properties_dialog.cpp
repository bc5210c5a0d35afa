#include "properties/properties_dialog.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <utility>

#include "platform/api/errors.h"
#include "platform/system_message.h"
#include "platform/volume_question.h"
#include "resources/resource_ids.h"
#include "security/volume_asking.h"

namespace permora {
namespace {

unsigned int TemplateFor(ObjectSort sort) {
    switch (sort) {
        case ObjectSort::kFolder:
            return IDD_FOLDER_PROPERTIES;
        case ObjectSort::kLink:
            return IDD_LINK_PROPERTIES;
        case ObjectSort::kDrive:
            return IDD_DRIVE_PROPERTIES;
        case ObjectSort::kFile:
            break;
    }
    return IDD_FILE_PROPERTIES;
}

bool IsMeasured(ObjectSort sort) {
    return sort == ObjectSort::kFile || sort == ObjectSort::kFolder;
}

}  // namespace

// Counts on a thread that may outlive the dialog.
class CPropertiesDlg::Count : public TreeSizeObserver {
  public:
    void Run(const std::string& object) { error = MeasureTree(object.c_str(), *this, size); }
    bool Measured(const TreeSize& measured) override {
        const std::lock_guard lock(guard);
        soFar = measured;
        return !isStopped;
    }

    TreeSize SoFar() {
        const std::lock_guard lock(guard);
        return soFar;
    }

    std::atomic<bool> isStopped = false;
    // Once it has run.
    DWORD error = ERROR_SUCCESS;
    TreeSize size;

  private:
    std::mutex guard;
    TreeSize soFar;
};

CPropertiesDlg::CPropertiesDlg(std::string objectPath, ObjectFacts objectFacts, CWnd* ownerWindow)
    : CDialog(TemplateFor(objectFacts.sort), ownerWindow),
      path(std::move(objectPath)),
      facts(std::move(objectFacts)) {}

const MessageMap& CPropertiesDlg::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CPropertiesDlg>(
        CDialog::GetMessageMap(),
        {
            {IDC_PROPERTY_PERMISSIONS, Notify::kClicked, &CPropertiesDlg::EditPermissions},
        });
    return kMap;
}

bool CPropertiesDlg::OnInitDialog() {
    CDialog::OnInitDialog();
    SetWindowText("Properties - " + facts.name);
    ShowFacts();
    if (CWnd* button = GetDlgItem(IDC_PROPERTY_PERMISSIONS)) button->EnableWindow(editSecurity != nullptr);
    if (IsMeasured(facts.sort)) StartCount();
    return true;
}

void CPropertiesDlg::OnDestroy() {
    if (count) count->isStopped = true;
    counting.Forget();
    pace.Stop();
    CDialog::OnDestroy();
}

void CPropertiesDlg::ShowFacts() {
    const std::pair<unsigned int, const std::string&> kTexts[] = {
        {IDC_PROPERTY_NAME, facts.name},
        {IDC_PROPERTY_KIND, facts.kind},
        {IDC_PROPERTY_LOCATION, facts.location},
        {IDC_PROPERTY_HOST_PATH, facts.hostPath},
        {IDC_PROPERTY_TARGET, facts.target},
        {IDC_PROPERTY_CREATED, facts.created},
        {IDC_PROPERTY_MODIFIED, facts.modified},
        {IDC_PROPERTY_ACCESSED, facts.accessed},
        {IDC_PROPERTY_ATTRIBUTES, facts.attributes},
        {IDC_PROPERTY_FILE_SYSTEM, facts.fileSystem},
        {IDC_PROPERTY_CAPACITY, facts.capacity},
        {IDC_PROPERTY_USED, facts.used},
        {IDC_PROPERTY_FREE, facts.free},
    };
    for (const auto& [id, text] : kTexts)
        ShowText(id, text);
    ShowOwner();
    if (auto* bar = GetDlgItem<CProgressCtrl>(IDC_PROPERTY_USED_BAR)) bar->SetPos(facts.usedPercent);
}

void CPropertiesDlg::ShowOwner() {
    const auto find = [object = path](std::string& found, PatientWork::Running&) {
        found = OwnerText(object);
        return Outcome();
    };
    std::string text;
    const Outcome outcome = FindOnVolume<std::string>(*this, VolumeOfPath(path), text, find);
    ShowText(IDC_PROPERTY_OWNER, outcome.IsDone() ? text : LineText(outcome));
}

void CPropertiesDlg::StartCount() {
    constexpr std::chrono::milliseconds kPace(100);
    count = std::make_shared<Count>();
    ShowCounted("Counting...", "Counting...", "Counting...");
    const auto finish = [this] {
        pace.Stop();
        if (count->error == ERROR_SUCCESS)
            ShowSize(count->size, "");
        else
            ShowNotCounted(count->error);
    };
    const DWORD error = counting.Ask([run = count, object = path] { run->Run(object); }, finish);
    if (error != ERROR_SUCCESS) return ShowNotCounted(error);
    pace.Start(kPace, [this] {
        const TreeSize soFar = count->SoFar();
        if (soFar.files + soFar.folders != 0) ShowSize(soFar, " so far");
    });
}

void CPropertiesDlg::ShowSize(const TreeSize& size, const char* remark) {
    ShowCounted(SizeText(size.bytes) + remark, SizeText(size.bytesOnDisk) + remark,
                ContentsText(size) + remark);
}

void CPropertiesDlg::ShowNotCounted(DWORD error) {
    const std::string reason = SystemMessageLine(error);
    ShowCounted(reason, reason, reason);
}

void CPropertiesDlg::ShowCounted(const std::string& size, const std::string& onDisk,
                                 const std::string& contents) {
    ShowText(IDC_PROPERTY_SIZE, size);
    ShowText(IDC_PROPERTY_SIZE_ON_DISK, onDisk);
    ShowText(IDC_PROPERTY_CONTENTS, contents);
}

void CPropertiesDlg::ShowText(unsigned int id, const std::string& text) {
    if (CWnd* field = GetDlgItem(id)) field->SetWindowText(text);
}

void CPropertiesDlg::EditPermissions() {
    editSecurity(path);
    ShowOwner();
}

}  // namespace permora
