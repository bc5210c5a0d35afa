#include "framework/qt/dialog_accessible.h"

#include <QAccessibleWidget>
#include <QDialog>
#include <QFrame>

namespace permora::qt {
namespace {

class DialogAccessible : public QAccessibleWidget {
  public:
    explicit DialogAccessible(QDialog& dialog) : QAccessibleWidget(&dialog, QAccessible::Dialog) {}
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.modal = widget()->isModal();
        return state;
    }
};

// The toolkit asks for the class of an object and then for its base classes. Message boxes have been found by
// then.
QAccessibleInterface* MakeDialogAccessible(const QString& className, QObject* object) {
    if (className == QLatin1String("QDialog")) return new DialogAccessible(*qobject_cast<QDialog*>(object));
    // A line or an edge, which would be read as a window without a name.
    const bool isEdge =
        className == QLatin1String("QFrame") && className == QLatin1String(object->metaObject()->className());
    return isEdge ? new QAccessibleWidget(qobject_cast<QFrame*>(object), QAccessible::Client) : nullptr;
}

}  // namespace

void InstallDialogAccessibility() {
    QAccessible::installFactory(MakeDialogAccessible);  // the toolkit keeps a function once
}

}  // namespace permora::qt
