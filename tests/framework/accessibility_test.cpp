// Every dialog of the program can be used without seeing it and without a mouse, and read in every size.
#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QWidget>
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <map>
#include <optional>
#include <set>

#include "framework/dialog.h"
#include "framework/dialog_controls.h"
#include "framework/frame_window.h"
#include "framework/property_sheet.h"
#include "framework/qt/widget.h"
#include "framework/resource_templates.h"
#include "framework/styles.h"
#include "framework/window_access.h"
#include "resources/resource_ids.h"
#include "tests/support/dialog_templates.h"
#include "tests/support/scoped_variable.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using test::DialogTemplates;
using test::UiDriver;
using test::WindowDriver;

using Check = std::function<void(WindowDriver&, CWnd&, const DialogTemplate&)>;

void CheckDialog(UiDriver& ui, unsigned int id, const DialogTemplate& dialogTemplate, const Check& check) {
    CDialog dialog(id);
    ui.ExpectDialog(id, [&](WindowDriver& window) {
        check(window, dialog, dialogTemplate);
        dialog.EndDialog(0);
    });
    dialog.DoModal();
}

void CheckPage(UiDriver& ui, unsigned int id, const DialogTemplate& dialogTemplate, const Check& check) {
    CPropertyPage page(id);
    CPropertySheet sheet;
    sheet.Construct("Sheet", nullptr);
    sheet.AddPage(page);
    ui.ExpectSheet("Sheet", [&](WindowDriver& window) {
        check(window, page, dialogTemplate);
        window.Press("Esc");
    });
    sheet.DoModal();
}

// Shows every dialog and page to `check`.
void ForEachDialog(const Check& check) {
    UiDriver ui;
    const std::vector<unsigned int> ids = DialogTemplates();
    ASSERT_FALSE(ids.empty());
    for (const unsigned int id : ids) {
        SCOPED_TRACE("dialog " + std::to_string(id));
        const auto dialogTemplate = LoadDialogTemplate(id);
        ASSERT_TRUE(dialogTemplate);
        const bool isPage = (dialogTemplate->style & WS_CHILD) != 0;
        (isPage ? CheckPage : CheckDialog)(ui, id, *dialogTemplate, check);
    }
}

// A text that is scrolled and has links, so the keyboard reaches it.
constexpr const char* kPageView = "PERMORA_PAGE_VIEW";

// What assistive technology must take a control for; nothing for frames, which it passes over.
std::optional<QAccessible::Role> RoleOf(const ControlTemplate& control) {
    if (control.className == "EDIT") return QAccessible::EditableText;
    if (control.className == "COMBOBOX") return QAccessible::ComboBox;
    if (control.className == "SYSLISTVIEW32") return QAccessible::List;
    if (control.className == "MSCTLS_PROGRESS32") return QAccessible::ProgressBar;
    if (control.className == kPageView) return QAccessible::StaticText;
    if (control.className == "STATIC") {
        switch (control.style & SS_TYPEMASK) {
            case SS_ICON:
            case SS_BITMAP:
                return QAccessible::Graphic;
            case SS_ETCHEDFRAME:
                return std::nullopt;
            default:
                return QAccessible::StaticText;
        }
    }
    switch (control.style & BS_TYPEMASK) {
        case BS_AUTOCHECKBOX:
            return QAccessible::CheckBox;
        case BS_AUTORADIOBUTTON:
            return QAccessible::RadioButton;
        case BS_GROUPBOX:
            return control.text.empty() ? std::nullopt : std::optional(QAccessible::Grouping);
        default:
            return QAccessible::Button;
    }
}

bool TakesInput(QAccessible::Role role) {
    return role != QAccessible::StaticText && role != QAccessible::Graphic && role != QAccessible::Grouping &&
           role != QAccessible::ProgressBar;
}

bool IsShown(const ControlTemplate& control) {
    return (control.style & WS_VISIBLE) != 0;
}

