// CPage1: the access list of the first selected item, edited and applied to all of them.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "editor/access_list_page.h"
#include "editor/list_facts.h"
#include "editor/preview_dialog.h"
#include "framework/background_question.h"
#include "history/change_session.h"
#include "security/object_security.h"

namespace permora {

class CPage1 : public AccessListPage {
  public:
    CPage1();

    // Set before the sheet is shown, and borrowed while it runs; one item at least.
    const RememberedPlace* place = nullptr;
    ChangeSession* changes = nullptr;
    // The setting that asks before entries are lost that are not shown; borrowed. Null: nobody is asked.
    std::uint8_t* askBeforeLosses = nullptr;

    // Shows what Apply would do.
    void Preview();

  protected:
    bool OnInitDialog() override;
    void OnDestroy() override;
    bool ReadItem() override;
    bool OnApply() override;
    std::string ReadOnlyReason() override;
    AccessEntryList& EditedList() override { return object.entries; }
    std::optional<RememberedObject> Item() const override { return place->items.front(); }
    std::string EmptyListText() const override;
    void OnRowsRendered() override { ShowSources(); }
    const MessageMap& GetMessageMap() const override;

  private:
    void AskForFacts();
    void ForgetFacts();
    void OnShowSourcesClicked();
    void ShowSourceColumn();
    void ShowSources();
    void OnInheritanceClicked();
    void ShowInheritance();
    DaclInheritance ChosenInheritance() const;
    BelowChange ChosenBelow() const;
    MakePreview PreviewOf(PACL dacl, std::optional<BelowChange> below);
    bool MayLose(PACL dacl);

    // A preview that was shown, and of what.
    struct ShownPreview {
        std::vector<std::uint8_t> list;
        DaclInheritance inheritance;
        BelowChange below;
        std::chrono::steady_clock::time_point since;   // when it was made
        std::shared_ptr<const ChangePreview> preview;  // null: none
    };
    std::shared_ptr<const ChangePreview> JustShown(PACL dacl) const;

    ObjectSecurity object;  // as last read, with the edits since
    BackgroundQuestion question;
    std::shared_ptr<std::atomic<bool>> isForgotten;  // of the latest question; null: none yet
    std::shared_ptr<const ListFacts> facts;          // null: not yet known
    bool hasSourceColumn = false;
    ShownPreview shown{};  // since the list was read
};

}  // namespace permora
