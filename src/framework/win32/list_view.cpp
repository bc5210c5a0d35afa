#include "framework/win32/list_view.h"

#include <algorithm>
#include <utility>

#include "framework/list_styles.h"
#include "framework/win32/controls.h"
#include "framework/win32/image.h"

namespace permora::win32 {
namespace {

constexpr int kMeasuredRows = 200;  // whose texts a column is fitted to
constexpr int kTextMargin = 12;     // of a cell, both sides together
constexpr int kMarkWidth = 24;      // picture and check box of the first column, each

}  // namespace

ListViewWindow::ListViewWindow(CListCtrl& shown, CWnd& parent, const ControlSpec& spec)
    : SystemWindow(shown, spec.rect), list(shown) {
    Adopt(MakeChild(
        parent,
        {.className = WC_LISTVIEWW,
         .style = (spec.style & ~DWORD{WS_BORDER}) | LVS_OWNERDATA | LVS_SHAREIMAGELISTS | LVS_SHOWSELALWAYS,
         .extendedStyle = (spec.style & WS_BORDER) != 0 ? DWORD{WS_EX_CLIENTEDGE} : 0,
         .rect = spec.rect},
        spec.id, {}));
    Ask(LVM_SETCALLBACKMASK, LVIS_STATEIMAGEMASK);
    ShowLater();
}

ListViewWindow::~ListViewWindow() {
    DestroyOwn();  // before the images that it shows
    if (images != nullptr) ImageList_Destroy(images);
}

ListDisplay& ListViewWindow::Display() const {
    return const_cast<ListViewWindow&>(*this);
}

LRESULT ListViewWindow::Ask(UINT question, WPARAM wide, LPARAM wider) const {
    return SendMessageW(Own(), question, wide, wider);
}

void ListViewWindow::SetText(const std::string& text) {
    SystemWindow::SetText(text);
    SetAccessibleName(text);
}

// ---- What the program changes ----

void ListViewWindow::ShowLater() {
    PostMessageW(Own(), kShowChanges, 0, 0);
}

void ListViewWindow::RowsChanged() {
    if (!std::exchange(hasOtherRows, true)) ShowLater();
}

void ListViewWindow::RowTextChanged(int row) {
    if (hasOtherRows) return;
    if (list.GetView() == ListView::kReport && list.FitsColumns())
        AppearanceChanged();
    else
        Ask(LVM_REDRAWITEMS, static_cast<WPARAM>(row), row);
}

void ListViewWindow::RowStateChanged(int row) {
    if (hasOtherRows) return;
    SetState(row, list.IsSelected(row) ? LVIS_SELECTED : 0, LVIS_SELECTED);
    Ask(LVM_REDRAWITEMS, static_cast<WPARAM>(row), row);  // its check box
}

void ListViewWindow::FocusRowChanged(int before) {
    if (hasOtherRows) return;
    if (before >= 0) SetState(before, 0, LVIS_FOCUSED);
    if (list.GetFocusedRow() >= 0) SetState(list.GetFocusedRow(), LVIS_FOCUSED, LVIS_FOCUSED);
}

void ListViewWindow::AppearanceChanged() {
    if (!std::exchange(hasOtherLooks, true)) ShowLater();
}

void ListViewWindow::StyleChanged(DWORD before) {
    AppearanceChanged();
    if (((before ^ style) & LVS_TYPEMASK) == 0) return;
    const int focus = list.GetFocusedRow();
    EnsureVisible(focus >= 0 ? focus : list.NextSelected(0));
}

void ListViewWindow::OnOtherResolution() {
    SystemWindow::OnOtherResolution();
    AppearanceChanged();
}

void ListViewWindow::EnsureVisible(int row) {
    ShowChanges();
    if (row >= 0) Ask(LVM_ENSUREVISIBLE, static_cast<WPARAM>(row), FALSE);
}

bool ListViewWindow::IsInView(int row) {
    ShowChanges();
    RECT bounds{};
    bounds.left = LVIR_BOUNDS;
    RECT client{};
    RECT seen{};
    ::GetClientRect(Own(), &client);
    return Ask(LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&bounds)) != 0 &&
           IntersectRect(&seen, &bounds, &client) != 0;
}

