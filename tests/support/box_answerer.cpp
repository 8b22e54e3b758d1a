#include "tests/support/box_answerer.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <deque>
#include <utility>

namespace toolkit_test {
namespace {

std::deque<ExpectBox*> expected;

QString TextOf(const QDialog& box) {
    const auto* label = box.findChild<QLabel*>(QStringLiteral("lblText"));
    return label ? label->text() : QString();
}

QString Describe(const QDialog& box) {
    return box.windowTitle() + QStringLiteral(": ") + TextOf(box);
}

}  // namespace

ExpectBox::ExpectBox(const QString& title, const QString& text, const QString& press,
                     const std::optional<QString>& typed)
    : title_(title), text_(text), press_(press), typed_(typed) {
    expected.push_back(this);
}

ExpectBox::~ExpectBox() {
    std::erase(expected, this);
    if (!has_come_) ADD_FAILURE() << "No box came: " << qUtf8Printable(title_ + QStringLiteral(": ") + text_);
}

ExpectBox& ExpectBox::Meanwhile(std::function<void(QDialog&)> act) {
    meanwhile_ = std::move(act);
    return *this;
}

void ExpectBox::Answer(QDialog& box) {
    has_come_ = true;
    EXPECT_EQ(box.windowTitle().toStdString(), title_.toStdString());
    EXPECT_EQ(TextOf(box).toStdString(), text_.toStdString());
    const QPointer<QDialog> alive = &box;
    if (meanwhile_) meanwhile_(box);
    if (alive && box.isVisible()) Press(box);
}

void ExpectBox::Press(QDialog& box) const {
    if (typed_) {
        auto* field = box.findChild<QLineEdit*>(QStringLiteral("txtInput"));
        if (field) {
            QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
            QTest::keyClick(field, Qt::Key_Delete);
            QTest::keyClicks(field, *typed_);
        }
        EXPECT_TRUE(field) << "not an input box: " << qUtf8Printable(Describe(box));
    }
    QWidget* focus = box.focusWidget() ? box.focusWidget() : &box;
    if (press_ == kNothing) return;
    if (press_ == kEnter) return QTest::keyClick(focus, Qt::Key_Return);
    if (press_ == kEscape) return QTest::keyClick(focus, Qt::Key_Escape);
    if (auto* button = box.findChild<QPushButton*>(press_)) return QTest::mouseClick(button, Qt::LeftButton);
    ADD_FAILURE() << qUtf8Printable(Describe(box)) << " has no button " << qUtf8Printable(press_);
    box.reject();
}

BoxWatcher::BoxWatcher() {
    qApp->installEventFilter(this);
}

bool BoxWatcher::eventFilter(QObject* watched, QEvent* event) {
    const QString name = watched->objectName();
    if (event->type() == QEvent::Show &&
        (name == QStringLiteral("MsgBox") || name == QStringLiteral("InputBox"))) {
        // From the box's own event loop, as a person would.
        if (auto* box = qobject_cast<QDialog*>(watched)) QTimer::singleShot(0, box, [box] { Handle(*box); });
    }
    return false;
}

void BoxWatcher::Handle(QDialog& box) {
    const QPointer<QDialog> alive = &box;
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&box));
    if (!alive) return;
    if (expected.empty()) {
        ADD_FAILURE() << "Unexpected box: " << qUtf8Printable(Describe(box));
        box.reject();
        return;
    }
    ExpectBox* next = expected.front();
    expected.pop_front();
    next->Answer(box);
}

}  // namespace toolkit_test
