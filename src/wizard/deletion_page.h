// CWizardPage2: deletes the selected items for good, from the moment in which it is shown, and lists what
// becomes of each.
#pragma once

#include <memory>

#include "deletion/deletion_items.h"
#include "framework/property_sheet.h"
#include "framework/worker_thread.h"

namespace permora {

class CWizardPage2 : public CPropertyPage {
  public:
    CWizardPage2();
    ~CWizardPage2() override;

    // Set before the sheet is shown: what is to be deleted, held from this moment on until LetGo. Drives are
    // refused when the page is shown.
    void SetPlace(const Place& place);
    bool askBeforeSecureDeletion = true;

    // Ends the worker at its next stop point, and lets go of what was held.
    void LetGo();

  protected:
    bool OnInitDialog() override;
    bool OnSetActive() override;
    // While the worker runs it is asked to stop, and the sheet closes when it has.
    bool OnQueryCancel() override;
    void OnDestroy() override { StopWorker(); }

  private:
    class Run;

    bool MayDelete() const;
    void StopWorker();
    void Start();
    void ShowStatus();
    bool IsRunning() const;

    PlaceKind kind = PlaceKind::kFolder;
    DeletionItems chosen;
    std::unique_ptr<Run> run;   // what the worker has, or had; null: none
    bool isCancelling = false;  // the user wants the sheet to close when the worker has stopped
    WorkerThread worker;
};

}  // namespace permora
