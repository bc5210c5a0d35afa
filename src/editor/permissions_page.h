// CPage1: the access list of the first selected item, edited and applied to all of them.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <span>

#include "framework/list_ctrl.h"
#include "framework/property_sheet.h"
#include "platform/resources.h"
#include "security/object_security.h"

namespace permora {

class CPage1 : public CPropertyPage {
  public:
    // Ends the program, after the system's message, when "advapi32.dll" cannot be loaded.
    CPage1();

    // Set before the sheet is shown. The names are borrowed while it runs and stand relative to the current
    // directory.
    std::span<const char* const> names;
    bool drivesMode = false;  // the items are drive roots

  protected:
    bool OnInitDialog() override;
    bool OnApply() override;
    const MessageMap& GetMessageMap() const override;

  private:
    void OnAdd();
    void OnEdit();
    void OnRemove();
    void OnListClicked();
    void OnInheritanceClicked();

    void ReadFirstItem();
    void ShowInheritance();
    void RenderRows();
    void MarkChanged();
    void Apply();

    CListCtrl& AccessList() const;
    std::optional<std::size_t> SelectedEntry() const;
    bool IsChecked(unsigned int id) const;
    void SetCheck(unsigned int id, bool checked);
    void Enable(std::initializer_list<unsigned int> ids, bool enable);

    UniqueLibrary library;  // where the list's functions are looked up
    ObjectSecurity object;  // as last read, with the edits since
    bool changed = false;   // since the last read
};

}  // namespace permora
