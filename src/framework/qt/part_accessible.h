// A part of a control that is no control itself, for assistive technology: a row, a tab.
#pragma once

#include <QAccessible>
#include <QWidget>

namespace permora::qt {

// A part that can be pressed. Its control destroys it before itself.
class PartAccessible : public QAccessibleInterface, public QAccessibleActionInterface {
  public:
    PartAccessible(QWidget& partOf, QAccessible::Role as) : control(partOf), ownRole(as) {}

    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return control.window()->windowHandle(); }
    QAccessibleInterface* parent() const override { return QAccessible::queryAccessibleInterface(&control); }
    QAccessibleInterface* child(int /*index*/) const override { return nullptr; }
    QAccessibleInterface* childAt(int /*x*/, int /*y*/) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface* /*child*/) const override { return -1; }
    QAccessible::Role role() const override { return ownRole; }
    void setText(QAccessible::Text /*kind*/, const QString& /*text*/) override {}
    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }
    QStringList keyBindingsForAction(const QString& /*name*/) const override { return {}; }

  private:
    QWidget& control;
    QAccessible::Role ownRole;
};

}  // namespace permora::qt
