#include "properties/properties_dialog.h"

#include <chrono>
#include <utility>

#include "platform/api/errors.h"
#include "platform/system_message.h"
#include "resources/resource_ids.h"

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

// The dialog's fields for the worker. Any of them may be null.
class CPropertiesDlg::Count : public TreeSizeObserver {
  public:
    explicit Count(CPropertiesDlg& dialog)
        : stop(dialog.stopRequested),
          size(dialog.GetDlgItem(IDC_PROPERTY_SIZE)),
          sizeOnDisk(dialog.GetDlgItem(IDC_PROPERTY_SIZE_ON_DISK)),
          contents(dialog.GetDlgItem(IDC_PROPERTY_CONTENTS)) {}

    void Run(const std::string& path) {
        TreeSize measured;
        const DWORD error = MeasureTree(path.c_str(), *this, measured);
        if (error != ERROR_SUCCESS)
            Fail(error);
        else if (!stop)
            Show(measured, "");
    }

    void Fail(DWORD error) const {
        for (CWnd* field : {size, sizeOnDisk, contents})
            SetText(field, SystemMessageLine(error));
    }

    bool Measured(const TreeSize& soFar) override {
        constexpr std::chrono::milliseconds kPace(100);
        const auto now = std::chrono::steady_clock::now();
        if (now - shown >= kPace) {
            Show(soFar, " so far");
            shown = now;
        }
        return !stop;
    }

  private:
    void Show(const TreeSize& measured, const char* remark) const {
        SetText(size, SizeText(measured.bytes) + remark);
        SetText(sizeOnDisk, SizeText(measured.bytesOnDisk) + remark);
        SetText(contents, ContentsText(measured) + remark);
    }
    static void SetText(CWnd* field, const std::string& text) {
        if (field != nullptr) field->SetWindowText(text);
    }

    const std::atomic<bool>& stop;
    CWnd* size;
    CWnd* sizeOnDisk;
    CWnd* contents;
    std::chrono::steady_clock::time_point shown = std::chrono::steady_clock::now();
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
    stopRequested = false;
    if (IsMeasured(facts.sort)) StartCount();
    return true;
}

void CPropertiesDlg::OnDestroy() {
    stopRequested = true;
    worker.Wait();
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
    ShowText(IDC_PROPERTY_OWNER, OwnerText(path));
    if (auto* bar = GetDlgItem<CProgressCtrl>(IDC_PROPERTY_USED_BAR)) bar->SetPos(facts.usedPercent);
}

void CPropertiesDlg::StartCount() {
    constexpr unsigned int kCounted[] = {IDC_PROPERTY_SIZE, IDC_PROPERTY_SIZE_ON_DISK, IDC_PROPERTY_CONTENTS};
    for (const unsigned int id : kCounted)
        ShowText(id, "Counting...");
    // The worker must not look up the fields itself.
    auto count = std::make_shared<Count>(*this);
    const DWORD error = worker.Start([count, counted = path] { count->Run(counted); });
    if (error != ERROR_SUCCESS) count->Fail(error);
}

void CPropertiesDlg::ShowText(unsigned int id, const std::string& text) {
    if (CWnd* field = GetDlgItem(id)) field->SetWindowText(text);
}

void CPropertiesDlg::EditPermissions() {
    editSecurity(path);
    ShowText(IDC_PROPERTY_OWNER, OwnerText(path));
}

}  // namespace permora
