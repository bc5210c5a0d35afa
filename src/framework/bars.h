// The bars of a frame window.
#pragma once

#include <string>
#include <vector>

#include "framework/controls.h"
#include "framework/images.h"
#include "framework/window.h"

namespace permora {

class CFrameWnd;

// Buttons for commands. Their states follow the commands'; a button that is pressed stays so until released.
class CToolBar : public CWnd {
  public:
    bool Create(CFrameWnd& frame);
    // Toolbar resource `id`: its buttons and separators, in order.
    bool LoadToolBar(unsigned int id);
    void SetImageList(const CImageList& images);  // one image per button, separators not counted
    // The images of these buttons point along the lines: where those go from right to left, they are turned
    // round.
    void TurnImagesWithLayout(const std::vector<unsigned int>& ids);
    void EnableToolTips(bool enabled);
    void PressButton(unsigned int id, bool pressed);
    bool IsButtonPressed(unsigned int id) const;

  private:
    friend class CFrameWnd;
    // Updates and shows the state of each command.
    void UpdateButtons(CFrameWnd& frame);

    std::vector<unsigned int> buttons;  // without separators
    std::vector<unsigned int> pressedButtons;
};

// A bar made from a dialog template. Notifications that its map does not handle go to the frame, a click as
// the command with the button's id. Enter becomes a click on IDOK, Escape a click on IDCANCEL.
class CDialogBar : public CWnd {
  public:
    virtual bool Create(CFrameWnd& frame, unsigned int templateId);
    bool OnCmdMsg(Notification& notification) override;

  private:
    void Press(unsigned int button);
};

// Holds bars side by side, each with a gripper that moves its left edge. The last one fills the row.
class CReBar : public CWnd {
  public:
    bool Create(CFrameWnd& frame);
    // `bar` becomes a child of the rebar. In a narrow frame it keeps `leastWidth` logical pixels if the frame
    // has them.
    bool AddBar(CWnd& bar, int leastWidth);
};

// The first text of a pane is the string of its id. A prompt covers the text of pane 0 until it is removed or
// that text is set.
class CStatusBar : public CWnd {
  public:
    static constexpr unsigned int kSeparator = 0;  // the stretching pane
    bool Create(CFrameWnd& frame);
    void SetIndicators(const std::vector<unsigned int>& paneIds);
    void SetPaneWidth(int pane, int width);  // logical pixels
    void SetPaneText(int pane, const std::string& text);
    std::string GetPaneText(int pane) const;  // as shown

  private:
    friend class CFrameWnd;
    void ShowPrompt(const std::string& text);  // empty: none
    void ShowPane(int pane);
    bool IsPane(int pane) const;

    std::vector<std::string> texts;
    std::string prompt;
};

}  // namespace permora
