#include "framework/qt/page_view.h"

#include <QApplication>
#include <QScrollBar>
#include <QShortcut>
#include <QTextBrowser>
#include <QTextDocument>
#include <QUrl>

#include "framework/qt/readable_colour.h"
#include "framework/qt/widget.h"

namespace permora::qt {
namespace {

constexpr char kScheme[] = "page";
constexpr int kEdge = 2;  // pixels

QUrl UrlOf(const QString& place) {
    return QUrl(QLatin1String(kScheme) + QLatin1String(":/") + place);
}

QString NameOf(const QUrl& url) {
    return url.scheme() == QLatin1String(kScheme) ? url.path().mid(1) : QString();
}

// The desktop's link colour is not always made for its background.
QColor LinkColour(const QPalette& palette) {
    return Readable(palette.color(QPalette::Link), palette.color(QPalette::Base));
}

// Between the text's colour and the background's.
QColor Tint(const QPalette& palette, double textShare) {
    return Mixed(palette.color(QPalette::Text), palette.color(QPalette::Base), textShare);
}

// The classes are those of the help's own style sheet.
QString SheetFor(const QPalette& palette) {
    constexpr double kTint = 0.08;
    return QStringLiteral(
               "a { color: %1; }"
               "h1 { font-size: x-large; margin-top: 4px; }"
               "h2 { font-size: large; margin-top: 18px; }"
               "h3 { margin-top: 12px; }"
               "dt { font-weight: 600; margin-top: 6px; }"
               "dd { margin-left: 16px; }"
               "td, th { padding: 2px 12px 2px 0px; text-align: left; }"
               "code, kbd, .path { font-family: monospace; }"
               "kbd, .note, .warning { background-color: %2; }")
        .arg(LinkColour(palette).name(), Tint(palette, kTint).name());
}

class PageBrowser : public QTextBrowser {
  public:
    PageBrowser(QWidget* parent, CPageView& shown) : QTextBrowser(parent), view(shown) {
        setFrameStyle(static_cast<int>(QFrame::Box) | static_cast<int>(QFrame::Plain));
        setLineWidth(kEdge);
        document()->setDocumentMargin(10);
        setUndoRedoEnabled(false);
        ShowFocus();
        UseColours();
    }

    bool HasPage(const QString& name) const {
        return !name.isEmpty() && view.onRead && view.onRead(FromQt(name)).has_value();
    }

    // Only pages are read. The style sheet is the control's own.
    QVariant loadResource(int type, const QUrl& url) override {
        const QString name = NameOf(url);
        if (type != QTextDocument::HtmlResource || name.isEmpty() || !view.onRead) return QByteArray();
        const auto text = view.onRead(FromQt(name));
        return text ? QVariant(ToQt(*text)) : QVariant(QByteArray());
    }

  protected:
    // Before anything is loaded: what is no page would take the place of the one that is read.
    void doSetSource(const QUrl& url, QTextDocument::ResourceType type) override {
        if (url.scheme() != QLatin1String(kScheme)) {
            if (view.onAddress) view.onAddress(FromQt(url.toString()));
        } else if (HasPage(NameOf(url))) {
            QTextBrowser::doSetSource(url, type);
        }
    }
    void changeEvent(QEvent* event) override {
        QTextBrowser::changeEvent(event);
        if (event->type() != QEvent::PaletteChange || isChangingColours) return;
        ShowFocus();
        UseColours();
    }
    void focusInEvent(QFocusEvent* event) override {
        QTextBrowser::focusInEvent(event);
        ShowFocus();
    }
    void focusOutEvent(QFocusEvent* event) override {
        QTextBrowser::focusOutEvent(event);
        ShowFocus();
    }

  private:
    void UseColours() {
        document()->setDefaultStyleSheet(SheetFor(palette()));
        if (source().isEmpty()) return;
        const int place = verticalScrollBar()->value();
        reload();
        verticalScrollBar()->setValue(place);
    }
    // The edge has the colour of what is selected.
    void ShowFocus() {
        const QPalette desktop = QApplication::palette(this);
        QPalette own;
        own.setColor(QPalette::WindowText,
                     hasFocus() ? desktop.color(QPalette::Highlight) : Tint(desktop, 0.35));
        isChangingColours = true;
        setPalette(own);
        isChangingColours = false;
    }

    CPageView& view;
    bool isChangingColours = false;
};

class PageWindow final : public WidgetWindow<NativePage, PageBrowser> {
  public:
    PageWindow(CPageView& window, std::unique_ptr<PageBrowser> made, const ControlSpec& spec)
        : WidgetWindow(window, std::move(made)), view(window) {
        ApplyTabStop(Widget(), spec.style);
        QObject::connect(&Widget(), &QTextBrowser::historyChanged, &Widget(), [this] { Tell(); });
        QObject::connect(&Widget(), &QTextBrowser::sourceChanged, &Widget(), [this] { Tell(); });
        // Wherever in the window the focus is.
        AddKey(QKeySequence(Qt::ALT | Qt::Key_Left), [this] { GoBack(); });
        AddKey(QKeySequence(Qt::ALT | Qt::Key_Right), [this] { GoForward(); });
    }
    std::string Text() const override { return FromQt(Widget().toPlainText()); }
    bool Show(const std::string& place) override {
        const QUrl url = UrlOf(ToQt(place));
        if (!Widget().HasPage(NameOf(url))) return false;
        Widget().setSource(url);
        return true;
    }
    void GoBack() override { Widget().backward(); }
    void GoForward() override { Widget().forward(); }
    bool CanGoBack() const override { return Widget().isBackwardAvailable(); }
    bool CanGoForward() const override { return Widget().isForwardAvailable(); }

  private:
    void Tell() {
        if (view.onShown) view.onShown();
    }
    void AddKey(const QKeySequence& key, const std::function<void()>& action) {
        auto* shortcut = new QShortcut(key, &Widget());
        QObject::connect(shortcut, &QShortcut::activated, &Widget(), action);
    }

    CPageView& view;
};

}  // namespace

std::unique_ptr<NativeWindow> MakePageView(CPageView& window, CWnd& parent, const ControlSpec& spec) {
    return std::make_unique<PageWindow>(window, NewControl<PageBrowser>(parent, spec, window), spec);
}

}  // namespace permora::qt
