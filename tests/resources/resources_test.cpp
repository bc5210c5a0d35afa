// Faults of the resource script that its compiler does not see. The expectations follow from how the program
// uses the resources, not from their contents, so a changed text or layout needs no change here.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "framework/resource_file.h"
#include "framework/resource_reader.h"
#include "framework/resource_templates.h"
#include "resources/embedded_resources.h"
#include "resources/resource_ids.h"
#include "tests/support/project_folders.h"

namespace permora::test {
namespace {

constexpr unsigned int kUnnamed = 0xFFFFFFFF;
constexpr unsigned int kOk = 1;
constexpr unsigned int kCancel = 2;
constexpr std::uint16_t kVersion = 16;
constexpr std::uint16_t kManifest = 24;

struct ProgramResources {
    std::map<std::uint16_t, DialogTemplate> dialogs;
    std::map<std::uint16_t, std::vector<MenuItemTemplate>> menus;
    std::map<std::uint16_t, std::vector<AcceleratorTemplate>> accelerators;
    std::map<std::uint16_t, ToolbarTemplate> toolbars;
    std::map<std::uint16_t, std::string> strings;
    std::map<std::uint16_t, std::vector<int>> iconSizes;  // widths of the pictures of each icon
    std::map<std::uint16_t, Size> bitmapSizes;
    std::vector<std::pair<std::uint16_t, std::uint16_t>> entries;  // type and number
};

std::vector<int> WidthsOf(const std::vector<IconGroupEntry>& icons) {
    std::vector<int> widths;
    for (const IconGroupEntry& icon : icons)
        widths.push_back(icon.size.cx);
    return widths;
}

// Throws std::bad_optional_access for what cannot be read, which fails the test.
Size SizeInBitmap(std::span<const std::byte> bitmap) {
    ResourceReader reader(bitmap);
    reader.Skip(4);  // the header's own size
    const auto width = static_cast<int>(reader.TakeU32());
    return {width, static_cast<int>(reader.TakeU32())};
}

void Add(ProgramResources& all, const ResourceEntry& entry) {
    all.entries.emplace_back(entry.type, entry.id);
    switch (static_cast<ResourceType>(entry.type)) {
        case ResourceType::kDialog:
            all.dialogs[entry.id] = ParseDialogTemplate(entry.data).value();
            break;
        case ResourceType::kMenu:
            all.menus[entry.id] = ParseMenuTemplate(entry.data).value();
            break;
        case ResourceType::kAccelerators:
            all.accelerators[entry.id] = ParseAccelerators(entry.data).value();
            break;
        case ResourceType::kToolbar:
            all.toolbars[entry.id] = ParseToolbarTemplate(entry.data).value();
            break;
        case ResourceType::kStringTable:
            for (unsigned int i = 0; i < 16; ++i) {
                const std::string text = ParseStringBlock(entry.data, i);
                const auto id = static_cast<std::uint16_t>((entry.id - 1U) * 16U + i);
                if (!text.empty()) all.strings[id] = text;
            }
            break;
        case ResourceType::kIconGroup:
            all.iconSizes[entry.id] = WidthsOf(ParseIconGroup(entry.data).value());
            break;
        case ResourceType::kBitmap:
            all.bitmapSizes[entry.id] = SizeInBitmap(entry.data);
            break;
        case ResourceType::kIcon:
        case ResourceType::kGrowingControls:  // read with the dialog
            break;
    }
}

const ProgramResources& Resources() {
    static const ProgramResources kAll = [] {
        ProgramResources all;
        const auto entries = ReadResourceFile(EmbeddedResources());
        for (const ResourceEntry& entry : entries.value())
            Add(all, entry);
        return all;
    }();
    return kAll;
}

// The names and numbers that resource_ids.h defines.
std::vector<std::pair<std::string, std::uint16_t>> DefinedNumbers() {
    std::vector<std::pair<std::string, std::uint16_t>> numbers;
    std::ifstream header(test::InProject("src/resources/resource_ids.h"));
    for (std::string line; std::getline(header, line);) {
        std::istringstream words(line);
        std::string directive;
        std::string name;
        unsigned number = 0;
        if (words >> directive >> name >> number && directive == "#define")
            numbers.emplace_back(name, static_cast<std::uint16_t>(number));
    }
    return numbers;
}

std::set<std::uint16_t> NumbersWithPrefix(const std::string& prefix) {
    std::set<std::uint16_t> numbers;
    for (const auto& [name, number] : DefinedNumbers()) {
        if (name.starts_with(prefix)) {
            EXPECT_TRUE(prefix == "IDC_" || numbers.insert(number).second)
                << name << " has another one's number";
            numbers.insert(number);
        }
    }
    return numbers;
}

template <typename Value>
std::set<std::uint16_t> Keys(const std::map<std::uint16_t, Value>& map) {
    std::set<std::uint16_t> keys;
    for (const auto& entry : map)
        keys.insert(entry.first);
    return keys;
}

bool IsButtonKind(const ControlTemplate& control, std::initializer_list<std::uint32_t> kinds) {
    return control.className == "BUTTON" && std::ranges::count(kinds, control.style & 0xF) != 0;
}

bool IsFrame(const ControlTemplate& control) {
    constexpr std::uint32_t kGroupBox = 7;
    constexpr std::uint32_t kEtchedFrame = 0x12;
    return IsButtonKind(control, {kGroupBox}) ||
           (control.className == "STATIC" && (control.style & 0x1F) == kEtchedFrame);
}

bool IsLabel(const ControlTemplate& control) {
    return control.className == "STATIC" && control.id == kUnnamed && !control.text.empty();
}

// A combo box's template height includes the list that drops down.
int HeightAtRest(const ControlTemplate& control) {
    return control.className == "COMBOBOX" ? std::min(control.rect.Height(), 14) : control.rect.Height();
}

bool Overlap(const ControlTemplate& one, const ControlTemplate& other) {
    return one.rect.left < other.rect.left + other.rect.Width() &&
           other.rect.left < one.rect.left + one.rect.Width() &&
           one.rect.top < other.rect.top + HeightAtRest(other) &&
           other.rect.top < one.rect.top + HeightAtRest(one);
}

std::string Describe(const ControlTemplate& control) {
    return control.className + " " + std::to_string(static_cast<std::int32_t>(control.id)) + " \"" +
           control.text + "\"";
}

std::vector<MenuItemTemplate> CommandsOf(const std::vector<MenuItemTemplate>& items) {
    std::vector<MenuItemTemplate> commands;
    for (const MenuItemTemplate& item : items) {
        if (item.id != 0) commands.push_back(item);
        const auto nested = CommandsOf(item.items);
        commands.insert(commands.end(), nested.begin(), nested.end());
    }
    return commands;
}

std::set<std::uint16_t> CommandNumbers(std::uint16_t menu) {
    std::set<std::uint16_t> numbers;
    for (const MenuItemTemplate& item : CommandsOf(Resources().menus.at(menu)))
        numbers.insert(static_cast<std::uint16_t>(item.id));
    return numbers;
}

TEST(Resources, NoResourceIsDefinedTwice) {
    const auto& entries = Resources().entries;
    const std::set<std::pair<std::uint16_t, std::uint16_t>> distinct(entries.begin(), entries.end());
    EXPECT_EQ(distinct.size(), entries.size());
    EXPECT_TRUE(distinct.contains({kManifest, std::uint16_t{1}}));
    EXPECT_TRUE(distinct.contains({kVersion, std::uint16_t{1}}));
}

TEST(Resources, EveryNumberHasAResourceAndEveryResourceAName) {
    EXPECT_EQ(Keys(Resources().dialogs), NumbersWithPrefix("IDD_"));
    EXPECT_EQ(Keys(Resources().bitmapSizes), NumbersWithPrefix("IDB_"));

    auto icons = NumbersWithPrefix("IDI_");
    icons.insert({IDR_MAIN_FRAME, IDR_RESULTS});
    EXPECT_EQ(Keys(Resources().iconSizes), icons);

    const auto commands = NumbersWithPrefix("ID_");
    std::set<std::uint16_t> offered = CommandNumbers(IDR_MAIN_FRAME);
    offered.merge(CommandNumbers(IDR_RESULTS));
    offered.insert(ID_RESTART_AS_ADMINISTRATOR);  // in the menu only where the rights are missing
    EXPECT_EQ(offered, commands);
    auto strings = NumbersWithPrefix("IDS_");
    strings.insert({IDR_MAIN_FRAME, IDR_RESULTS});
    strings.insert(commands.begin(), commands.end());
    strings.erase(ID_WEB_SITE);  // the one command without a prompt
    EXPECT_EQ(Keys(Resources().strings), strings);

    std::set<std::uint16_t> controls = {IDC_PREVIEW, IDC_FOLDER_TREE};  // made without a template
    for (const auto& entry : Resources().dialogs) {
        for (const ControlTemplate& control : entry.second.controls) {
            const auto id = static_cast<std::uint16_t>(control.id);
            // Buttons of bars are commands.
            if (control.id != kUnnamed && control.id != kOk && control.id != kCancel &&
                !commands.contains(id))
                controls.insert(id);
        }
    }
    EXPECT_EQ(controls, NumbersWithPrefix("IDC_"));
}

TEST(Resources, PicturesHaveTheSizesTheyAreShownIn) {
    for (const auto& [id, sizes] : Resources().iconSizes) {
        std::vector<int> expected = {16, 24, 32, 48};
        if (id == IDR_MAIN_FRAME || id == IDR_RESULTS) expected.push_back(256);
        EXPECT_THAT(sizes, ::testing::UnorderedElementsAreArray(expected)) << "icon " << id;
    }
    const auto& bitmaps = Resources().bitmapSizes;
    EXPECT_EQ(bitmaps.at(IDB_WIZARD), (Size{66, 358}));
    EXPECT_EQ(bitmaps.at(IDB_BANNER), (Size{358, 66}));
    for (const int id : {IDB_GO_NORMAL, IDB_GO_PRESSED, IDB_GO_DISABLED})
        EXPECT_EQ(bitmaps.at(static_cast<std::uint16_t>(id)), (Size{16, 16}));
}

TEST(DialogTemplates, AreWindowsOfTheRightKind) {
    constexpr std::uint32_t kPopUp = 0x80000000;
    constexpr std::uint32_t kChild = 0x40000000;
    constexpr std::uint32_t kCaption = 0x00C00000;
    constexpr std::uint32_t kDisabled = 0x08000000;
    const std::set<std::uint16_t> pages = {
        IDD_PERMISSIONS_PAGE,           IDD_SHARE_PERMISSIONS_PAGE, IDD_OWNER_PAGE,
        IDD_EFFECTIVE_PERMISSIONS_PAGE, IDD_WIZARD_TASK_PAGE,       IDD_WIZARD_DELETION_PAGE,
        IDD_WIZARD_PERMISSIONS_PAGE};
    for (const auto& [id, dialog] : Resources().dialogs) {
        SCOPED_TRACE("dialog " + std::to_string(id));
        const bool isBar = id == IDD_ADDRESS_BAR || id == IDD_RESULTS_BAR;
        EXPECT_EQ(dialog.caption.empty(), isBar);
        const std::uint32_t windowStyle = dialog.style & (kPopUp | kChild | kCaption | kDisabled);
        if (pages.contains(id))
            EXPECT_EQ(windowStyle, kChild | kCaption | kDisabled);
        else
            EXPECT_EQ(windowStyle, isBar ? kChild : kPopUp | kCaption);
    }
}

TEST(DialogTemplates, NumberTheirControlsDistinctly) {
    for (const auto& [id, dialog] : Resources().dialogs) {
        std::set<std::uint32_t> seen;
        for (const ControlTemplate& control : dialog.controls) {
            EXPECT_TRUE(control.id == kUnnamed || seen.insert(control.id).second)
                << "dialog " << id << ": " << Describe(control);
        }
    }
}

void ExpectInside(const DialogTemplate& dialog, const ControlTemplate& control) {
    EXPECT_GT(control.rect.Width(), 0) << Describe(control);
    EXPECT_GT(control.rect.Height(), 0) << Describe(control);
    EXPECT_GE(std::min(control.rect.left, control.rect.top), 0) << Describe(control);
    EXPECT_LE(control.rect.left + control.rect.Width(), dialog.size.cx) << Describe(control);
    EXPECT_LE(control.rect.top + HeightAtRest(control), dialog.size.cy) << Describe(control);
}

TEST(DialogTemplates, KeepControlsInsideAndApart) {
    for (const auto& [id, dialog] : Resources().dialogs) {
        SCOPED_TRACE("dialog " + std::to_string(id));
        const auto& controls = dialog.controls;
        for (auto one = controls.begin(); one != controls.end(); ++one) {
            ExpectInside(dialog, *one);
            for (auto other = std::next(one); other != controls.end(); ++other) {
                EXPECT_TRUE(IsFrame(*one) || IsFrame(*other) || !Overlap(*one, *other))
                    << Describe(*one) << " overlaps " << Describe(*other);
            }
        }
    }
}

// A text that ends in a colon announces the next numbered control: one beside or below it, and no push
// button.
TEST(DialogTemplates, PutLabelsBeforeWhatTheyName) {
    for (const auto& [id, dialog] : Resources().dialogs) {
        SCOPED_TRACE("dialog " + std::to_string(id));
        const auto& controls = dialog.controls;
        for (auto label = controls.begin(); label != controls.end(); ++label) {
            if (!IsLabel(*label) || label->text[label->text.find_last_not_of(' ')] != ':') continue;
            const auto named = std::find_if(label, controls.end(),
                                            [](const ControlTemplate& c) { return c.id != kUnnamed; });
            const bool announced =
                named != controls.end() && !IsButtonKind(*named, {0, 1}) &&
                named->rect.top + HeightAtRest(*named) >= label->rect.top + label->rect.Height();
            EXPECT_TRUE(announced) << Describe(*label);
        }
    }
}

void ExpectKeysThatWork(std::uint16_t frame, std::set<std::pair<std::string, std::uint16_t>> ownKeys) {
    constexpr std::uint16_t kShift = 4;
    constexpr std::uint16_t kControl = 8;
    constexpr std::uint16_t kAlt = 16;
    const std::map<std::string, std::uint16_t> keyNames = {
        {"Esc", 0x1B}, {"Del", 0x2E}, {"F1", 0x70}, {"F2", 0x71}, {"F5", 0x74}};
    std::set<std::pair<std::string, std::uint16_t>> keys = std::move(ownKeys);
    for (const AcceleratorTemplate& key : Resources().accelerators.at(frame)) {
        EXPECT_EQ(key.flags & kShift, 0);
        std::string text;
        text += (key.flags & kControl) != 0 ? "Ctrl+" : "";
        text += (key.flags & kAlt) != 0 ? "Alt+" : "";
        const auto name =
            std::ranges::find(keyNames, key.key, &std::map<std::string, std::uint16_t>::value_type::second);
        text += name != keyNames.end() ? name->first : std::string(1, static_cast<char>(key.key));
        EXPECT_TRUE(keys.emplace(text, key.command).second) << text;
    }
    std::set<std::pair<std::string, std::uint16_t>> shown;
    for (const MenuItemTemplate& item : CommandsOf(Resources().menus.at(frame)))
        if (const auto tab = item.text.find('\t'); tab != std::string::npos)
            shown.emplace(item.text.substr(item.text.find_first_not_of(' ', tab + 1)), item.id);
    EXPECT_EQ(shown, keys);
}

TEST(Menus, ShowOnlyKeysThatWork) {
    // The list handles these itself.
    ExpectKeysThatWork(IDR_MAIN_FRAME, {{"Del", ID_DELETE}, {"Backspace", ID_GO_UP}});
    ExpectKeysThatWork(IDR_RESULTS, {});
}

TEST(Menus, HaveTheEntriesThatTheProgramFindsByPosition) {
    const auto& menu = Resources().menus.at(IDR_MAIN_FRAME);
    const auto commandsOf = [&](std::size_t popUp) {
        std::vector<int> ids;
        for (const MenuItemTemplate& item : menu.at(popUp).items)
            ids.push_back(static_cast<int>(item.id));
        return ids;
    };
    EXPECT_THAT(commandsOf(0), ::testing::Contains(ID_NEW_FOLDER));
    EXPECT_THAT(commandsOf(1), ::testing::Contains(ID_SHOW_SHARES));
    EXPECT_THAT(commandsOf(2),
                ::testing::ElementsAre(::testing::_, ::testing::_, ID_VIEW_OWN_ICONS, 0, ID_VIEW_ICONS,
                                       ID_VIEW_SMALL_ICONS, ID_VIEW_LIST, ID_VIEW_DETAILS, 0, 0,
                                       ID_VIEW_DOT_NAMES, ID_VIEW_FOLDER_TREE));
    EXPECT_EQ(Resources().menus.at(IDR_CONTEXT_MENUS).size(), 2U);
}

TEST(Menus, GiveNoMnemonicTwiceInOnePopUp) {
    for (const MenuItemTemplate& popUp : Resources().menus.at(IDR_MAIN_FRAME)) {
        std::set<int> mnemonics;
        for (const MenuItemTemplate& item : popUp.items)
            if (const auto mark = item.text.find('&'); mark != std::string::npos)
                EXPECT_TRUE(mnemonics.insert(std::tolower(item.text.at(mark + 1))).second) << item.text;
    }
}

TEST(Commands, OfContextMenusAndToolbarAreInTheMainMenu) {
    const auto mainMenu = CommandNumbers(IDR_MAIN_FRAME);
    EXPECT_THAT(mainMenu, ::testing::IsSupersetOf(CommandNumbers(IDR_CONTEXT_MENUS)));
    for (const unsigned int number : Resources().toolbars.at(IDR_MAIN_FRAME).commands) {
        const auto command = static_cast<std::uint16_t>(number);
        if (command != 0) {
            EXPECT_TRUE(mainMenu.contains(command)) << command;
            EXPECT_THAT(Resources().strings.at(command), ::testing::MatchesRegex(".+\n.+")) << "no tool tip";
        }
    }
}

}  // namespace
}  // namespace permora::test
