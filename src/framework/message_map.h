// Typed message maps: which member function answers which control or command. A dialog's map is the first
// thing in its source:
//
//     const MessageMap& CPage1::GetMessageMap() const {
//         static const MessageMap kMap = MakeMessageMap<CPage1>(CPropertyPage::GetMessageMap(), {
//             {IDC_ADD, Notify::kClicked, &CPage1::OnAdd},
//             {IDC_ACCESS_LIST, Notify::kDoubleClick, &CPage1::OnEdit},
//         });
//         return kMap;
//     }
#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "framework/geometry.h"

namespace permora {

class CCmdTarget;

// An event of a control, or a question about a command.
enum class Notify {
    kClicked,           // button, check box or radio button pressed by the user (BN_CLICKED)
    kTextChanged,       // edit field (EN_CHANGE)
    kSelectionChanged,  // combo box (CBN_SELCHANGE)
    kClick,             // list view: left click, on a row or beside (NM_CLICK)
    kDoubleClick,       // list view (NM_DBLCLK)
    kRightClick,        // list view (NM_RCLICK)
    kItemChanged,       // list view: `row` was selected, checked or the opposite, by user or program
                        // (LVN_ITEMCHANGED)
    kColumnClick,       // list view: header of `column` clicked (LVN_COLUMNCLICK)
    kHeaderMenu,        // list view: the context menu of the headers is wanted at `point` (NM_RCLICK of them)
    kKeyDown,           // list view: `key` pressed (LVN_KEYDOWN)
    kInfoTip,           // list view: the tip of `row` is wanted; the handler fills `tip` (LVN_GETINFOTIP)
    kCommand,           // menu, accelerator or toolbar command
    kUpdateCommand,     // a command's state is about to be shown; the handler adjusts `state`
    kIsHandled,         // whether there is a handler for kCommand; runs none, and maps have no entries for it
};

// How a menu entry or toolbar button is shown.
struct CommandState {
    bool enabled = true;
    bool checked = false;
};

// The data of an event. Fields without meaning for a notification keep their initial values.
struct Notification {
    unsigned int id = 0;  // control or command
    Notify code = Notify::kCommand;
    int row = -1;
    int column = -1;
    unsigned int key = 0;  // VK_ code
    Point point{};         // client coordinates of the list view
    bool handled = true;   // a handler clears it so that the default happens as well
    std::string tip{};     // answer to kInfoTip; empty: no tip
    CommandState state{};  // answer to kUpdateCommand
};

struct MessageMapEntry {
    unsigned int firstId;
    unsigned int lastId;
    Notify code;
    std::function<void(CCmdTarget&, Notification&)> handler;
};

// The entries of a class and the map of its base (null at the root). Maps live for the whole process.
struct MessageMap {
    const MessageMap* base = nullptr;
    std::vector<MessageMapEntry> entries;

    // The entry for a control and notification, the class's own before its base's; null when there is none.
    const MessageMapEntry* Find(unsigned int id, Notify code) const;
};

// One line of a typed table: handlers take nothing or the notification.
template <class Target>
struct MessageLine {
    MessageLine(unsigned int id, Notify code, void (Target::*handler)())
        : MessageLine(id, id, code, handler) {}
    MessageLine(unsigned int id, Notify code, void (Target::*handler)(Notification&))
        : MessageLine(id, id, code, handler) {}
    // For a range of ids with one handler.
    MessageLine(unsigned int firstId, unsigned int lastId, Notify code, void (Target::*handler)())
        : entry{firstId, lastId, code,
                [handler](CCmdTarget& target, Notification&) { (static_cast<Target&>(target).*handler)(); }} {
    }
    MessageLine(unsigned int firstId, unsigned int lastId, Notify code,
                void (Target::*handler)(Notification&))
        : entry{firstId, lastId, code, [handler](CCmdTarget& target, Notification& notification) {
                    (static_cast<Target&>(target).*handler)(notification);
                }} {}

    MessageMapEntry entry;
};

template <class Target>
MessageMap MakeMessageMap(const MessageMap& base, std::initializer_list<MessageLine<Target>> lines) {
    MessageMap map;
    map.base = &base;
    map.entries.reserve(lines.size());
    for (const MessageLine<Target>& line : lines)
        map.entries.push_back(line.entry);
    return map;
}

// Receives commands and notifications: windows and the application object.
class CCmdTarget {
  public:
    virtual ~CCmdTarget() = default;
    // Runs the handler of the map, if there is one; true when it ran and left `handled` set. Frames override
    // it to route commands.
    virtual bool OnCmdMsg(Notification& notification);

  protected:
    virtual const MessageMap& GetMessageMap() const;
};

}  // namespace permora
