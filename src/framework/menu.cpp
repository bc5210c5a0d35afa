#include "framework/menu.h"

#include "framework/command_routing.h"
#include "framework/frame_native.h"
#include "framework/frame_window.h"
#include "framework/menu_items.h"
#include "framework/resource_templates.h"
#include "framework/window_access.h"

namespace permora {
namespace {

std::shared_ptr<CMenu::Items> MakeItems(const std::vector<MenuItemTemplate>& templates) {
    auto items = std::make_shared<CMenu::Items>();
    for (const MenuItemTemplate& each : templates) {
        MenuItem item;
        item.id = each.isPopup ? 0 : each.id;
        item.text = each.text;
        item.enabled = each.enabled;
        item.checked = each.checked;
        if (each.isPopup) item.popup = MakeItems(each.items);
        items->entries.push_back(std::move(item));
    }
    return items;
}

MenuItem* ItemAt(const std::shared_ptr<CMenu::Items>& items, int position) {
    const auto index = static_cast<std::size_t>(position);
    if (items == nullptr || position < 0 || index >= items->entries.size()) return nullptr;
    return &items->entries[index];
}

MenuItem* FindItem(const std::shared_ptr<CMenu::Items>& items, unsigned int id) {
    if (items == nullptr || id == 0) return nullptr;
    for (MenuItem& item : items->entries) {
        if (item.id == id) return &item;
        if (MenuItem* found = FindItem(item.popup, id)) return found;
    }
    return nullptr;
}

// A copy in which commands without a handler are grey.
std::shared_ptr<CMenu::Items> CopyForTarget(const CMenu::Items& items, CCmdTarget& target) {
    auto copy = std::make_shared<CMenu::Items>(items);
    for (MenuItem& item : copy->entries) {
        if (item.popup != nullptr) item.popup = CopyForTarget(*item.popup, target);
        if (item.id != 0) item.enabled = item.enabled && IsCommandHandled(target, item.id);
    }
    return copy;
}

}  // namespace

std::string MenuLabel(const std::string& text) {
    constexpr const char* kBlank = " ";
    const std::size_t tab = text.find('\t');
    if (tab == std::string::npos) return text;
    const std::size_t end = text.find_last_not_of(kBlank, tab - 1);
    const std::size_t key = text.find_first_not_of(kBlank, tab + 1);
    return (tab != 0 && end != std::string::npos ? text.substr(0, end + 1) : std::string()) + '\t' +
           (key != std::string::npos ? text.substr(key) : std::string());
}

CMenu CMenu::Load(unsigned int id) {
    const auto templates = LoadMenuTemplate(id);
    return templates ? CMenu(MakeItems(*templates)) : CMenu();
}

CMenu CMenu::GetSubMenu(int position) const {
    const MenuItem* item = ItemAt(items, position);
    return item != nullptr ? CMenu(item->popup) : CMenu();
}

void CMenu::CheckByPosition(int position, bool checked) {
    if (MenuItem* item = ItemAt(items, position)) item->checked = checked;
}

void CMenu::CheckRadioByPosition(int first, int last, int checked) {
    for (int position = first; position <= last; ++position) {
        MenuItem* item = ItemAt(items, position);
        if (item == nullptr) continue;
        item->isRadio = true;
        item->checked = position == checked;
    }
}

void CMenu::AppendRadio(unsigned int id, const std::string& text) {
    if (items != nullptr)
        items->entries.push_back({.id = id, .text = text, .isRadio = true, .popup = nullptr});
}

void CMenu::AppendCommand(unsigned int id, const std::string& text, const CIcon& icon) {
    if (items != nullptr) items->entries.push_back({.id = id, .text = text, .popup = nullptr, .icon = icon});
}

void CMenu::AppendSeparator() {
    if (items != nullptr) items->entries.emplace_back();
}

void CMenu::Enable(unsigned int id, bool enabled) {
    if (MenuItem* item = FindItem(items, id)) item->enabled = enabled;
}

void CMenu::SetText(unsigned int id, const std::string& text) {
    if (MenuItem* item = FindItem(items, id)) item->text = text;
}

unsigned int CMenu::TrackPopup(Point screen, CWnd& owner) const {
    if (items == nullptr || !owner.HasWindow()) return 0;
    auto* frame = dynamic_cast<CFrameWnd*>(&WindowAccess::TopLevel(owner));
    if (frame == nullptr) return TrackNativeMenu(*this, screen, owner, [](unsigned int) {});
    const CMenu shown(CopyForTarget(*items, *frame));
    return TrackNativeMenu(shown, screen, owner, [frame](unsigned int id) { frame->ShowPrompt(id); });
}

}  // namespace permora
