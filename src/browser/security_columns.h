// SecurityColumns: the columns of the browser's list that tell about security. Their texts are read by a
// worker, and only of rows that are seen, unless the rows are to be sorted by them.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "browser/security_texts.h"
#include "framework/background_question.h"
#include "framework/list_ctrl.h"
#include "framework/repeated_work.h"

namespace permora {

// User-interface thread only.
class SecurityColumns : private ListTexts {
  public:
    // `shown` outlives this object.
    explicit SecurityColumns(CListCtrl& shown) : list(shown) {}

    // Which columns there are: a bit for each SecurityColumn, in whose order they stand. Other bits are
    // ignored.
    void Choose(std::uint32_t bits);
    std::uint32_t Chosen() const { return chosen; }
    // Puts the columns behind the others of the list, which has none of them yet.
    void Insert();
    // Takes them away again.
    void Remove();

    // Forgets what was read. From now on the rows are objects of `rows`; without a place the columns stay
    // empty. `volumeOfRows` is the one that they lie on (VolumeOfPath), or empty.
    void Restart(std::shared_ptr<const Place> rows, std::string volumeOfRows);

    bool Has(int column) const;
    // The column by whose rule (OrderByColumn) the texts of a column are ordered.
    int OrderColumnOf(int column) const;
    // Reads what is missing of all rows, then runs `use`. `progress` runs now and then meanwhile.
    void ReadAll(const std::function<void(std::size_t done, std::size_t count)>& progress,
                 const std::function<void()>& use);
    bool IsReadingAll() const { return sweep != nullptr; }
    void StopReadingAll();

  private:
    using Known = std::unordered_map<std::string, SecurityTexts>;  // by the objects' names
    struct Sweep;

    std::string Text(std::intptr_t data, int column) const override;
    int RowOf(std::intptr_t data) const;
    std::size_t PlaceIn(int column) const;  // in SecurityTexts
    void AskForWanted();
    void AskAgain(const std::vector<std::string>& names);
    void TakeFailure(const std::vector<std::string>& names, DWORD error);

    CListCtrl& list;
    std::uint32_t chosen = 0;
    std::vector<SecurityColumn> columns;  // those in the list
    int firstColumn = 0;
    std::array<int, kSecurityColumnCount> widths{};  // 0: not shown yet
    std::shared_ptr<const Place> place;
    std::string volume;
    Known known;
    mutable std::vector<std::string> wanted;  // by the last painting
    const std::function<void()> askForWanted = [this] { AskForWanted(); };
    BackgroundQuestion seen;
    BackgroundQuestion all;
    std::shared_ptr<Sweep> sweep;
    RepeatedWork report;
    RepeatedWork again;  // when the volume owes an answer
};

}  // namespace permora
