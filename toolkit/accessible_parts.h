#pragma once
// The controls as assistive programs see them. UI thread only; for toolkit/accessible.cpp.

#include <QAbstractButton>
#include <QAccessibleWidget>
#include <QComboBox>

namespace toolkit {

class ClickLabel;
class PictureBox;

/// Any widget, in a role that has been given to it.
class Part : public QAccessibleWidget {
 public:
    using QAccessibleWidget::QAccessibleWidget;
    QString text(QAccessible::Text kind) const override;
};

/// Has one action, which comes to the widget as a key.
class PressablePart : public Part {
 public:
    PressablePart(QWidget* widget, QAccessible::Role role, QString action, Qt::Key key);
    QStringList actionNames() const override;
    void doAction(const QString& action) override;

 private:
    const QString action_;
    const Qt::Key key_;
};

class ButtonPart : public PressablePart {
 public:
    explicit ButtonPart(QAbstractButton* button);
    QString text(QAccessible::Text kind) const override;
    QAccessible::State state() const override;
    QStringList keyBindingsForAction(const QString& action) const override;

 private:
    const QAbstractButton& Button() const { return *static_cast<QAbstractButton*>(widget()); }
};

/// Has its list as a child, and its field where it has one.
class ComboBoxPart : public PressablePart {
 public:
    explicit ComboBoxPart(QComboBox* box);
    QString text(QAccessible::Text kind) const override;
    QAccessible::State state() const override;
    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;

 private:
    QComboBox& Box() const { return *static_cast<QComboBox*>(widget()); }
};

/// The empty box as a progress bar: how much of it is filled, in per cent. What is painted on it is no part.
class ProgressPart : public Part, public QAccessibleValueInterface {
 public:
    explicit ProgressPart(PictureBox* bar);
    QString text(QAccessible::Text kind) const override;
    void* interface_cast(QAccessible::InterfaceType type) override;
    int childCount() const override { return 0; }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }

    QVariant currentValue() const override;
    void setCurrentValue(const QVariant&) override {}
    QVariant minimumValue() const override { return 0; }
    QVariant maximumValue() const override { return 100; }
    QVariant minimumStepSize() const override { return 1; }
};

}  // namespace toolkit
