// CPropertiesDlg: the facts about a file, folder, link or drive, with a count of a folder's contents.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "framework/background_question.h"
#include "framework/dialog.h"
#include "framework/repeated_work.h"
#include "properties/object_facts.h"

namespace permora {

class CPropertiesDlg : public CDialog {
  public:
    // `objectPath` is a full path, `objectFacts` what ReadObjectFacts returned for it.
    CPropertiesDlg(std::string objectPath, ObjectFacts objectFacts, CWnd* ownerWindow);

    // Runs the security editor on the object; the button is disabled when there is none.
    std::function<void(const std::string& path)> editSecurity;

  protected:
    // Files and folders are measured on a thread, for which nobody waits when the window closes.
    bool OnInitDialog() override;
    void OnDestroy() override;
    const MessageMap& GetMessageMap() const override;

  private:
    class Count;

    void EditPermissions();
    void ShowFacts();
    void ShowOwner();
    void StartCount();
    void ShowSize(const TreeSize& size, const char* remark);
    void ShowNotCounted(DWORD error);
    void ShowCounted(const std::string& size, const std::string& onDisk, const std::string& contents);
    // Not every object's dialog has every field.
    void ShowText(unsigned int id, const std::string& text);

    std::string path;
    ObjectFacts facts;
    std::shared_ptr<Count> count;  // the latest; null: none yet
    BackgroundQuestion counting;
    RepeatedWork pace;
};

}  // namespace permora
