// CSecureDelete: runs a secure deletion on a worker thread and shows the name that it has come to.
#pragma once

#include <atomic>
#include <memory>
#include <span>

#include "framework/dialog.h"

namespace permora {

class CSecureDelete : public CDialog {
  public:
    // What DoModal returns beside IDOK, when the worker went through all items, and IDCANCEL, when it was
    // stopped before one of them: a box told why nothing was touched.
    static constexpr int kCannotStart = 3;

    explicit CSecureDelete(CWnd* ownerWindow = nullptr);
    // Waits for the worker, if it still runs, at its next stop point.
    ~CSecureDelete() override;

    // The selected items, relative to the current directory. Borrowed: names and array must outlive DoModal,
    // which ends when no worker reads them any more.
    std::span<const char* const> names;

  protected:
    bool OnInitDialog() override;
    // Escape asks the worker to stop, as the button does; the dialog stays until it has.
    void OnCancel() override;
    void OnOK() override {}
    void OnDestroy() override;
    const MessageMap& GetMessageMap() const override;

  private:
    class Run;

    static DWORD WINAPI SecureDeleteWorker(LPVOID run);
    void Stop();

    std::atomic<bool> stopRequested = false;
    std::atomic<bool> isCancelled = false;  // by Escape
    std::unique_ptr<Run> run;               // null: not started
};

}  // namespace permora
