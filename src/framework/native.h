// The seam between the framework's shared half and a back end: what a back end must make.
//
// A window of the contract (CWnd) owns one NativeWindow while it has a window. The shared half asks through
// the virtual functions, the back end reports through the protected ones. All of it runs on the
// user-interface thread unless a declaration says otherwise. Geometry is in logical pixels.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "framework/controls.h"
#include "framework/device_context.h"
#include "framework/geometry.h"
#include "framework/images.h"
#include "framework/window.h"

namespace permora {

// What every window needs.
class NativeWindow {
  public:
    explicit NativeWindow(CWnd& contractWindow) : target(contractWindow) {}
    NativeWindow(const NativeWindow&) = delete;
    NativeWindow& operator=(const NativeWindow&) = delete;
    virtual ~NativeWindow() = default;

    CWnd& Window() const { return target; }

    virtual HWND Handle() const = 0;
    virtual void SetText(const std::string& text) = 0;
    virtual std::string Text() const = 0;
    virtual void SetEnabled(bool enabled) = 0;
    virtual void SetVisible(bool visible) = 0;
    // `style` has just changed from `before`, in bits other than WS_VISIBLE and WS_DISABLED.
    virtual void StyleChanged(DWORD /*before*/) {}
    virtual void Redraw() = 0;      // paints before it returns
    virtual void Invalidate() = 0;  // paints soon
    virtual void SetFocus() = 0;
    virtual bool HasFocus() const = 0;
    virtual Rect ScreenRect() const = 0;
    virtual Rect ClientRect() const = 0;
    virtual void Move(const Rect& rect) = 0;  // as CWnd::MoveWindow
    // The size at which no text is cut.
    virtual Size PreferredSize() const = 0;
    // What assistive technology calls the window where its own text does not do.
    virtual void SetAccessibleName(const std::string& name) = 0;

    DWORD style = 0;  // kept by the shared half

  protected:
    // The back end's reports: each passes the event on to the window's virtual function.
    void ReportSize(Size client) { target.OnSize(client); }
    void ReportPaint(CDC& dc) { target.OnPaint(dc); }
    Handled ReportMouseMove(Point client) { return target.OnMouseMove(client); }
    Handled ReportLeftButtonDown(Point client) { return target.OnLButtonDown(client); }
    void ReportFocus() { target.OnSetFocus(); }
    // Offers `notification` (its id is filled in here) to the parent; true when a handler took it.
    bool ReportNotification(Notification& notification);
    bool ReportNotification(Notify code);

