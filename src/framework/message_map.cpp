#include "framework/message_map.h"

namespace permora {

const MessageMapEntry* MessageMap::Find(unsigned int id, Notify code) const {
    for (const MessageMap* map = this; map != nullptr; map = map->base) {
        for (const MessageMapEntry& entry : map->entries)
            if (entry.code == code && id >= entry.firstId && id <= entry.lastId) return &entry;
    }
    return nullptr;
}

bool CCmdTarget::OnCmdMsg(Notification& notification) {
    if (notification.code == Notify::kIsHandled)
        return GetMessageMap().Find(notification.id, Notify::kCommand) != nullptr;
    const MessageMapEntry* entry = GetMessageMap().Find(notification.id, notification.code);
    if (entry == nullptr) return false;
    notification.handled = true;
    entry->handler(*this, notification);
    return notification.handled;
}

const MessageMap& CCmdTarget::GetMessageMap() const {
    static const MessageMap kEmpty;
    return kEmpty;
}

}  // namespace permora
