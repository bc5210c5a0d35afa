// AccessListPage: shows and edits an access list, of files and of shares.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>

#include "framework/list_ctrl.h"
#include "framework/property_sheet.h"
#include "platform/remembered_object.h"
#include "platform/resources.h"
#include "security/access_entry_list.h"
#include "security/account_news.h"

namespace permora {

// The scopes that the entry dialog offers for an existing entry. A new entry may have any.
enum class EditScopes { kAll, kThisObjectOnly };

// The message about a null list.
inline constexpr const char* kNullListText =
    "There is no any access control list associated with object (All access is currently allowed).";

// Shows the list of the first item and applies it to all of them. The derived page knows what the items are,
// and reads and writes their lists. Its template has the controls of IDD_PERMISSIONS_PAGE.
class AccessListPage : public CPropertyPage {
  protected:
    // Ends the program, after the system's message, when "advapi32.dll" cannot be loaded.
    AccessListPage(unsigned int pageTemplate, EditScopes scopes);

    bool OnInitDialog() override;
    void OnDestroy() override;
    // Writes the edited list to all items and shows the new list of the first one. On false, the sheet stays
    // with its changes.
    bool OnApply() override = 0;
    const MessageMap& GetMessageMap() const override;

    // Reads the list of the first item and sets the two boxes. The boxes, the list, "Edit..." and "Remove"
    // are disabled. On false, the reason has been shown; the entries are as they were, or there are none.
    virtual bool ReadItem() = 0;
    // Why the list cannot be changed; empty where it can. Asked for after each read.
    virtual std::string ReadOnlyReason() { return {}; }
    // The list as last read, with the edits since.
    virtual AccessEntryList& EditedList() = 0;
    // Whose list it is; nothing for a share of this machine.
    virtual std::optional<RememberedObject> Item() const { return std::nullopt; }
    // What a list without entries means.
    virtual std::string EmptyListText() const = 0;
    // The rows have just been made anew.
    virtual void OnRowsRendered() {}

    bool IsChanged() const { return changed; }
    CListCtrl& AccessList() const;
    // A sentence or two below the list: where it is kept, and who obeys it.
    void ShowKept(const std::string& text);
    // The edited list, to be written. Null after an error box.
    UniqueLocal<ACL> MakeList();
    // The same, to be previewed. Null also after a box that says that nothing was changed.
    UniqueLocal<ACL> ListToPreview();
    // Ends an OnApply that has written the list, or had nothing to write.
    bool FinishApply();

    void OnEdit();
    void RenderRows();
    void MarkChanged();
    // Discards the edits and shows the present list of the first item.
    void ReadAnew();

    bool IsChecked(unsigned int id) const;
    void SetCheck(unsigned int id, bool checked);
    void Enable(std::initializer_list<unsigned int> ids, bool enable);

  private:
    void OnAdd();
    void OnRemove();
    void OnListClicked();

    void ReadFirstItem();
    // Shows names that have become known.
    void RenderNames();
    void ShowEmptyListText();
    // The index of the selected row's entry in the list. None without a selection, and after a failed read,
    // when the rows may show entries that are gone.
    std::optional<std::size_t> SelectedEntry();

    EditScopes editScopes;
    UniqueLibrary library;  // where the list's functions are looked up
    bool changed = false;   // since the last read
    std::string readOnlyReason;
    AccountNewsWatch news;
};

}  // namespace permora
