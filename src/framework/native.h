// The seam between the framework's shared half and a back end: what a back end must make.
//
// A window of the contract (CWnd) owns one NativeWindow while it has a window. The shared half calls the
// virtual functions; the back end reports events through the protected ones. Everything runs on the
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
    virtual Rect RectInParent() const = 0;    // of a child window, in the parent's client area
    virtual void Move(const Rect& rect) = 0;  // as CWnd::MoveWindow
    // The size at which no text is cut.
    virtual Size PreferredSize() const = 0;
    // The name for assistive technology, where the window's text is not suitable.
    virtual void SetAccessibleName(const std::string& name) = 0;
    virtual void SetToolTip(const std::string& /*text*/) {}  // controls alone show one

    DWORD style = 0;  // kept by the shared half

  protected:
    // The back end's reports: each passes the event on to the window's virtual function.
    void ReportSize(Size client) { target.OnSize(client); }
    void ReportPaint(CDC& dc) { target.OnPaint(dc); }
    Handled ReportMouseMove(Point client) { return target.OnMouseMove(client); }
    Handled ReportLeftButtonDown(Point client) { return target.OnLButtonDown(client); }
    void ReportFocus() { target.OnSetFocus(); }
    // Sends `notification`, with the window's id, to the parent. True: a handler took it.
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
    kPageView,
    kTreeView,
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

// Push buttons, check boxes, radio buttons, bitmap buttons. Reports kClicked only for clicks of the user.
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
    virtual void SelectStart(const std::string& start) = 0;
};

class NativeProgressBar : public NativeWindow {
  public:
    using NativeWindow::NativeWindow;
    virtual void SetPosition(int percent) = 0;
};

// Reports kSelectionChanged only for choices of the user.
class NativeComboBox : public NativeWindow {
  public:
    using NativeWindow::NativeWindow;
    virtual int AddString(const std::string& text) = 0;
    virtual int Count() const = 0;
    virtual int Selection() const = 0;
    virtual void Select(int index) = 0;
};

// The row of tabs of a sheet, with the frame around its pages. Reports kSelectionChanged only for choices of
// the user.
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

// Receives keys and the close box of a top-level dialog window. Implemented by the shared half.
class DialogKeys {
  public:
    virtual ~DialogKeys() = default;
    virtual void OnEnterKey() = 0;  // no control used it
    virtual void OnEscapeKeyOrCloseBox() = 0;
    virtual bool OnNextPageKey(int /*direction*/) { return false; }  // Ctrl+Tab, Ctrl+PageDown: 1; back: -1
    virtual void OnHelpKey() = 0;                                    // F1
};

// Whether the user may enlarge a window.
enum class Sizing { kFixed, kMayGrow };

// A top-level window, with a modal loop or beside the others.
class NativeDialog : public NativeWindow {
  public:
    using NativeWindow::NativeWindow;
    // The size of the client area; with kMayGrow the first, and the least unless the screen is smaller.
    virtual void SetClientSize(Size size, Sizing sizing) = 0;
    // To `client`, as far as the screen allows it; never smaller than the least.
    virtual void Enlarge(Size client) = 0;
    // The tab order. The controls may be grandchildren.
    virtual void SetTabOrder(std::span<CWnd* const> controls) = 0;
    virtual void RunModal() = 0;  // centres on the owner, shows, and processes events until EndModal
    virtual void EndModal() = 0;  // may come before RunModal processes events
    // Shows the window beside the active one, or brings it to the front, and gives it the keyboard. It takes
    // input also while another window is modal.
    virtual void ShowBeside() = 0;
};

// ---- Made by the back end. Parents must have a window. ----

// `templateId` names the window for tests and automation.
std::unique_ptr<NativeDialog> MakeNativeDialog(CWnd& window, CWnd* owner, DWORD style,
                                               unsigned int templateId, DialogKeys& keys);
// A window without frame that holds the controls of a template: a sheet's page, a dialog bar.
std::unique_ptr<NativeWindow> MakeNativePane(CWnd& window, CWnd& parent, unsigned int templateId);
std::unique_ptr<NativeWindow> MakeNativeControl(CWnd& window, CWnd& parent, const ControlSpec& spec);
// Makes `buttons` exclude each other. They share one place in the tab order; the arrow keys move between
// them.
void GroupRadioButtons(std::span<CWnd* const> buttons);
// `label`'s mnemonic leads to `target`.
void SetLabelTarget(CWnd& label, CWnd& target);

// Four horizontal dialog units and eight vertical ones, as the dialog font defines them: the average width of
// the letters A to Z and a to z, and the height of a line. See "Dialog base units" in the SDK's
// documentation.
Size DialogBaseUnits();

// Starts the toolkit on this thread and runs `start`. If `start` returns true, processes events until
// StopToolkit. Runs `finish` in either case. Returns the exit code of the process.
int RunToolkit(int argc, char** argv, const std::function<bool()>& start,
               const std::function<void()>& finish);
void StopToolkit();
// True while a modal window or a message box is open. User-interface thread.
bool IsModalWindowOpen();

// Runs `work` on the user-interface thread after `milliseconds`. User-interface thread.
void PostLater(int milliseconds, std::function<void()> work);
// Runs the work that worker threads have posted to this thread, the user-interface thread.
void ServeWorkers();
// Calls `hasEnded`, which may take a moment, until it returns true. Between the calls, windows are painted,
// input is dropped, and the pointer shows that the program is busy. A modal window that opens meanwhile
// accepts input as usual.
void ServeBusyWindowsUntil(const std::function<bool()>& hasEnded);
// Serves all windows, with their input, until `hasEnded`, which is called often and returns at once, returns
// true. Returns sooner when the program is to end.
void ServeWindowsUntil(const std::function<bool()>& hasEnded);

// Icon or bitmap resource `id` with all its sizes; null when there is none or it cannot be read.
std::shared_ptr<const NativeImage> LoadNativeIcon(unsigned int id);
std::shared_ptr<const NativeImage> LoadNativeBitmap(unsigned int id);
// A picture of one size: rows from the top, each pixel in the bytes blue, green, red, alpha (not
// premultiplied), as many as the size needs.
std::shared_ptr<const NativeImage> MakeNativeImage(Size size, std::span<const std::uint8_t> pixels);

}  // namespace permora
