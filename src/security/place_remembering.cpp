#include "security/place_remembering.h"

#include "framework/long_work.h"

namespace permora {

RememberedPlace RememberPlaceFor(CWnd* window, const Place& place) {
    if (window == nullptr) return RememberPlace(place);
    RememberedPlace remembered;
    DoLongWork(*window, [&] { remembered = RememberPlace(place); });
    return remembered;
}

}  // namespace permora
