// CWizardPage2: deletes the selected items for good, from the moment in which it is shown, and lists what
// becomes of each.
#pragma once

#include <memory>
#include <span>

#include "framework/property_sheet.h"
#include "framework/worker_thread.h"

namespace permora {

class CWizardPage2 : public CPropertyPage {
  public:
    CWizardPage2();
    ~CWizardPage2() override;

    // Set before the sheet is shown. The names stand relative to the current directory. Borrowed: names and
    // array must outlive the sheet's DoModal, which ends when no worker reads them any more.
    std::span<const char* const> names;
    bool askBeforeSecureDeletion = true;
    bool drivesMode = true;  // the items are drive roots, which are refused

  protected:
    bool OnInitDialog() override;
    bool OnSetActive() override;
    // While the worker runs it is asked to stop, and the sheet closes when it has.
    bool OnQueryCancel() override;
    void OnDestroy() override;  // stops the worker, if it still runs, at its next stop point

  private:
    class Run;

    bool MayDelete() const;
    void Start();
    void ShowStatus();
    bool IsRunning() const;

    std::unique_ptr<Run> run;   // what the worker has, or had; null: none
    bool isCancelling = false;  // the user wants the sheet to close when the worker has stopped
    WorkerThread worker;
};

}  // namespace permora