TEST(Accessibility, EveryControlHasItsRoleAndANameOfItsOwn) {
    ForEachDialog([](WindowDriver&, CWnd& window, const DialogTemplate& dialogTemplate) {
        const auto& children = WindowAccess::Children(window);
        ASSERT_EQ(children.size(), dialogTemplate.controls.size()) << "a control was not made";
        std::set<std::pair<int, QString>> namesOfInputs;
        for (std::size_t i = 0; i < children.size(); ++i) {
            const ControlTemplate& control = dialogTemplate.controls[i];
            const auto role = RoleOf(control);
            if (!role || !IsShown(control)) continue;
            SCOPED_TRACE(control.className + " " + std::to_string(control.id) + " \"" + control.text + "\"");
            QAccessibleInterface* interface =
                QAccessible::queryAccessibleInterface(qt::WidgetOf(*children[i]));
            ASSERT_NE(interface, nullptr);
            EXPECT_EQ(interface->role(), *role);
            const QString name = interface->text(QAccessible::Name);
            const bool isFilledLater = *role == QAccessible::StaticText && control.text.empty();
            EXPECT_TRUE(isFilledLater || !name.isEmpty());
            EXPECT_EQ(interface->state().disabled != 0, (control.style & WS_DISABLED) != 0);
            const bool isDistinct = !TakesInput(*role) || namesOfInputs.emplace(*role, name).second;
            EXPECT_TRUE(isDistinct) << "named as another: " << qPrintable(name);
        }
    });
}

// Visible and enabled controls in the template's order; of each group of radio buttons the first.
std::vector<unsigned int> ExpectedTabOrder(const DialogTemplate& dialogTemplate) {
    std::vector<unsigned int> order;
    bool isInRadioGroup = false;
    for (const ControlTemplate& control : dialogTemplate.controls) {
        const auto role = RoleOf(control);
        const bool isRadio = role == QAccessible::RadioButton;
        const bool startsGroup = (control.style & WS_GROUP) != 0;
        const bool continues = isRadio && isInRadioGroup && !startsGroup;
        isInRadioGroup = isRadio;
        const bool isReached = role && (TakesInput(*role) || control.className == kPageView);
        if (!isReached || !IsShown(control) || (control.style & WS_DISABLED) != 0 || continues) continue;
        order.push_back(control.id);
    }
    return order;
}

TEST(Accessibility, TheKeyboardReachesEveryControlInOrder) {
    ForEachDialog([](WindowDriver& window, CWnd&, const DialogTemplate& dialogTemplate) {
        const std::vector<unsigned int> expected = ExpectedTabOrder(dialogTemplate);
        std::vector<unsigned int> order = window.TabThrough();
        // A sheet's own tabs and buttons surround those of the page.
        std::erase_if(order, [&](unsigned int id) {
            return std::ranges::none_of(dialogTemplate.controls,
                                        [id](const auto& each) { return each.id == id; });
        });
        if (!order.empty())
            std::rotate(order.begin(), std::ranges::find(order, expected.front()), order.end());
        EXPECT_EQ(order, expected);
    });
}

// How much room the text of a control needs, which may break it into lines within its width.
QSize TextSizeOf(const QWidget& widget, const ControlTemplate& control) {
    const auto room = [&](QString text, int flags) {
        return widget.fontMetrics().boundingRect(0, 0, widget.width(), 0, flags, text).size();
    };
    if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
        const bool isOneLine = (control.style & SS_TYPEMASK) == SS_LEFTNOWORDWRAP;
        return room(label->text(), Qt::TextShowMnemonic | Qt::TextExpandTabs |
                                       (isOneLine ? 0 : static_cast<int>(Qt::TextWordWrap)));
    }
    if (const auto* group = qobject_cast<const QGroupBox*>(&widget))
        return room(group->title(), Qt::TextShowMnemonic);
    if (const auto* button = qobject_cast<const QPushButton*>(&widget))
        return room(button->text(), Qt::TextShowMnemonic);
    constexpr QSize kMargins(4, 0);  // the style's, beside the text
    const bool isBox = qobject_cast<const QAbstractButton*>(&widget) != nullptr;
    return isBox ? widget.sizeHint() - kMargins : QSize(0, 0);
}

