// Where the controls of a dialog stand while the user enlarges it.
#pragma once

#include <vector>

#include "framework/geometry.h"
#include "framework/resource_templates.h"
#include "framework/window.h"

namespace permora {

// The template names the controls that share the additional height, or what lacks on a small screen. What
// stands below them moves down. What reaches the right edge, or stands directly before something that does,
// gets wider; buttons and what stands in the right half move with the edge. All else stays.
class DialogLayout {
  public:
    // `window` has its controls, which have their places in it at the size of the template.
    void Start(CWnd& window, const DialogTemplate& dialog);
    // Places the controls for a window of another size than the template's. Nothing before Start, and in
    // dialogs of fixed size.
    void Arrange(Size client);

  private:
    enum class Across { kStays, kMoves, kWidens };
    struct Place {
        CWnd* control = nullptr;
        Rect rect;  // at the template's size
        Across across = Across::kStays;
        int growingAbove = 0;
        bool grows = false;
    };

    void FindDirections();

    std::vector<Place> places;
    int growing = 0;
    Size usual;
};

}  // namespace permora
