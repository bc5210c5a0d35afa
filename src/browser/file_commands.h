// The commands on the rows of the browser and the selection among them. Failures are reported.
#pragma once

#include <string>
#include <vector>

#include "browser/file_list.h"
#include "security/outcome.h"

namespace permora {

class BrowserView;

class FileCommands {
  public:
    explicit FileCommands(BrowserView& browser) : view(browser) {}

    void Run(unsigned int command);

  private:
    // The selected names. Without a selection, a box asks for one.
    bool TakeSelection(std::vector<std::string>& names) const;
    // The topmost selected name. Without a selection, a box asks for one.
    bool TakeTopmost(std::string& name) const;
    // Whether `outcome` is a success; else the reason is reported.
    bool Accept(const Outcome& outcome) const;
    // The same for a step of a change of attributes, which the report names.
    bool AcceptAttributes(const char* step, const Outcome& outcome) const;
    bool MayWorkOnFolder() const;

    void PutOnClipboard(TransferKind kind);
    void Paste();
    void Delete();
    void DeleteFiles(const std::vector<std::string>& names) const;
    void DeleteShares(const std::vector<std::string>& names) const;
    void Rename();
    void CreateNew();
    void CreateNewFolder();
    void CreateNewShare() const;
    void EditAttributes();
    void ShowProperties();
    void CopyHostPaths();

    BrowserView& view;
};

}  // namespace permora