  private:
    CWnd& target;
};

enum class ControlKind {
    kPushButton,
    kCheckBox,
    kRadioButton,
    kGroupBox,
    kBitmapButton,
    kEdit,
    kStaticText,
    kStaticPicture,
    kEtchedFrame,
    kComboBox,
    kProgressBar,
    kListView,
    kTabs,
};

// One control to be made.
struct ControlSpec {
    ControlKind kind = ControlKind::kStaticText;
    unsigned int id = 0;
    DWORD style = 0;
    std::string text{};
    unsigned int pictureId = 0;  // kStaticPicture: icon (SS_ICON) or bitmap (SS_BITMAP) resource
    Rect rect{};                 // in the parent's client area
};

// Push buttons, check boxes, radio buttons, bitmap buttons. Reports kClicked for the user's clicks only.
class NativeButton : public NativeWindow {
  public:
    using NativeWindow::NativeWindow;
    virtual CheckState Check() const = 0;
    virtual void SetCheck(CheckState state) = 0;  // that box or button alone
    virtual void Click() = 0;                     // as the user does; nothing while disabled
    virtual void SetPictures(const CIcon& normal, const CIcon& pressed, const CIcon& focused,
                             const CIcon& disabled) = 0;
};

// Reports kTextChanged for every change.
class NativeEdit : public NativeWindow {
  public:
    using NativeWindow::NativeWindow;
    virtual void SelectAll() = 0;
};

class NativeProgressBar : public NativeWindow {
  public:
    using NativeWindow::NativeWindow;
    virtual void SetPosition(int percent) = 0;
};

// Reports kSelectionChanged for the user's choices only.
class NativeComboBox : public NativeWindow {
  public:
    using NativeWindow::NativeWindow;
    virtual int AddString(const std::string& text) = 0;
    virtual int Count() const = 0;
    virtual int Selection() const = 0;
    virtual void Select(int index) = 0;
};

// The row of tabs of a sheet, with the frame around its pages. Reports kSelectionChanged for the user's
// choices only.
class NativeTabs : public NativeWindow {
  public:
    using NativeWindow::NativeWindow;
    virtual void InsertTab(int index, const std::string& text) = 0;
    virtual void RemoveTab(int index) = 0;
    virtual int Selection() const = 0;
    virtual void Select(int index) = 0;
    virtual Size SizeAround(Size page) const = 0;  // of the whole control
    virtual Rect PageArea() const = 0;             // in the parent's client area
};

// What a top-level dialog window hears from the keyboard and its title bar. Implemented by the shared half.
class DialogKeys {
  public:
    virtual ~DialogKeys() = default;
    virtual void OnEnterKey() = 0;  // no control used it
    virtual void OnEscapeKeyOrCloseBox() = 0;
    virtual bool OnNextPageKey(int /*direction*/) { return false; }  // Ctrl+Tab, Ctrl+PageDown: 1; back: -1
};

// A top-level window of fixed size that is served by a modal loop.
class NativeDialog : public NativeWindow {
  public:
    using NativeWindow::NativeWindow;
    virtual void SetClientSize(Size size) = 0;
    // The keyboard's order through controls, which may be grandchildren.
    virtual void SetTabOrder(std::span<CWnd* const> controls) = 0;
    virtual void RunModal() = 0;  // centres on the owner, shows, and serves events until EndModal
    virtual void EndModal() = 0;  // also before RunModal has begun to serve
};

// ---- What the back end makes. Parents must have a window. ----

// `templateId` names the window for tests and automation.
std::unique_ptr<NativeDialog> MakeNativeDialog(CWnd& window, CWnd* owner, DWORD style,
                                               unsigned int templateId, DialogKeys& keys);
// A window without frame that holds the controls of a template: a sheet's page, a dialog bar.
std::unique_ptr<NativeWindow> MakeNativePane(CWnd& window, CWnd& parent, unsigned int templateId);
std::unique_ptr<NativeWindow> MakeNativeControl(CWnd& window, CWnd& parent, const ControlSpec& spec);
// Makes `buttons` exclude each other; they share one place in the tab order and the arrow keys move in them.
void GroupRadioButtons(std::span<CWnd* const> buttons);
// `label`'s mnemonic leads to `target`.
void SetLabelTarget(CWnd& label, CWnd& target);

// Four horizontal dialog units and eight vertical ones, as the dialog font defines them: the average width of
// the letters A to Z and a to z, and the height of a line. See "Dialog base units" in the SDK's
// documentation.
Size DialogBaseUnits();

// Starts the toolkit on this thread, runs `start` and, when that is true, serves events until StopToolkit;
// runs `finish` in either case. The process's exit code.
int RunToolkit(int argc, char** argv, const std::function<bool()>& start,
               const std::function<void()>& finish);
void StopToolkit();
// Whether a modal window is open, message boxes included. User-interface thread.
bool IsModalWindowOpen();

// Runs `work` on the user-interface thread after `milliseconds`. User-interface thread.
void PostLater(int milliseconds, std::function<void()> work);
// Runs the calls of worker threads that wait for this thread, the user-interface thread, or were posted to
// it.
void ServeWorkers();
// Asks `hasEnded`, which may take a moment to answer, until it says so. In between all windows are served,
// but nothing that the user does is: the pointer says that the program is busy. A modal window that opens
// meanwhile is served as ever.
void ServeBusyWindowsUntil(const std::function<bool()>& hasEnded);

// Icon or bitmap resource `id` with all its sizes; null when there is none or it cannot be read.
std::shared_ptr<const NativeImage> LoadNativeIcon(unsigned int id);
std::shared_ptr<const NativeImage> LoadNativeBitmap(unsigned int id);
// A picture of one size: rows from the top, each pixel in the bytes blue, green, red, alpha (not
// premultiplied), as many as the size asks for.
std::shared_ptr<const NativeImage> MakeNativeImage(Size size, std::span<const std::uint8_t> pixels);

}  // namespace permora
