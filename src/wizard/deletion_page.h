// CWizardPage2: deletes the selected items for good as soon as it is shown, and lists the results.
#pragma once

#include <memory>

#include "framework/property_sheet.h"
#include "framework/worker_thread.h"
#include "security/object_security.h"

namespace permora {

class CWizardPage2 : public CPropertyPage {
  public:
    CWizardPage2();
    ~CWizardPage2() override;

    // Set before the sheet is shown: the items to delete, borrowed while the worker runs, which releases each
    // item that it is done with. Drives are refused when the page is shown.
    RememberedPlace* place = nullptr;
    bool askBeforeSecureDeletion = true;

    // Stops the worker at its next stop point.
    void StopWorker();

  protected:
    bool OnInitDialog() override;
    bool OnSetActive() override;
    // Stops a running worker; the sheet closes when it has ended.
    bool OnQueryCancel() override;
    void OnDestroy() override { StopWorker(); }
    const MessageMap& GetMessageMap() const override;

  private:
    class Run;

    bool MayDelete() const;
    void Start();
    void ShowStatus();
    void OnShowLeft();
    void EnableLeft();
    bool IsRunning() const;

    std::unique_ptr<Run> run;   // the worker's data, present or past; may be null
    bool isCancelling = false;  // the sheet closes when the worker has stopped
    WorkerThread worker;
};

}  // namespace permora
