// CPropertiesDlg: the facts about a file, folder, link or drive, with a count of a folder's contents.
#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "framework/dialog.h"
#include "framework/worker_thread.h"
#include "properties/object_facts.h"

namespace permora {

class CPropertiesDlg : public CDialog {
  public:
    // `objectPath` is a full path, `objectFacts` what ReadObjectFacts returned for it.
    CPropertiesDlg(std::string objectPath, ObjectFacts objectFacts, CWnd* ownerWindow);

    // Runs the security editor on the object; the button is disabled when there is none.
    std::function<void(const std::string& path)> editSecurity;

  protected:
    // Files and folders are measured on a thread, which ends with the window.
    bool OnInitDialog() override;
    void OnDestroy() override;
    const MessageMap& GetMessageMap() const override;

  private:
    class Count;

    void EditPermissions();
    void ShowFacts();
    void StartCount();
    // Not every object's dialog has every field.
    void ShowText(unsigned int id, const std::string& text);

    std::string path;
    ObjectFacts facts;
    std::atomic<bool> stopRequested = false;
    WorkerThread worker;
};

}  // namespace permora