void ListViewWindow::SetState(int row, UINT state, UINT mask) {
    LVITEMW item{};
    item.state = state;
    item.stateMask = mask;
    isShowing = true;
    Ask(LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    isShowing = false;
}

void ListViewWindow::ShowChanges() {
    if (hasOtherLooks) ShowAppearance();
    if (hasOtherRows) ShowRows();
}

void ListViewWindow::ShowRows() {
    hasOtherRows = false;
    isShowing = true;
    Ask(LVM_SETITEMCOUNT, static_cast<WPARAM>(list.GetItemCount()), LVSICF_NOSCROLL);
    isShowing = false;
    SetState(-1, 0, LVIS_SELECTED | LVIS_FOCUSED);
    for (int row = list.NextSelected(0); row >= 0; row = list.NextSelected(row + 1))
        SetState(row, LVIS_SELECTED, LVIS_SELECTED);
    if (list.GetFocusedRow() >= 0) SetState(list.GetFocusedRow(), LVIS_FOCUSED, LVIS_FOCUSED);
    if (list.FitsColumns()) FitColumns();
    Invalidate();
}

void ListViewWindow::ShowAppearance() {
    hasOtherLooks = false;
    constexpr DWORD kShownBits = LVS_TYPEMASK | LVS_NOCOLUMNHEADER | LVS_NOSORTHEADER | LVS_SINGLESEL;
    const auto before = static_cast<DWORD>(GetWindowLongW(Own(), GWL_STYLE));
    SetWindowLongW(Own(), GWL_STYLE, static_cast<LONG>((before & ~kShownBits) | (style & kShownBits)));
    DWORD extended = LVS_EX_DOUBLEBUFFER;
    if (list.HasExtendedStyle(ListStyle::kFullRowSelect)) extended |= LVS_EX_FULLROWSELECT;
    if (list.HasExtendedStyle(ListStyle::kCheckBoxes)) extended |= LVS_EX_CHECKBOXES;
    if (list.HasExtendedStyle(ListStyle::kInfoTips)) extended |= LVS_EX_INFOTIP;
    if (list.HasExtendedStyle(ListStyle::kLabelTips)) extended |= LVS_EX_LABELTIP;
    Ask(LVM_SETEXTENDEDLISTVIEWSTYLE, static_cast<WPARAM>(-1), static_cast<LPARAM>(extended));
    ShowImages();
    ShowColumns();
    FitColumns();
    Invalidate();
}

void ListViewWindow::ShowImages() {
    HIMAGELIST before = std::exchange(images, MakeImageList(list.Images(), Dpi()));
    const bool isLarge = list.GetView() == ListView::kIcons;
    Ask(LVM_SETIMAGELIST, LVSIL_NORMAL, isLarge ? reinterpret_cast<LPARAM>(images) : 0);
    Ask(LVM_SETIMAGELIST, LVSIL_SMALL, isLarge ? 0 : reinterpret_cast<LPARAM>(images));
    if (before != nullptr) ImageList_Destroy(before);
}

void ListViewWindow::ShowColumns() {
    const auto& columns = list.Columns();
    HWND header = reinterpret_cast<HWND>(Ask(LVM_GETHEADER));
    int shown = static_cast<int>(SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
    for (; shown > static_cast<int>(columns.size()); --shown)
        Ask(LVM_DELETECOLUMN, static_cast<WPARAM>(shown - 1));
    for (int number = 0; number < static_cast<int>(columns.size()); ++number) {
        const ListColumn& column = columns[static_cast<std::size_t>(number)];
        std::wstring title = Wide(column.header);
        LVCOLUMNW look{};
        look.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_FMT;
        look.fmt = LVCFMT_LEFT;
        look.pszText = title.data();
        look.cx = ToDevice(column.width, Dpi());
        Ask(number < shown ? LVM_SETCOLUMNW : LVM_INSERTCOLUMNW, static_cast<WPARAM>(number),
            reinterpret_cast<LPARAM>(&look));
        HDITEMW mark{};
        mark.mask = HDI_FORMAT;
        mark.fmt = HDF_LEFT | HDF_STRING;
        if (number == list.SortedColumn())
            mark.fmt |= list.Sorting() == SortOrder::kUp ? HDF_SORTUP : HDF_SORTDOWN;
        SendMessageW(header, HDM_SETITEMW, static_cast<WPARAM>(number), reinterpret_cast<LPARAM>(&mark));
    }
}

int ListViewWindow::TextWidth(int column) const {
    const auto widthOf = [this](const std::string& text) {
        return static_cast<int>(Ask(LVM_GETSTRINGWIDTHW, 0, reinterpret_cast<LPARAM>(Wide(text).c_str())));
    };
    int widest = widthOf(list.Columns()[static_cast<std::size_t>(column)].header);
    for (int row = 0; row < std::min(list.GetItemCount(), kMeasuredRows); ++row)
        widest = std::max(widest, widthOf(list.GetItemText(row, column)));
    int marks = 0;
    if (column == 0 && images != nullptr) marks += kMarkWidth;
    if (column == 0 && list.HasExtendedStyle(ListStyle::kCheckBoxes)) marks += kMarkWidth;
    return ToLogical(widest, Dpi()) + kTextMargin + marks;
}

void ListViewWindow::FitColumns() {
    if (list.GetView() != ListView::kReport || !list.FitsColumns()) return;
    std::vector<int> texts;
    for (int column = 0; column < static_cast<int>(list.Columns().size()); ++column)
        texts.push_back(TextWidth(column));
    list.FitColumnsTo(texts, ClientRect().Width());
    for (int column = 0; column < static_cast<int>(texts.size()); ++column)
        Ask(LVM_SETCOLUMNWIDTH, static_cast<WPARAM>(column),
            ToDevice(list.Columns()[static_cast<std::size_t>(column)].width, Dpi()));
}

std::unique_ptr<NativeWindow> MakeListView(CListCtrl& list, CWnd& parent, const ControlSpec& spec) {
    return std::make_unique<ListViewWindow>(list, parent, spec);
}

}  // namespace permora::win32