TEST(Accessibility, NoTextIsCutInSmallAndInLargeFonts) {
    const QFont usual = QApplication::font();
    for (const int points : {9, 16}) {
        SCOPED_TRACE("font of " + std::to_string(points) + " points");
        QFont font = usual;
        font.setPointSize(points);
        QApplication::setFont(font);
        ForEachDialog([](WindowDriver& driver, CWnd& window, const DialogTemplate& dialogTemplate) {
            const QWidget& shown = *qt::WidgetOf(window);
            // Large letters want a larger screen than the test may have.
            const QSize whole =
                qt::ToQt(DialogUnitsToPixels({0, 0, dialogTemplate.size.cx, dialogTemplate.size.cy})).size();
            shown.window()->resize(shown.window()->size() + whole - shown.size());
            driver.WaitUntil([&] { return shown.size() == whole; });
            for (std::size_t i = 0; i < dialogTemplate.controls.size(); ++i) {
                const ControlTemplate& control = dialogTemplate.controls[i];
                const QWidget& widget = *qt::WidgetOf(*WindowAccess::Children(window)[i]);
                if (control.text.empty() || !IsShown(control)) continue;
                const QSize needed = TextSizeOf(widget, control);
                EXPECT_TRUE(needed.width() <= widget.width() && needed.height() <= widget.height())
                    << control.text << " needs " << needed.width() << " x " << needed.height() << " of "
                    << widget.width() << " x " << widget.height();
            }
        });
    }
    QApplication::setFont(usual);
}

// Every window in `top` with its name, and its place in its parent.
std::vector<std::pair<QString, QRect>> PlacesIn(const QWidget& top) {
    std::vector<std::pair<QString, QRect>> places;
    for (const QWidget* widget : top.findChildren<QWidget*>())
        if (qt::WindowOf(*widget) != nullptr)
            places.emplace_back(widget->objectName(),
                                QStyle::visualRect(top.layoutDirection(), widget->parentWidget()->rect(),
                                                   widget->geometry()));
    return places;
}

TEST(Accessibility, EveryDialogIsMirroredWhereOneReadsToTheLeft) {
    std::vector<std::vector<std::pair<QString, QRect>>> usual;
    ForEachDialog([&](WindowDriver&, CWnd& window, const DialogTemplate&) {
        usual.push_back(PlacesIn(*qt::WidgetOf(window)->window()));
    });
    QApplication::setLayoutDirection(Qt::RightToLeft);
    auto expected = usual.begin();
    ForEachDialog([&](WindowDriver&, CWnd& window, const DialogTemplate&) {
        QWidget& top = *qt::WidgetOf(window)->window();
        EXPECT_EQ(PlacesIn(top), *expected);
        top.resize(top.width() + 100, top.height());  // they stay where they are, seen from the right edge
        top.resize(top.width() - 100, top.height());
        EXPECT_EQ(PlacesIn(top), *expected++);
    });
    QApplication::setLayoutDirection(Qt::LeftToRight);
    EXPECT_EQ(expected, usual.end());
}

TEST(AccessibilityDeathTest, AProgramGoesInTheDirectionOfItsUsersLanguage) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // the program starts anew
    const std::pair<const char*, int> kLanguages[] = {{"ar_EG.UTF-8", 1}, {"de_DE.UTF-8", 0}};
    for (const auto& [language, isToTheLeft] : kLanguages) {
        const test::ScopedVariable set("LC_ALL", language);
        EXPECT_EXIT(std::_Exit(QApplication::isRightToLeft() ? 1 : 0), testing::ExitedWithCode(isToTheLeft),
                    "")
            << language;
    }
}

