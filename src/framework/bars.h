// The bars of a frame window.
#pragma once

#include <string>
#include <vector>

#include "framework/controls.h"
#include "framework/images.h"
#include "framework/window.h"

namespace permora {

class CFrameWnd;

class CToolBar : public CWnd {
  public:
    bool Create(CFrameWnd& frame);
    // Toolbar resource `id`: its buttons and separators, in order.
    bool LoadToolBar(unsigned int id);
    void SetImageList(const CImageList& images);  // one image per button, separators not counted
    void EnableToolTips(bool enabled);
    void PressButton(unsigned int id, bool pressed);
};

// A bar made from a dialog template.
class CDialogBar : public CWnd {
  public:
    virtual bool Create(CFrameWnd& frame, unsigned int templateId);
};

// Holds bars side by side, each with a gripper.
class CReBar : public CWnd {
  public:
    bool Create(CFrameWnd& frame);
    bool AddBar(CWnd& bar);
};

class CStatusBar : public CWnd {
  public:
    static constexpr unsigned int kSeparator = 0;  // the stretching pane
    bool Create(CFrameWnd& frame);
    void SetIndicators(const std::vector<unsigned int>& paneIds);
    void SetPaneWidth(int pane, int width);  // logical pixels
    void SetPaneText(int pane, const std::string& text);
    std::string GetPaneText(int pane) const;
};

}  // namespace permora
