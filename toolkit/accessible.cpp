#include "toolkit/accessible.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSplitter>

#include "toolkit/accessible_parts.h"
#include "toolkit/click_label.h"
#include "toolkit/picture_bar.h"

namespace toolkit {
namespace {

constexpr char kRole[] = "accessibleRole";

QAccessibleInterface* MakePart(const QString&, QObject* object) {
    if (auto* box = qobject_cast<QComboBox*>(object)) return new ComboBoxPart(box);
    if (auto* button = qobject_cast<QPushButton*>(object)) return new ButtonPart(button);
    if (auto* box = qobject_cast<QCheckBox*>(object)) return new ButtonPart(box);
    if (auto* label = qobject_cast<ClickLabel*>(object))
        return new PressablePart(label, QAccessible::Link, QAccessibleActionInterface::pressAction(),
                                 Qt::Key_Return);
    auto* bar = qobject_cast<PictureBox*>(object);
    if (bar && bar->HasFilledPart()) return new ProgressPart(bar);
    const QVariant role = object->property(kRole);
    if (!role.isValid() || !object->isWidgetType()) return nullptr;
    return new Part(static_cast<QWidget*>(object), static_cast<QAccessible::Role>(role.toInt()));
}

}  // namespace

// The last one that is installed is the first to be asked.
void InstallParts() {
    static const bool installed = [] {
        QAccessible::installFactory(&MakePart);
        return true;
    }();
    static_cast<void>(installed);
}

void RenewPart(QWidget& widget) {
    QAccessibleInterface* const part = QAccessible::queryAccessibleInterface(&widget);
    if (part) QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(part));
}

void SetAccessibleRole(QWidget& widget, QAccessible::Role role) {
    widget.setProperty(kRole, int{role});
    RenewPart(widget);
}

void MakeDecorative(QLabel& picture) {
    SetAccessibleRole(picture, QAccessible::Whitespace);
}

void NameInnerParts(QWidget& window) {
    for (QComboBox* box : window.findChildren<QComboBox*>()) {
        const QString name = QAccessible::queryAccessibleInterface(box)->text(QAccessible::Name);
        if (box->lineEdit()) box->lineEdit()->setAccessibleName(name);
        box->view()->setAccessibleName(name);
    }
    for (QSplitterHandle* handle : window.findChildren<QSplitterHandle*>()) {
        SetAccessibleRole(*handle, QAccessible::Separator);
        handle->setAccessibleName(handle->splitter()->accessibleName());
    }
}

}  // namespace toolkit
