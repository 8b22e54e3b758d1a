#include <QLabel>
#include <QLineEdit>
#include <QSplitterHandle>

#include "tests/forms/main/main_window.h"

namespace forms {
namespace {

class Layout : public MainWindow, public ::testing::WithParamInterface<QSize> {
 protected:
    void OpenAtSize() {
        Open();
        window_->resize(GetParam());
        ASSERT_TRUE(QTest::qWaitFor([this] { return window_->size() == GetParam(); }));
        QApplication::sendPostedEvents();
    }
};

QRect OnWindow(const QWidget& widget) {
    return {widget.mapTo(widget.window(), QPoint()), widget.size()};
}

// The caption, the picture before it, and room for the frame.
int WidthOfCaption(const QPushButton& button) {
    const int picture = button.icon().isNull() ? 0 : button.iconSize().width() + 4;
    return button.fontMetrics().size(Qt::TextShowMnemonic, button.text()).width() + picture + 8;
}

TEST_P(Layout, ShowsEveryButtonWhole) {
    OpenAtSize();
    for (const QPushButton* button : window_->findChildren<QPushButton*>()) {
        if (!button->isVisible()) continue;
        EXPECT_GE(button->width(), WidthOfCaption(*button)) << qPrintable(button->objectName());
        EXPECT_GE(button->height(), button->sizeHint().height()) << qPrintable(button->objectName());
        EXPECT_TRUE(window_->rect().contains(OnWindow(*button))) << qPrintable(button->objectName());
        EXPECT_TRUE(button->parentWidget()->rect().contains(button->geometry()))
            << qPrintable(button->objectName());
    }
}

TEST_P(Layout, ShowsEveryLabelWhole) {
    OpenAtSize();
    for (const QLabel* label : window_->findChildren<QLabel*>()) {
        if (!label->isVisible() || qobject_cast<const ElidedLabel*>(label)) continue;
        if (label->objectName() == QStringLiteral("antal2")) continue;  // shows as far as the bar is filled
        const QSize needed =
            label->wordWrap() ? QSize(0, label->heightForWidth(label->width())) : label->sizeHint();
        EXPECT_GE(label->width(), needed.width()) << qPrintable(label->objectName());
        EXPECT_GE(label->height(), needed.height()) << qPrintable(label->objectName());
    }
}

TEST_P(Layout, LetsNothingOverlap) {
    OpenAtSize();
    const QList<QWidget*> all = window_->findChildren<QWidget*>();
    for (const QWidget* a : all)
        for (const QWidget* b : a->parentWidget()->findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
            const QString parent = a->parentWidget()->objectName();
            if (a == b || !a->isVisible() || !b->isVisible() || a->isWindow() || b->isWindow()) continue;
            const bool ours =
                parent == QStringLiteral("MainForm") || !parent.startsWith(QStringLiteral("qt_"));
            const bool stacked =
                parent == QStringLiteral("p1") || a->inherits("QSplitterHandle") ||
                b->inherits("QSplitterHandle") || a->parentWidget()->inherits("QAbstractItemView") ||
                a->parentWidget()->inherits("QComboBox") || a->parentWidget()->inherits("QLineEdit");
            if (!ours || stacked) continue;
            EXPECT_FALSE(a->geometry().intersects(b->geometry()))
                << qPrintable(a->objectName()) << " and " << qPrintable(b->objectName());
        }
}

TEST_P(Layout, LeavesRoomForTheLists) {
    OpenAtSize();
    for (const char* name : {"list2", "listdir2", "listTrace"})
        EXPECT_GE(Get(name).height(), 2 * Get(name).fontMetrics().height()) << name;
}

INSTANTIATE_TEST_SUITE_P(Sizes, Layout,
                         ::testing::Values(QSize(615, 513), QSize(800, 600), QSize(1000, 700),
                                           QSize(1380, 900)),
                         [](const auto& row) { return "Width" + std::to_string(row.param.width()); });

using Window = MainWindow;

TEST_F(Window, IsNeverSmallerThanItsMinimum) {
    Open();
    EXPECT_EQ(window_->minimumSize(), QSize(615, 513));
    window_->resize(100, 100);
    EXPECT_EQ(window_->size(), QSize(615, 513));
}

TEST_F(Window, ALargerWindowGivesItsRoomToTheLists) {
    Open();
    window_->resize(700, 600);
    QApplication::sendPostedEvents();
    const QSize server = Get("listdir2").size(), local = Get("list2").size();
    window_->resize(1300, 900);
    QApplication::sendPostedEvents();
    EXPECT_GT(Get("listdir2").width(), server.width() + 200);
    EXPECT_GT(Get("listdir2").height(), server.height() + 150);
    EXPECT_GT(Get("list2").width(), local.width());
    EXPECT_GT(Get("list2").height(), local.height() + 150);
}

TEST_F(Window, AltAndALetterGoesToThePanelWithTheFocus) {
    Open();
    MakeFile(QStringLiteral("ny.txt"), 1);
    for (const char* name : {"Command9", "Command13", "Command2"}) Button(name).setEnabled(true);
    Get("list2").setFocus();
    QTest::keyClick(&Get("list2"), Qt::Key_U, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([this] { return Names().size() == 1; }))
        << "Alt+U reads the local list again";
}

class Letters : public MainWindow {
 protected:
    void SetUp() override {
        MainWindow::SetUp();
        MakeFile(QStringLiteral("ny.txt"), 1);
        Open();
        ClickRow("list2", 0);
        ASSERT_TRUE(Button("Command8").isEnabled()) << "what removes local files";
        Button("Command9").setEnabled(true);
        Button("Command9").setFocus();
    }
    /// Alt and the letter of "Ta bort" and "Ta hem"; who has the focus then.
    QString PressT() {
        QTest::keyClick(window_->focusWidget(), Qt::Key_T, Qt::AltModifier);
        return window_->focusWidget()->objectName();
    }
};

TEST_F(Letters, OfAPanelNeverLeadToTheOtherOne) {
    for (const char* name : {"Command13", "Command2"}) Button(name).setEnabled(true);
    QStringList focused;
    for (int i = 0; i < 4; ++i) focused.append(PressT());
    EXPECT_EQ(focused[0], focused[2]);
    EXPECT_EQ(focused[1], focused[3]);
    focused.sort();
    focused.removeDuplicates();
    EXPECT_EQ(focused, QStringList({"Command13", "Command2"}));
}

TEST_F(Letters, OfAPanelPressNothingWhereItsButtonsCannotBePressed) {
    for (const char* name : {"Command13", "Command2"}) ASSERT_FALSE(Button(name).isEnabled());
    EXPECT_EQ(PressT(), "Command9");
}

TEST_F(Letters, BelongToThePanelWhereTheUserLastWorked) {
    for (const char* name : {"Command13", "Command2"}) Button(name).setEnabled(true);
    Get("listTrace").setFocus();
    EXPECT_TRUE(QStringList({"Command13", "Command2"}).contains(PressT()));
    Button("Command9").setFocus();
    for (int i = 0; i < 2; ++i) QTest::keyClick(window_->focusWidget(), Qt::Key_F8);
    ASSERT_TRUE(qobject_cast<QSplitterHandle*>(window_->focusWidget()));
    EXPECT_TRUE(QStringList({"Command13", "Command2"}).contains(PressT()));
}

TEST_F(Layout, ALongFilterDoesNotPushTheServerOutOfTheWindow) {
    Open();
    const int before = Get("Frame2").width();
    Get<QLabel>("Label2").setText(QString(300, u'9'));
    QApplication::processEvents();
    EXPECT_EQ(Get("Frame2").width(), before);
}

}  // namespace
}  // namespace forms
