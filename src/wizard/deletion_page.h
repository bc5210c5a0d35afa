// CWizardPage2: deletes the selected items for good, from the moment in which it is shown, and lists what
// becomes of each.
#pragma once

#include <memory>
#include <span>

#include "deletion/deletion_items.h"
#include "framework/property_sheet.h"
#include "framework/worker_thread.h"

namespace permora {

class CWizardPage2 : public CPropertyPage {
  public:
    CWizardPage2();
    ~CWizardPage2() override;

    // What is to be deleted, objects of the current directory. Holds them from this moment on, until it is
    // called without any; to be called before the sheet is shown and after it has closed.
    void SetNames(std::span<const char* const> names);
    // Set before the sheet is shown.
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

    DeletionItems chosen;
    DWORD choiceError = 0;  // why nothing could be held
    bool isAnythingChosen = false;
    std::unique_ptr<Run> run;   // what the worker has, or had; null: none
    bool isCancelling = false;  // the user wants the sheet to close when the worker has stopped
    WorkerThread worker;
};

}  // namespace permora
