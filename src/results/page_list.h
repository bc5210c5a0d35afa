// The list that shows one page of results. It keeps no texts: the page is asked for those that are seen.
#pragma once

#include <optional>
#include <vector>

#include "framework/list_ctrl.h"
#include "framework/list_order.h"
#include "results/result_order.h"

namespace permora {

class PageList : public CListCtrl, private ListTexts {
  public:
    // `shown` outlives the window.
    explicit PageList(const ResultPage& shown) : page(shown) {}

    bool Create(CWnd& owner, unsigned int id);
    // Shows the rows that have come since, behind the others.
    void TakeRows();
    // By the column; by the same one again in the other direction.
    void SortBy(int column);
    // Rows that have come since the last sorting go to their places.
    void SortAgain();

    // Rows that are no objects are left out.
    std::vector<ResultObject> SelectedObjects() const;
    std::optional<ResultObject> FirstSelected() const;
    const ResultPage& Page() const { return page; }

  private:
    std::string Text(std::intptr_t data, int column) const override;
    int Indent(std::intptr_t data) const override;
    bool IsInOrderOfArrival() const;

    const ResultPage& page;
    std::optional<ListOrder> sorting;  // nothing: in the order of arrival
};

}  // namespace permora