TEST(Accessibility, AnEnlargedDialogHasLargerListsAndNothingCoversAnother) {
    constexpr int kMore = 150;
    ForEachDialog([](WindowDriver& driver, CWnd& window, const DialogTemplate& dialogTemplate) {
        const std::vector<CWnd*>& controls = WindowAccess::Children(window);
        QWidget& top = *qt::WidgetOf(window)->window();
        const auto place = [&](std::size_t i) { return qt::WidgetOf(*controls[i])->geometry(); };
        const auto overlaps = [&] {
            std::set<std::pair<std::size_t, std::size_t>> found;
            for (std::size_t i = 0; i < controls.size(); ++i)
                for (std::size_t k = i + 1; k < controls.size(); ++k)
                    if (place(i).intersects(place(k))) found.emplace(i, k);
            return found;
        };
        const auto before = overlaps();
        std::map<unsigned int, int> heights;
        for (const unsigned int id : dialogTemplate.growing)
            heights[id] = qt::WidgetOf(*window.GetDlgItem(id))->height();
        const QSize size = top.size();
        const int width = qt::WidgetOf(window)->width();
        top.resize(size + QSize(kMore, kMore));
        const bool mayGrow = !dialogTemplate.growing.empty();
        ASSERT_EQ(top.size() != size, mayGrow);
        driver.WaitUntil([&] { return !mayGrow || qt::WidgetOf(window)->width() == width + kMore; });
        int grown = 0;
        for (const unsigned int id : dialogTemplate.growing)
            grown += qt::WidgetOf(*window.GetDlgItem(id))->height() - heights[id];
        EXPECT_EQ(grown, mayGrow ? kMore : 0);
        EXPECT_EQ(overlaps(), before);
    });
}

TEST(Accessibility, ASheetComesBackInTheSizeThatTheUserGaveIt) {
    UiDriver ui;
    Size kept;
    const auto show = [&](const std::function<void(QWidget&)>& use) {
        CPropertyPage page(IDD_PERMISSIONS_PAGE);
        CPropertySheet sheet;
        sheet.Construct("Sheet", nullptr);
        sheet.AddPage(page);
        sheet.KeepSizeIn(kept);
        ui.ExpectSheet("Sheet", [&](WindowDriver& window) {
            use(*qt::WidgetOf(sheet));
            window.Press("Esc");
        });
        sheet.DoModal();
    };
    QSize own;
    show([&](QWidget& sheet) { own = sheet.size(); });
    EXPECT_EQ(kept, Size());
    const QSize larger = own + QSize(60, 40);
    show([&](QWidget& sheet) { sheet.resize(larger); });
    show([&](QWidget& sheet) {
        EXPECT_EQ(sheet.size(), larger);
        sheet.resize(own);
    });
    EXPECT_EQ(kept, Size());
}

// The letter after a single '&'; 0: none.
char MnemonicOf(const std::string& text) {
    for (std::size_t i = 0; i + 1 < text.size(); ++i) {
        if (text[i] != '&') continue;
        if (text[i + 1] != '&')
            return static_cast<char>(std::tolower(static_cast<unsigned char>(text[i + 1])));
        ++i;
    }
    return 0;
}

TEST(Accessibility, NoMnemonicMeansTwoControls) {
    for (const unsigned int id : DialogTemplates()) {
        const auto dialogTemplate = LoadDialogTemplate(id);
        ASSERT_TRUE(dialogTemplate);
        std::map<char, int> uses;
        // The sheet around a page of the editor has "&Apply" and "Pre&view...".
        if ((dialogTemplate->style & WS_CHILD) != 0) uses = {{'a', 1}, {'v', 1}};
        for (const ControlTemplate& control : dialogTemplate->controls) {
            const char letter = MnemonicOf(control.text);
            const bool isTwice = letter != 0 && IsShown(control) && ++uses[letter] > 1;
            EXPECT_FALSE(isTwice) << "dialog " << id << ": " << control.text;
        }
    }
}

TEST(Accessibility, AFrameIsAWindowAndItsPictureButtonsTellTheirCommand) {
    CFrameWnd frame;
    ASSERT_TRUE(frame.LoadFrame(IDR_MAIN_FRAME));
    CBitmapButton button;
    ASSERT_TRUE(button.Create(frame, {0, 0, 16, 16}, ID_GO_TO_LOCATION));
    const auto* top = QAccessible::queryAccessibleInterface(qt::WidgetOf(frame)->window());
    EXPECT_EQ(top->role(), QAccessible::Window);
    EXPECT_EQ(top->text(QAccessible::Name), QStringLiteral("Permora"));
    const auto* pictures = QAccessible::queryAccessibleInterface(qt::WidgetOf(button));
    EXPECT_EQ(pictures->text(QAccessible::Name), QStringLiteral("Go to location"));
}

}  // namespace
}  // namespace permora
