#include "toolkit/accessible_parts.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTextDocumentFragment>
#include <utility>

#include "toolkit/picture_bar.h"

namespace toolkit {
namespace {

QString WithoutMnemonic(QString text) {
    const QString both = QStringLiteral("&&");
    return text.replace(both, QString(QChar::Null)).remove(u'&').replace(QChar::Null, u'&');
}

QString WithoutMarkup(const QString& text) {
    if (!Qt::mightBeRichText(text)) return text;
    return QTextDocumentFragment::fromHtml(text).toPlainText().remove(QChar(0x200b));
}

/// A dialog keeps the keys of the screen away from all but itself; what comes from a program does not meet
/// it.
bool IsBehindDialog(const QWidget& widget) {
    const QWidget* const dialog = QApplication::activeModalWidget();
    return dialog && widget.window() != dialog && !dialog->isAncestorOf(&widget);
}

// Later, and not in the middle of the other program's question: what it begins may hold an event loop.
void PostKey(QWidget& receiver, Qt::Key key) {
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease})
        QCoreApplication::postEvent(&receiver, new QKeyEvent(type, key, Qt::NoModifier));
}

}  // namespace

QString Part::text(QAccessible::Text kind) const {
    const auto* label = qobject_cast<const QLabel*>(widget());
    if (kind == QAccessible::Name && label && label->accessibleName().isEmpty())
        return label->buddy() ? WithoutMnemonic(label->text()) : label->text();
    const QString text = QAccessibleWidget::text(kind);
    if (kind != QAccessible::Description || !widget()->accessibleDescription().isEmpty()) return text;
    const QString plain = WithoutMarkup(text);
    return plain == this->text(QAccessible::Name) ? QString() : plain;
}

PressablePart::PressablePart(QWidget* widget, QAccessible::Role role, QString action, Qt::Key key)
    : Part(widget, role), action_(std::move(action)), key_(key) {}

QStringList PressablePart::actionNames() const {
    QStringList names = Part::actionNames();
    if (widget()->isEnabled()) names.prepend(action_);
    return names;
}

void PressablePart::doAction(const QString& action) {
    if (action != action_)
        Part::doAction(action);
    else if (widget()->isEnabled() && !IsBehindDialog(*widget()))
        PostKey(*widget(), key_);
}

ButtonPart::ButtonPart(QAbstractButton* button)
    : PressablePart(button, button->isCheckable() ? QAccessible::CheckBox : QAccessible::PushButton,
                    button->isCheckable() ? toggleAction() : pressAction(), Qt::Key_Space) {}

QString ButtonPart::text(QAccessible::Text kind) const {
    if (kind == QAccessible::Accelerator) return Button().shortcut().toString(QKeySequence::NativeText);
    if (kind == QAccessible::Name && Button().accessibleName().isEmpty())
        return WithoutMnemonic(Button().text());
    return PressablePart::text(kind);
}

QAccessible::State ButtonPart::state() const {
    QAccessible::State state = PressablePart::state();
    const auto* push = qobject_cast<const QPushButton*>(widget());
    state.pressed = Button().isDown();
    state.checkable = Button().isCheckable();
    state.checked = Button().isChecked();
    state.defaultButton = push && push->isDefault();
    return state;
}

QStringList ButtonPart::keyBindingsForAction(const QString& action) const {
    const QString key = text(QAccessible::Accelerator);
    const bool pressed = action == pressAction() || action == toggleAction();
    return pressed && !key.isEmpty() ? QStringList(key) : QStringList();
}

ComboBoxPart::ComboBoxPart(QComboBox* box)
    : PressablePart(box, QAccessible::ComboBox, showMenuAction(), Qt::Key_F4) {}

QString ComboBoxPart::text(QAccessible::Text kind) const {
    return kind == QAccessible::Value ? Box().currentText() : PressablePart::text(kind);
}

QAccessible::State ComboBoxPart::state() const {
    QAccessible::State state = PressablePart::state();
    state.hasPopup = state.expandable = true;
    state.expanded = Box().view()->isVisible();
    state.collapsed = !state.expanded;
    state.editable = Box().isEditable();
    return state;
}

int ComboBoxPart::childCount() const {
    return Box().isEditable() ? 2 : 1;
}

// The row that the box shows counts as selected in the list, also before that is opened.
QAccessibleInterface* ComboBoxPart::child(int index) const {
    QAbstractItemView* const list = Box().view();
    if (!list->isVisible()) list->setCurrentIndex(Box().model()->index(Box().currentIndex(), 0));
    if (index == 0) return QAccessible::queryAccessibleInterface(list);
    return index == 1 ? QAccessible::queryAccessibleInterface(Box().lineEdit()) : nullptr;
}

int ComboBoxPart::indexOfChild(const QAccessibleInterface* child) const {
    if (child->object() == Box().view()) return 0;
    return Box().isEditable() && child->object() == Box().lineEdit() ? 1 : -1;
}

ProgressPart::ProgressPart(PictureBox* bar) : Part(bar, QAccessible::ProgressBar) {}

QString ProgressPart::text(QAccessible::Text kind) const {
    return kind == QAccessible::Value ? currentValue().toString() + QStringLiteral(" %") : Part::text(kind);
}

void* ProgressPart::interface_cast(QAccessible::InterfaceType type) {
    if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
    return Part::interface_cast(type);
}

QVariant ProgressPart::currentValue() const {
    return static_cast<PictureBox*>(widget())->Percent();
}

}  // namespace toolkit
