// AddrBar: where the browser is, and where the user types where it should go.
#pragma once

#include <string>

#include "framework/bars.h"
#include "framework/controls.h"

namespace permora {

class AddrBar : public CDialogBar {
  public:
    // From dialog resource `templateId`, with the go button beside its field. The button and the Enter key
    // reach the frame as command 152.
    bool Create(CFrameWnd& frame, unsigned int templateId) override;

    // What the field shows.
    void SetLocationText(const std::string& text);

    // Fits the bar into a frame that stands at `frame` on the screen.
    void Layout(const Rect& frame);

    std::string locationText;  // a copy of the field's text, after every change

  protected:
    void OnPaint(CDC& dc) override;
    const MessageMap& GetMessageMap() const override;

  private:
    void OnLocationChanged();
    void OnEnter();

    CBitmapButton goButton;
};

}  // namespace permora
