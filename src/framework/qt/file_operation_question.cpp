#include "framework/qt/file_operation_question.h"

#include <QCheckBox>
#include <QDateTime>
#include <QDialog>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>
#include <array>

#include "framework/file_operation_ids.h"
#include "framework/file_operation_texts.h"
#include "framework/qt/elided_label.h"
#include "framework/qt/widget.h"
#include "platform/api/messages.h"
#include "platform/file_operation_pace.h"

namespace permora::qt {
namespace {

constexpr int kLettersInRow = 64;

// There are two choices at most.
constexpr std::array<unsigned int, 2> kChoiceIds = {IDYES, IDNO};

// In the user's time zone and format; empty when unknown.
QString LocalTimeText(const FILETIME& time) {
    constexpr qint64 kTicksPerMillisecond = 10'000;
    constexpr qint64 kMillisecondsTo1970 = 11'644'473'600'000;
    const qint64 ticks = static_cast<qint64>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
    if (ticks <= 0) return {};
    const auto moment = QDateTime::fromMSecsSinceEpoch(ticks / kTicksPerMillisecond - kMillisecondsTo1970);
    return QLocale().toString(moment, QLocale::ShortFormat);
}

class QuestionWindow : public QDialog {
  public:
    QuestionWindow(QWidget* parent, const std::string& title, const FileOperationQuestion& question)
        : QDialog(parent), texts(TextsOf(question)) {
        SetIdentity(*this, "dialog", kFileQuestionWindowId);
        SetTitle(*this, title);
        setWindowModality(Qt::ApplicationModal);
        setAccessibleDescription(ToQt(texts.text));
        auto* layout = new QGridLayout(this);
        layout->setSizeConstraint(QLayout::SetFixedSize);
        layout->addWidget(MakeIcon(), 0, 0, Qt::AlignTop);
        column = new QVBoxLayout;
        layout->addLayout(column, 0, 1);
        AddText(texts.text, kFileQuestionTextId);
        if (!texts.targetCaption.empty()) {
            AddObject(texts.targetCaption, question.target, kFileQuestionTargetId);
            AddObject(texts.sourceCaption, question.source, kFileQuestionSourceId);
        }
        if (!texts.more.empty()) AddText(texts.more, kFileQuestionMoreId);
        if (!texts.forAll.empty()) AddForAll();
        layout->addWidget(MakeButtons(), 1, 0, 1, 2);
    }

    FileOperationAnswer Answer() const { return answer; }

  protected:
    // As in message boxes, the underlined letters work without Alt.
    void keyPressEvent(QKeyEvent* event) override {
        if ((event->modifiers() & (Qt::AltModifier | Qt::ControlModifier | Qt::MetaModifier)) == 0) {
            for (auto* button : findChildren<QAbstractButton*>()) {
                const QKeySequence shortcut = button->shortcut();
                if (shortcut.isEmpty() || shortcut[0].key() != event->key()) continue;
                button->animateClick();
                return;
            }
        }
        QDialog::keyPressEvent(event);
    }

  private:
    QLabel* MakeIcon() {
        auto* icon = new QLabel(this);
        const auto kind = texts.isWarning ? QStyle::SP_MessageBoxWarning : QStyle::SP_MessageBoxQuestion;
        const int size = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
        icon->setPixmap(
            style()->standardIcon(kind, nullptr, this).pixmap(QSize(size, size), devicePixelRatio()));
        icon->setAccessibleName(texts.isWarning ? QStringLiteral("Warning") : QStringLiteral("Question"));
        return icon;
    }

    void AddText(const std::string& text, unsigned int id) {
        auto* label = new QLabel(this);
        label->setTextFormat(Qt::PlainText);  // names of files must not be taken for markup
        label->setText(BreakableText(text));
        label->setWordWrap(true);
        label->setFixedWidth(fontMetrics().averageCharWidth() * kLettersInRow);
        SetIdentity(*label, "control", id);
        column->addWidget(label);
    }

    // Long names have no blanks at which a line could end.
    static QString BreakableText(const std::string& text) {
        constexpr qsizetype kLongestPiece = 48;
        QString broken;
        qsizetype piece = 0;
        for (const QChar letter : ToQt(text)) {
            broken += letter;
            piece = letter.isSpace() ? 0 : piece + 1;
            if (piece >= kLongestPiece && !letter.isHighSurrogate()) {
                broken += QChar(0x200B);  // a space of no width
                piece = 0;
            }
        }
        return broken;
    }

    void AddObject(const std::string& caption, const FileOperationObject& object, unsigned int id) {
        QString facts;
        if (!object.isFolder) facts = ToQt(ByteText(object.size));
        const QString time = LocalTimeText(object.lastWrite);
        if (!time.isEmpty()) facts += (facts.isEmpty() ? "" : ", ") + QStringLiteral("changed ") + time;
        auto* heading = new QLabel(ToQt(caption), this);
        auto* path = new ElidedLabel(kLettersInRow, this);
        path->Show(ToQt(object.path));
        auto* details = new QLabel(facts, this);
        SetIdentity(*details, "control", id);
        QFont bold = heading->font();
        bold.setBold(true);
        heading->setFont(bold);
        column->addSpacing(fontMetrics().height() / 2);
        for (QWidget* each :
             {static_cast<QWidget*>(heading), static_cast<QWidget*>(path), static_cast<QWidget*>(details)})
            column->addWidget(each);
    }

    void AddForAll() {
        forAll = new QCheckBox(ToQt(texts.forAll), this);
        SetIdentity(*forAll, "control", kFileQuestionForAllId);
        column->addWidget(forAll);
    }

    QDialogButtonBox* MakeButtons() {
        auto* buttons = new QDialogButtonBox(this);
        for (std::size_t i = 0; i < texts.choices.size(); ++i) {
            const FileQuestionChoice& choice = texts.choices.at(i);
            auto* button = buttons->addButton(ToQt(choice.text), QDialogButtonBox::ActionRole);
            // Skipping may be the only choice.
            const bool passesOver = choice.answer == FileOperationAnswer::kNo;
            SetIdentity(*button, "control", passesOver ? IDNO : kChoiceIds.at(i));
            QObject::connect(button, &QPushButton::clicked, this, [this, &choice] { Choose(choice); });
        }
        auto* cancel = buttons->addButton(QStringLiteral("Cancel"), QDialogButtonBox::RejectRole);
        SetIdentity(*cancel, "control", IDCANCEL);
        // Enter on an unread question must change nothing.
        cancel->setDefault(true);
        cancel->setFocus();
        QObject::connect(buttons, &QDialogButtonBox::rejected, this, [this] { reject(); });
        return buttons;
    }

    void Choose(const FileQuestionChoice& choice) {
        answer = forAll != nullptr && forAll->isChecked() ? choice.answerForAll : choice.answer;
        accept();
    }

    FileQuestionTexts texts;
    FileOperationAnswer answer = FileOperationAnswer::kCancel;
    QVBoxLayout* column = nullptr;
    QCheckBox* forAll = nullptr;
};

}  // namespace

FileOperationAnswer AskInWindow(QWidget* parent, const std::string& title,
                                const FileOperationQuestion& question) {
    QuestionWindow window(parent, title, question);
    window.exec();
    return window.Answer();
}

}  // namespace permora::qt
