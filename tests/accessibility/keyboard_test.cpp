// Everything works without a mouse.

#include <QAbstractButton>
#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QSplitter>
#include <algorithm>

#include "tests/accessibility/windows.h"

namespace forms {
namespace {

class Keyboard : public Windows {};
INSTANTIATE_TEST_SUITE_P(Windows, Keyboard, EveryWindow(), NameOfWindow);

// From the given stop once around: until the focus comes back to a widget where it has been.
QList<QWidget*> Walk(QWidget& window, QWidget& start, Qt::Key key) {
    start.setFocus(Qt::TabFocusReason);
    QList<QWidget*> stops;
    while (QWidget* focus = window.focusWidget()) {
        if (stops.contains(focus)) break;
        stops.append(focus);
        QTest::keyClick(focus, key, key == Qt::Key_Backtab ? Qt::ShiftModifier : Qt::NoModifier);
    }
    return stops;
}

QRect Place(const QWidget& widget) {
    return {widget.mapTo(widget.window(), QPoint(0, 0)), widget.size()};
}

QWidget* TopLeftOf(const QList<QWidget*>& stops) {
    return *std::ranges::min_element(
        stops, {}, [](const QWidget* stop) { return Place(*stop).topLeft().manhattanLength(); });
}

// Down, or to the right: then the next column may begin higher up.
bool ReadsOn(const QRect& from, const QRect& to) {
    return to.top() >= from.center().y() ? to.left() > from.left() || to.top() >= from.bottom()
                                         : to.left() >= from.right();
}

TEST_P(Keyboard, TabReachesEverythingInTheOrderOfReading) {
    Visit([](QWidget& window) {
        EnableAll(window);
        const QList<QWidget*> stops = TabStopsOf(window);
        if (stops.isEmpty()) return;
        const QList<QWidget*> walk = Walk(window, *TopLeftOf(stops), Qt::Key_Tab);
        for (const QWidget* stop : stops) EXPECT_TRUE(walk.contains(stop)) << Describe(*stop);
        for (int i = 1; i < walk.size(); ++i)
            EXPECT_TRUE(ReadsOn(Place(*walk[i - 1]), Place(*walk[i])))
                << Describe(*walk[i - 1]) << ", then " << Describe(*walk[i]);
    });
}

TEST_P(Keyboard, ShiftTabGoesTheSameWayBack) {
    Visit([](QWidget& window) {
        EnableAll(window);
        const QList<QWidget*> stops = TabStopsOf(window);
        if (stops.isEmpty()) return;
        QList<QWidget*> there = Walk(window, *TopLeftOf(stops), Qt::Key_Tab);
        const QList<QWidget*> back = Walk(window, *there.last(), Qt::Key_Backtab);
        std::ranges::reverse(there);
        EXPECT_EQ(there, back);
    });
}

// Mnemonics may be in use twice in the main window only, where the panel with the focus decides.
TEST_P(Keyboard, NoTwoButtonsOfADialogHaveTheSameLetter) {
    Visit([](QWidget& window) {
        if (window.objectName() == QStringLiteral("MainForm")) return;
        QList<QKeySequence> keys;
        for (const QAbstractButton* button : window.findChildren<QAbstractButton*>())
            if (button->isVisible() && !button->shortcut().isEmpty()) {
                EXPECT_FALSE(keys.contains(button->shortcut())) << Describe(*button);
                keys.append(button->shortcut());
            }
    });
}

TEST_P(Keyboard, WhateverIsPressedCanBeReached) {
    Visit([](QWidget& window) {
        const QList<QWidget*> stops = TabStopsOf(window);
        for (QWidget* control : ControlsOf(window)) {
            const auto* button = qobject_cast<QAbstractButton*>(control);
            // Those in a field are keys of the field.
            if (!button || button->parentWidget()->inherits("QLineEdit")) continue;
            EXPECT_TRUE(stops.contains(control)) << Describe(*control);
        }
    });
}

class ListMenu : public MainWindow, public ::testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(Lists, ListMenu, ::testing::Values("Dir1", "list2", "listdir2", "listTrace"),
                         [](const auto& list) { return std::string(list.param); });

TEST_P(ListMenu, OpensByKeysOverTheRow) {
    MakeFile(QStringLiteral("a.txt"), 1);
    Open();
    auto& list = Get<QAbstractItemView>(GetParam());
    list.setFocus(Qt::TabFocusReason);
    QTest::keyClick(&list, Qt::Key_F10, Qt::ShiftModifier);
    ASSERT_TRUE(QTest::qWaitFor([] { return QApplication::activePopupWidget() != nullptr; }));
    QWidget* const menu = QApplication::activePopupWidget();
    EXPECT_TRUE(qobject_cast<QMenu*>(menu));
    EXPECT_TRUE(QRect(list.mapToGlobal(QPoint(0, 0)), list.size()).contains(menu->pos()));
    menu->close();
}

TEST_F(MainWindow, SplittersAreMovedByKeys) {
    Open();
    auto& list = Get<QWidget>("Dir1");
    list.setFocus();
    const auto& panels = Get<QSplitter>("panels");
    for (int presses = 0; presses < 5 && window_->focusWidget() != panels.handle(1); ++presses)
        QTest::keyClick(window_->focusWidget(), Qt::Key_F8);
    ASSERT_EQ(window_->focusWidget(), panels.handle(1));
    const int before = panels.sizes().first();
    QTest::keyClick(panels.handle(1), Qt::Key_Right);
    EXPECT_GT(panels.sizes().first(), before);
    QTest::keyClick(panels.handle(1), Qt::Key_Return);
    EXPECT_EQ(window_->focusWidget(), &list);
}

TEST_F(MainWindow, ThePasswordIsShownByAKey) {
    Open();
    ClickOn("cmdConnection");
    QWidget* const dialog = [] {
        for (QWidget* window : QApplication::topLevelWidgets())
            if (window->isVisible() && window->objectName() == QStringLiteral("frmConnection")) return window;
        return static_cast<QWidget*>(nullptr);
    }();
    ASSERT_TRUE(dialog);
    ASSERT_TRUE(QTest::qWaitFor([&] { return QApplication::activeWindow() == dialog; }));
    const auto* field = dialog->findChild<QLineEdit*>(QStringLiteral("txtPassword"));
    QTest::keyClick(dialog->windowHandle(), Qt::Key_V, Qt::AltModifier);
    EXPECT_EQ(field->echoMode(), QLineEdit::Normal);
    QTest::keyClick(dialog->windowHandle(), Qt::Key_V, Qt::AltModifier);
    EXPECT_EQ(field->echoMode(), QLineEdit::Password);
    dialog->close();
}

}  // namespace
}  // namespace forms
