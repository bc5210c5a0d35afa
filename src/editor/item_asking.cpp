#include "editor/item_asking.h"

#include "platform/volume_question.h"
#include "security/volume_asking.h"

namespace permora {

std::string VolumeOfItem(const RememberedPlace& place, const RememberedObject& item) {
    return place.kind == PlaceKind::kDrives ? VolumeOfPath(item.Path()) : place.volume;
}

std::vector<RememberedPlace> ByVolume(const RememberedPlace& place) {
    if (place.kind != PlaceKind::kDrives) return {place};
    std::vector<RememberedPlace> drives;
    for (const RememberedObject& drive : place.items)
        drives.push_back({place.kind, {drive}, VolumeOfItem(place, drive)});
    return drives;
}

std::string AskReadOnlyReason(CWnd& window, const RememberedPlace& place, SECURITY_INFORMATION information) {
    std::string reason;
    for (const RememberedPlace& part : ByVolume(place)) {
        const auto find = [items = part.items, information](std::string& found, PatientWork::Running&) {
            found = ReadOnlyReason(items, information);
            return Outcome();
        };
        const Outcome outcome = FindOnVolume<std::string>(window, part.volume, reason, find);
        if (!outcome.IsDone() || reason.empty()) return {};
    }
    return reason;
}

}  // namespace permora
