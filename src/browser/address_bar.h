// AddrBar: where the browser is, and where the user types where it should go.
#pragma once

#include <string>

#include "framework/bars.h"
#include "framework/controls.h"

namespace permora {

class AddrBar : public CDialogBar {
  public:
    // From dialog resource `templateId`, with the go button beside its field. The button and the Enter key
    // reach the frame as command 152. Escape restores the location and gives the focus to the frame.
    bool Create(CFrameWnd& frame, unsigned int templateId) override;

    // Where the browser is, which the field then shows.
    void SetLocationText(const std::string& text);

    // In logical pixels: the caption, a piece of the field and the go button.
    int LeastWidth() const;

    std::string locationText;  // a copy of the field's text, after every change

  protected:
    void OnSize(Size client) override;
    void OnPaint(CDC& dc) override;
    const MessageMap& GetMessageMap() const override;

  private:
    void OnLocationChanged();
    void OnEnter();
    void OnEscape();

    CFrameWnd* owner = nullptr;
    Rect fieldPlace;  // in the bar, as the template has it
    CBitmapButton goButton;
    std::string shownLocation;  // as last set
};

}  // namespace permora
