#include "framework/dialog_controls.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "framework/controls.h"
#include "framework/list_ctrl.h"
#include "framework/page_view.h"
#include "framework/radio_group.h"
#include "framework/styles.h"
#include "framework/window_access.h"

namespace permora {
namespace {

// value * numerator / denominator, to the nearest, for values that may be negative.
int Scale(int value, int numerator, int denominator) {
    const int doubled = 2 * value * numerator + (value >= 0 ? denominator : -denominator);
    return doubled / (2 * denominator);
}

std::optional<ControlKind> ButtonKind(DWORD style) {
    switch (style & BS_TYPEMASK) {
        case BS_PUSHBUTTON:
        case BS_DEFPUSHBUTTON:
            return ControlKind::kPushButton;
        case BS_CHECKBOX:
        case BS_AUTOCHECKBOX:
            return ControlKind::kCheckBox;
        case BS_RADIOBUTTON:
        case BS_AUTORADIOBUTTON:
            return ControlKind::kRadioButton;
        case BS_GROUPBOX:
            return ControlKind::kGroupBox;
        case BS_OWNERDRAW:
            return ControlKind::kBitmapButton;
        default:
            return std::nullopt;
    }
}

ControlKind StaticKind(DWORD style) {
    switch (style & SS_TYPEMASK) {
        case SS_ICON:
        case SS_BITMAP:
            return ControlKind::kStaticPicture;
        case SS_ETCHEDFRAME:
            return ControlKind::kEtchedFrame;
        default:
            return ControlKind::kStaticText;
    }
}

std::optional<ControlKind> KindOf(const ControlTemplate& control) {
    if (control.className == "BUTTON") return ButtonKind(control.style);
    if (control.className == "STATIC") return StaticKind(control.style);
    if (control.className == "EDIT") return ControlKind::kEdit;
    if (control.className == "COMBOBOX") return ControlKind::kComboBox;
    if (control.className == "SYSLISTVIEW32") return ControlKind::kListView;
    if (control.className == "MSCTLS_PROGRESS32") return ControlKind::kProgressBar;
    if (control.className == "PERMORA_PAGE_VIEW") return ControlKind::kPageView;
    return std::nullopt;
}

std::unique_ptr<CWnd> NewControlObject(ControlKind kind) {
    switch (kind) {
        case ControlKind::kPushButton:
        case ControlKind::kCheckBox:
        case ControlKind::kRadioButton:
        case ControlKind::kGroupBox:
        case ControlKind::kBitmapButton:
            return std::make_unique<CButton>();
        case ControlKind::kEdit:
            return std::make_unique<CEdit>();
        case ControlKind::kComboBox:
            return std::make_unique<CComboBox>();
        case ControlKind::kListView:
            return std::make_unique<CListCtrl>();
        case ControlKind::kProgressBar:
            return std::make_unique<CProgressCtrl>();
        case ControlKind::kPageView:
            return std::make_unique<CPageView>();
        case ControlKind::kStaticText:
        case ControlKind::kStaticPicture:
        case ControlKind::kEtchedFrame:
        case ControlKind::kTreeView:
        case ControlKind::kTabs:
            break;
    }
    return std::make_unique<CStatic>();
}

struct MadeControl {
    const ControlTemplate* control;
    ControlKind kind;
    CWnd* window;
};

bool TakesInput(ControlKind kind) {
    switch (kind) {
        case ControlKind::kGroupBox:
        case ControlKind::kStaticText:
        case ControlKind::kStaticPicture:
        case ControlKind::kEtchedFrame:
        case ControlKind::kProgressBar:
            return false;
        default:
            return true;
    }
}

bool HasCheckMark(ControlKind kind) {
    return kind == ControlKind::kCheckBox || kind == ControlKind::kRadioButton;
}

// ---- Names for assistive technology ----

// A label without its mnemonic and the colon at its end.
std::string PlainLabel(const std::string& label) {
    std::string text;
    for (std::size_t i = 0; i < label.size(); ++i) {
        if (label[i] == '&' && i + 1 < label.size()) ++i;
        text.push_back(label[i]);
    }
    const auto last = text.find_last_not_of(": \t");
    return text.substr(0, last == std::string::npos ? 0 : last + 1);
}

bool IsLabel(const MadeControl& made) {
    return made.kind == ControlKind::kStaticText && !made.control->text.empty();
}

// The label in the same row before `index`, or directly before it in another row; null when there is none.
// Boxes without text are skipped, since one label may belong to several of them.
const MadeControl* LabelBefore(const std::vector<MadeControl>& controls, std::size_t index) {
    for (std::size_t i = index; i-- > 0;) {
        if (IsLabel(controls[i])) return &controls[i];
        if (!HasCheckMark(controls[i].kind) || !controls[i].control->text.empty()) break;
    }
    return nullptr;
}

// The column header over a box: the nearest label above whose width covers the box.
const MadeControl* HeaderAbove(const std::vector<MadeControl>& controls, std::size_t index) {
    const Rect& box = controls[index].control->rect;
    const int centre = (box.left + box.right) / 2;
    const MadeControl* nearest = nullptr;
    for (const MadeControl& made : controls) {
        const Rect& rect = made.control->rect;
        const bool isAbove = rect.bottom <= box.top && rect.left <= centre && centre < rect.right;
        if (!IsLabel(made) || !isAbove) continue;
        if (nearest == nullptr || rect.bottom > nearest->control->rect.bottom) nearest = &made;
    }
    return nearest;
}

std::string AccessibleName(const std::vector<MadeControl>& controls, std::size_t index,
                           const DialogTemplate& dialog) {
    const MadeControl& made = controls[index];
    if (made.kind == ControlKind::kStaticPicture) return dialog.caption;
    if (made.kind != ControlKind::kEdit && !made.control->text.empty()) return PlainLabel(made.control->text);
    if (!TakesInput(made.kind)) return {};
    const MadeControl* label = LabelBefore(controls, index);
    std::string name = label != nullptr ? PlainLabel(label->control->text) : dialog.caption;
    if (HasCheckMark(made.kind)) {
        if (const MadeControl* header = HeaderAbove(controls, index))
            name += " - " + PlainLabel(header->control->text);
    }
    return name;
}

// ---- Layout ----

// How far a control may widen to the right: to the next control in its row, or the dialog's margin.
int RoomToTheRight(const std::vector<MadeControl>& controls, const MadeControl& made,
                   const DialogTemplate& dialog) {
    constexpr int kMargin = 4;
    const Rect& rect = made.control->rect;
    int right = dialog.size.cx - kMargin;
    for (const MadeControl& other : controls) {
        const Rect& otherRect = other.control->rect;
        const bool isInRow = otherRect.top < rect.bottom && rect.top < otherRect.bottom;
        const bool isBeside = isInRow && otherRect.left >= rect.right;
        const bool isAround =
            isInRow && otherRect.left <= rect.left && otherRect.right >= rect.right && &other != &made;
        if ((other.control->style & WS_VISIBLE) == 0) continue;
        if (isBeside) right = std::min(right, otherRect.left - 2);
        if (isAround) right = std::min(right, otherRect.right - kMargin);
    }
    return right;
}

// A text of one line, with nothing behind it that shows where it ends.
bool IsLooseLine(const MadeControl& made) {
    constexpr int kOneLine = 10;  // dialog units
    const DWORD type = made.control->style & SS_TYPEMASK;
    if (IsLabel(made))
        return type != SS_CENTER && type != SS_RIGHT && made.control->rect.Height() <= kOneLine;
    return HasCheckMark(made.kind) && (made.control->style & BS_MULTILINE) == 0;
}

// Sizes in dialog units fit the system's own font. With other fonts, some texts need more room.
void WidenForText(const std::vector<MadeControl>& controls, const MadeControl& made,
                  const DialogTemplate& dialog) {
    if (made.control->text.empty() || !IsLooseLine(made)) return;
    Rect rect = DialogUnitsToPixels(made.control->rect);
    const Size preferred = WindowAccess::Native(*made.window)->PreferredSize();
    const Rect room = DialogUnitsToPixels({0, 0, RoomToTheRight(controls, made, dialog), 0});
    if (preferred.cx > rect.Width())
        rect.right = std::max(rect.right, std::min(room.right, rect.left + preferred.cx));
    if (preferred.cy > rect.Height()) {
        rect.top -= (preferred.cy - rect.Height()) / 2;
        rect.bottom = rect.top + preferred.cy;
    }
    made.window->MoveWindow(rect);
}

// A template's height of a combo box includes the list that drops down.
void SetClosedHeight(const MadeControl& made) {
    Rect rect = DialogUnitsToPixels(made.control->rect);
    rect.bottom = rect.top + WindowAccess::Native(*made.window)->PreferredSize().cy;
    made.window->MoveWindow(rect);
}

// ---- Relations between controls ----

void ConnectLabel(const std::vector<MadeControl>& controls, std::size_t index) {
    if (!IsLabel(controls[index]) || index + 1 >= controls.size()) return;
    if (TakesInput(controls[index + 1].kind))
        SetLabelTarget(*controls[index].window, *controls[index + 1].window);
}

void GroupRadios(const std::vector<MadeControl>& controls) {
    for (const MadeControl& made : controls) {
        if (made.kind != ControlKind::kRadioButton) continue;
        const std::vector<CWnd*> group = RadioGroupOf(*made.window);
        if (group.front() == made.window) GroupRadioButtons(group);
    }
}

ControlSpec SpecOf(const ControlTemplate& control, ControlKind kind) {
    return {.kind = kind,
            .id = control.id,
            .style = control.style,
            .text = control.text,
            .pictureId = control.pictureId,
            .rect = DialogUnitsToPixels(control.rect)};
}

}  // namespace

Rect DialogUnitsToPixels(const Rect& units) {
    const Size base = DialogBaseUnits();
    return {Scale(units.left, base.cx, 4), Scale(units.top, base.cy, 8), Scale(units.right, base.cx, 4),
            Scale(units.bottom, base.cy, 8)};
}

void CreateTemplateControls(CWnd& window, const DialogTemplate& dialog) {
    std::vector<MadeControl> made;
    for (const ControlTemplate& control : dialog.controls) {
        const auto kind = KindOf(control);
        if (!kind) continue;
        CWnd& child = WindowAccess::AddControl(window, NewControlObject(*kind), SpecOf(control, *kind));
        made.push_back({&control, *kind, &child});
    }
    for (std::size_t i = 0; i < made.size(); ++i) {
        if (const std::string name = AccessibleName(made, i, dialog); !name.empty())
            WindowAccess::Native(*made[i].window)->SetAccessibleName(name);
        if (made[i].kind == ControlKind::kComboBox) SetClosedHeight(made[i]);
        WidenForText(made, made[i], dialog);
        ConnectLabel(made, i);
    }
    GroupRadios(made);
}

}  // namespace permora
