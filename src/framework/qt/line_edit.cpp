#include "framework/qt/line_edit.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPointer>
#include <memory>
#include <string_view>

#include "framework/qt/widget.h"
#include "platform/api/messages.h"

namespace permora::qt {
namespace {

constexpr qsizetype kMostText = qsizetype{1} << 20U;

enum class TextAnswer { kGiven, kNothing, kSilence };

// In the formats in which programs offer text.
TextAnswer AskForText(SelectionKind kind, QString& text) {
    for (const char* form : {"UTF8_STRING", "text/plain;charset=utf-8", "STRING"}) {
        const auto request = std::make_unique<SelectionRequest>(kind, form, kMostText);
        const SelectionRequest::State state = SelectionRequest::Await(request);
        if (state == SelectionRequest::State::kWaiting) return TextAnswer::kSilence;
        if (state == SelectionRequest::State::kRefused) continue;
        const bool isLatin = std::string_view(form) == "STRING";
        text = isLatin ? QString::fromLatin1(request->Bytes()) : QString::fromUtf8(request->Bytes());
        return TextAnswer::kGiven;
    }
    return TextAnswer::kNothing;
}

}  // namespace

bool LineEdit::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        const auto& key = static_cast<const QKeyEvent&>(*event);
        if (key.matches(QKeySequence::DeleteEndOfWord) || key.matches(QKeySequence::DeleteStartOfWord))
            event->accept();
    }
    return QLineEdit::event(event);
}

void LineEdit::keyPressEvent(QKeyEvent* event) {
    if (!event->matches(QKeySequence::Paste) || isReadOnly()) {
        QLineEdit::keyPressEvent(event);
        return;
    }
    // With this key, the toolkit pastes the selection.
    const bool takesMarked =
        event->key() == Qt::Key_Insert && event->modifiers().testFlag(Qt::ControlModifier);
    Paste(takesMarked ? SelectionKind::kPrimary : SelectionKind::kClipboard);
}

void LineEdit::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::MiddleButton || !HasSelections()) {
        QLineEdit::mouseReleaseEvent(event);
    } else if (!isReadOnly()) {
        deselect();
        Paste(SelectionKind::kPrimary);
    }
}

// The toolkit's own menu, except for the test whether there is something to paste.
void LineEdit::contextMenuEvent(QContextMenuEvent* event) {
    QMenu menu(this);
    const auto add = [&menu, this](const char* text, QKeySequence::StandardKey key, bool isEnabled,
                                   auto command) {
        QAction* action = menu.addAction(QString::fromLatin1(text));
        action->setShortcut(key);
        action->setEnabled(isEnabled);
        QObject::connect(action, &QAction::triggered, this, command);
    };
    const bool canWrite = !isReadOnly();
    const bool hasText = !text().isEmpty();
    if (canWrite) {
        add("&Undo", QKeySequence::Undo, isUndoAvailable(), &QLineEdit::undo);
        add("&Redo", QKeySequence::Redo, isRedoAvailable(), &QLineEdit::redo);
        menu.addSeparator();
        add("Cu&t", QKeySequence::Cut, hasSelectedText(), &QLineEdit::cut);
    }
    add("&Copy", QKeySequence::Copy, hasSelectedText(), &QLineEdit::copy);
    if (canWrite) {
        add("&Paste", QKeySequence::Paste, true, [this] { Paste(SelectionKind::kClipboard); });
        add("&Delete", QKeySequence::Delete, hasSelectedText(), &QLineEdit::del);
    }
    menu.addSeparator();
    add("Select &All", QKeySequence::SelectAll, hasText && selectedText() != text(), &QLineEdit::selectAll);
    menu.exec(event->globalPos());
}

void LineEdit::Paste(SelectionKind kind) {
    if (!HasSelections()) {
        paste();
        return;
    }
    const QPointer<LineEdit> self(this);
    QString text;
    const TextAnswer answer = AskForText(kind, text);
    if (self == nullptr) return;
    if (answer == TextAnswer::kGiven) insert(text);
    if (answer == TextAnswer::kSilence)
        MessageBoxA(HandleOf(*window()), "The program that the text is from does not answer.", "Clipboard",
                    MB_OK | MB_ICONERROR);
}

}  // namespace permora::qt
