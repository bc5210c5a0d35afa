#include "framework/qt/file_operation_window.h"

#include <QCloseEvent>
#include <QDialogButtonBox>

#include "framework/file_operation_ids.h"
#include "framework/file_operation_texts.h"
#include "framework/qt/widget.h"
#include "platform/api/messages.h"

namespace permora::qt {
namespace {

constexpr int kLettersShown = 64;
constexpr int kBarSteps = 1000;

}  // namespace

FileOperationWindow::FileOperationWindow(QWidget* parent, const std::string& title,
                                         std::function<void()> cancel)
    : QDialog(parent), onCancel(std::move(cancel)) {
    SetIdentity(*this, "dialog", kProgressWindowId);
    SetTitle(*this, title);
    setWindowModality(Qt::ApplicationModal);

    rows = new QFormLayout(this);
    rows->setSizeConstraint(QLayout::SetFixedSize);
    const auto add = [this](const char* caption, unsigned int id) {
        auto* label = new ElidedLabel(kLettersShown, this, QLatin1String(caption));
        SetIdentity(*label, "control", id);
        rows->addRow(QLatin1String(caption), label);
        return label;
    };
    task = new ElidedLabel(kLettersShown, this);
    SetIdentity(*task, "control", kProgressTaskId);
    rows->addRow(task);
    from = add("From:", kProgressFromId);
    to = add("To:", kProgressToId);
    bar = new QProgressBar(this);
    SetIdentity(*bar, "control", kProgressBarId);
    bar->setAccessibleName(QStringLiteral("Progress"));
    bar->setRange(0, 0);
    rows->addRow(bar);
    amount = add("Done:", kProgressAmountId);
    timeLeft = add("Time left:", kProgressTimeLeftId);

    auto* buttons = new QDialogButtonBox(this);
    cancelButton = buttons->addButton(QStringLiteral("&Cancel"), QDialogButtonBox::RejectRole);
    SetIdentity(*cancelButton, "control", IDCANCEL);
    rows->addRow(buttons);
    QObject::connect(buttons, &QDialogButtonBox::rejected, this, [this] { reject(); });
}

void FileOperationWindow::Display(const FileOperationProgress& progress, const FileOperationPace& pace) {
    if (!isCancelled) task->Show(ToQt(OperationText(progress.kind) + " \"" + progress.name + '"'));
    from->Show(ToQt(progress.fromFolder));
    to->Show(ToQt(progress.toFolder));
    rows->setRowVisible(to, !progress.toFolder.empty());  // what is deleted goes nowhere
    amount->Show(ToQt(AmountText(progress)));
    timeLeft->Show(ToQt(TimeLeftText(pace.TimeLeft())));
    const auto fraction = pace.Fraction();
    bar->setRange(0, fraction ? kBarSteps : 0);
    if (fraction) bar->setValue(static_cast<int>(*fraction * kBarSteps));
}

void FileOperationWindow::reject() {
    if (isCancelled) return;
    isCancelled = true;
    task->Show(QStringLiteral("Cancelling..."));
    cancelButton->setEnabled(false);
    onCancel();
}

void FileOperationWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    reject();
}

}  // namespace permora::qt
