// What the window of the history shows, decided without a window: the changes, the objects of the selected
// one, and what was there before and after it.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "history/history.h"
#include "security/descriptor_comparison.h"

namespace permora {

inline constexpr std::array<const char*, 6> kChangeTitles = {"Number", "When",    "Who",
                                                             "What",   "Objects", "State"};
inline constexpr std::array<const char*, 2> kChangedObjectTitles = {"Object", "Kind"};
inline constexpr std::array<const char*, 5> kComparedRowTitles = {"Difference", "What", "Name", "Before",
                                                                  "After"};

class HistoryView {
  public:
    // A change may have had a million objects. They are shown page by page.
    static constexpr std::size_t kPageObjects = 1000;

    explicit HistoryView(std::string historyPath) : path(std::move(historyPath)) {}

    // Reads the changes anew, the newest first. The one that was selected stays so; without one, or when it
    // is gone, the newest is selected.
    void Read();
    void Select(std::size_t change);

    // A sentence about why there is nothing to see, or not all of it. Empty when there is nothing to say.
    const std::string& Remark() const { return remark; }

    const std::vector<ChangeFacts>& Changes() const { return changes; }
    std::array<std::string, 6> ChangeRow(std::size_t change) const;
    std::optional<std::size_t> Selected() const { return selected; }  // nothing: there are no changes

    // Of the selected change, with the mark of its mnemonic: "&Objects of the selected change (1,001 to 2,000
    // of 12,345):".
    std::string ObjectsTitle() const;
    bool HasPageBefore() const { return firstObject > 0; }
    bool HasPageAfter() const;
    void ShowPageBefore();
    void ShowPageAfter();
    // Those of the page.
    const std::vector<RecordedObject>& Objects() const { return objects; }
    std::array<std::string, 2> ObjectRow(std::size_t object) const;
    std::vector<ComparedRow> RowsOf(std::size_t object, NameAccount* nameOf) const;

    // Whether the selected change can be taken back.
    bool MayUndo() const;

  private:
    void ReadObjects(std::uint64_t first);

    std::string path;
    std::unique_ptr<History> history;  // null: it cannot be read
    std::string remark;
    std::vector<ChangeFacts> changes;
    std::optional<std::size_t> selected;
    std::uint64_t firstObject = 0;  // of the page, among those of the selected change
    std::vector<RecordedObject> objects;
};

}  // namespace permora
