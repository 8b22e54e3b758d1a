#include <QAccessible>
#include <QClipboard>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>
#include <QVBoxLayout>

#include "tests/toolkit/list_test.h"
#include "toolkit/fonts.h"
#include "toolkit/lists.h"

namespace toolkit {
namespace {

class ListBoxTest : public ListTest<ListBox> {
 protected:
    void SetUp() override {
        QObject::connect(&view_, &ListBox::Click, [this] { Note(QStringLiteral("Click")); });
        QObject::connect(&view_, &ListBox::DblClick, [this] { Note(QStringLiteral("DblClick")); });
    }

    void Fill(int rows) { view_.Lines()->SetLines(Lines(rows)); }
};

TEST_F(ListBoxTest, HoldsItems) {
    EXPECT_EQ(view_.ListCount(), 0);
    EXPECT_EQ(view_.ListIndex(), -1);
    EXPECT_EQ(view_.Text(), QString());
    for (const char* item : {"a", "b", "c"}) view_.AddItem(QString::fromLatin1(item));
    EXPECT_EQ(view_.ListCount(), 3);
    EXPECT_EQ(view_.List(2), QStringLiteral("c"));
    EXPECT_EQ(view_.List(3), QString());
    EXPECT_EQ(view_.List(-1), QString());
    view_.RemoveItem(0);
    EXPECT_EQ(view_.List(0), QStringLiteral("b"));
    view_.Clear();
    EXPECT_EQ(view_.ListCount(), 0);
}

TEST_F(ListBoxTest, SettingTheIndexSelectsInASingleSelectionList) {
    Fill(100);
    view_.SetListIndex(90);
    EXPECT_EQ(view_.ListIndex(), 90);
    EXPECT_EQ(view_.Text(), QStringLiteral("line 90"));
    EXPECT_EQ(view_.SelectedRows(), QList{90});
    view_.SetListIndex(3);
    EXPECT_EQ(view_.SelectedRows(), QList{3});
    view_.SetListIndex(-1);
    EXPECT_EQ(view_.ListIndex(), -1);
    EXPECT_EQ(view_.SelCount(), 0);
    EXPECT_EQ(Raised(), QString()) << "only the user clicks";
}

TEST_F(ListBoxTest, SettingTheIndexScrollsToTheRow) {
    Fill(100);
    Show();
    view_.SetListIndex(90);
    EXPECT_TRUE(view_.viewport()->rect().contains(view_.visualRect(view_.currentIndex())));
}

TEST_F(ListBoxTest, SettingTheIndexOnlyMovesInAMultiSelectionList) {
    view_.setSelectionMode(QAbstractItemView::ExtendedSelection);
    Fill(10);
    for (int row : {7, 2, 3}) view_.SetSelected(row, true);
    view_.SetListIndex(5);
    EXPECT_EQ(view_.ListIndex(), 5);
    EXPECT_EQ(view_.SelectedRows(), (QList{2, 3, 7}));
    EXPECT_EQ(view_.SelCount(), 3);
    EXPECT_TRUE(view_.Selected(7));
    EXPECT_FALSE(view_.Selected(5));
    view_.SetSelected(3, false);
    view_.SetSelected(99, true);
    EXPECT_FALSE(view_.Selected(99));
    EXPECT_EQ(view_.SelectedRows(), (QList{2, 7}));
}

TEST_F(ListBoxTest, ClickComesOnceAndAfterTheSelectionHasChanged) {
    Fill(5);
    Show();
    ClickRow(2);
    EXPECT_EQ(Raised(), QStringLiteral("Click[2]"));
    ClickRow(2);
    EXPECT_EQ(Raised(), QStringLiteral("Click[2]")) << "also when nothing changes";
    ClickBesideRows();
    EXPECT_FALSE(Raised().contains(QStringLiteral("Click")));
}

TEST_F(ListBoxTest, ADoubleClickIsAClickAndThenADoubleClick) {
    Fill(5);
    Show();
    DoubleClickRow(1);
    EXPECT_EQ(Raised(), QStringLiteral("Click[1] DblClick[1]"));
    DoubleClickRow(1, Qt::RightButton);
    EXPECT_FALSE(Raised().contains(QStringLiteral("DblClick")));
}

TEST_F(ListBoxTest, TheKeyboardClicksAsItMoves) {
    view_.setSelectionMode(QAbstractItemView::ExtendedSelection);
    Fill(5);
    Show();
    ClickRow(0);
    Raised();
    Key(Qt::Key_Down);
    EXPECT_EQ(Raised(), QStringLiteral("Click[1]"));
    Key(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(Raised(), QStringLiteral("Click[1,2]"));
    Key(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(Raised(), QStringLiteral("Click[0,1,2,3,4]"));
    Key(Qt::Key_Space, Qt::ControlModifier);
    EXPECT_EQ(Raised(), QStringLiteral("Click[0,1,3,4]"));
    Key(Qt::Key_End);
    EXPECT_EQ(Raised(), QStringLiteral("Click[4]"));
    Key(Qt::Key_Down);
    EXPECT_EQ(Raised(), QString()) << "nothing moved";
}

TEST_F(ListBoxTest, AnAssistiveProgramClicksAsItChooses) {
    Fill(5);
    Show();
    ClickRow(0);
    Raised();
    QAccessibleTableInterface& table = *QAccessible::queryAccessibleInterface(&view_)->tableInterface();
    table.selectRow(3);
    EXPECT_EQ(Raised(), QStringLiteral("Click[3]"));
    EXPECT_EQ(view_.Text(), QStringLiteral("line 3"));
    view_.setSelectionMode(QAbstractItemView::ExtendedSelection);
    table.selectRow(1);
    EXPECT_EQ(Raised(), QStringLiteral("Click[1,3]"));
    table.unselectRow(3);
    EXPECT_EQ(Raised(), QStringLiteral("Click[1]"));
}

TEST_F(ListBoxTest, WhatTheProgramSelectsRaisesNothing) {
    Fill(5);
    Show();
    view_.SetListIndex(2);
    view_.RemoveItem(2);
    EXPECT_EQ(view_.SelCount(), 1) << "the next row takes its place";
    view_.setSelectionMode(QAbstractItemView::ExtendedSelection);
    view_.SetSelected(3, true);
    view_.SetSelected(2, false);
    view_.selectAll();
    view_.clearSelection();
    view_.Clear();
    EXPECT_EQ(Raised(), QString()) << "only the user clicks";
}

TEST_F(ListBoxTest, AControlClickOnTheSelectedRowDeselectsItAndClicksOnce) {
    Fill(3);
    Show();
    ClickRow(1);
    Raised();
    ClickRow(1, Qt::ControlModifier);
    EXPECT_EQ(Raised(), QStringLiteral("Click[]"));
}

TEST_F(ListBoxTest, EnterIsADoubleClickOnTheSelectedRow) {
    view_.setSelectionMode(QAbstractItemView::ExtendedSelection);
    Fill(3);
    Show();
    Key(Qt::Key_Return);
    EXPECT_EQ(Raised(), QString()) << "the focus alone selects nothing";
    ClickRow(1);
    Raised();
    Key(Qt::Key_Return);
    Key(Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_EQ(Raised(), QStringLiteral("DblClick[1] DblClick[1]"));
}

TEST_F(ListBoxTest, TypingFindsARow) {
    view_.Lines()->SetLines({QStringLiteral("anna"), QStringLiteral("bertil"), QStringLiteral("cesar")});
    Show();
    QTest::keyClicks(&view_, QStringLiteral("c"));
    EXPECT_EQ(view_.Text(), QStringLiteral("cesar"));
    EXPECT_EQ(Raised(), QStringLiteral("Click[2]"));
}

TEST_F(ListBoxTest, KeyUpTellsTheKey) {
    QList<int> keys;
    QObject::connect(&view_, &ListBox::KeyUp, [&keys](int key) { keys.append(key); });
    Fill(2);
    Show();
    Key(Qt::Key_Down);
    EXPECT_EQ(keys, QList<int>{Qt::Key_Down});
}

TEST_F(ListBoxTest, CtrlCCopiesTheSelectedLines) {
    view_.setSelectionMode(QAbstractItemView::ExtendedSelection);
    Fill(5);
    Show();
    ClickRow(3);
    ClickRow(1, Qt::ControlModifier);
    Key(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("line 1\nline 3"));
    view_.clearSelection();
    Key(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("line 1\nline 3")) << "left alone";
}

TEST_F(ListBoxTest, LostFocusIsToldForAnotherControlButNotForAMenu) {
    QWidget window;
    QVBoxLayout layout(&window);
    auto* list = new ListBox(&window);
    auto* other = new QLineEdit(&window);
    layout.addWidget(list);
    layout.addWidget(other);
    int lost = 0;
    QObject::connect(list, &ListBox::LostFocus, [&lost] { ++lost; });
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    list->setFocus();
    QMenu menu;
    menu.addAction(QStringLiteral("a"));
    menu.popup(window.pos());
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&menu));
    menu.close();
    EXPECT_EQ(lost, 0);
    other->setFocus();
    EXPECT_EQ(lost, 1);
}

TEST_F(ListBoxTest, LongLinesCanBeScrolledToTheirEnd) {
    view_.setFont(FixedPitchFont());
    Show();
    view_.AddItem(QStringLiteral("short"));
    const QString line(300, u'x');
    view_.AddItem(line);
    view_.AddItem(QStringLiteral("short"));
    const int width = view_.fontMetrics().horizontalAdvance(line);
    ASSERT_TRUE(QTest::qWaitFor([this] { return view_.horizontalScrollBar()->maximum() > 0; }));
    EXPECT_GE(view_.horizontalScrollBar()->maximum() + view_.viewport()->width(), width);
    EXPECT_LE(view_.horizontalScrollBar()->maximum() + view_.viewport()->width(), width + 24);
    view_.Clear();
    view_.AddItem(QStringLiteral("short"));
    EXPECT_TRUE(QTest::qWaitFor([this] { return view_.horizontalScrollBar()->maximum() == 0; }));
}

TEST_F(ListBoxTest, ALongLineInTheMiddleOrChangedLaterCounts) {
    view_.setFont(FixedPitchFont());
    Show();
    LineModel model;
    model.SetLines(Lines(10));
    view_.setModel(&model);
    EXPECT_EQ(view_.Lines(), nullptr);
    const auto reach = [this] { return view_.horizontalScrollBar()->maximum() + view_.viewport()->width(); };
    int expected = 0;
    for (int length : {100, 200, 150, 400}) {
        model.RemoveFirst();
        model.Add(QString(length, u'm'));
        model.Add(QStringLiteral("end"));
        expected = std::max(expected, view_.fontMetrics().horizontalAdvance(QString(length, u'm')));
        EXPECT_TRUE(QTest::qWaitFor([&] { return reach() >= expected && reach() <= expected + 24; }))
            << length;
    }
    view_.setModel(nullptr);
    EXPECT_EQ(view_.ListCount(), 0);
    EXPECT_EQ(view_.SelCount(), 0);
}

TEST_F(ListBoxTest, AWideShortTextCountsInAProportionalFont) {
    view_.setFont(QFont(QStringLiteral("Sans Serif")));
    Show();
    view_.AddItem(QString(100, u'i'));
    view_.AddItem(QString(90, u'W'));
    view_.AddItem(QString(100, u'i'));
    const int width = view_.fontMetrics().horizontalAdvance(QString(90, u'W'));
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return view_.horizontalScrollBar()->maximum() + view_.viewport()->width() >= width; }));
}

TEST_F(ListBoxTest, ManyRowsAreNothingSpecial) {
    view_.setSelectionMode(QAbstractItemView::ExtendedSelection);
    Show();
    QElapsedTimer clock;
    clock.start();
    Fill(kManyRows);
    view_.SetListIndex(kManyRows - 1);
    view_.repaint();
    Key(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(view_.SelCount(), kManyRows);
    for (int i = 0; i < 1000; ++i) EXPECT_EQ(view_.SelCount(), kManyRows);
    view_.repaint();
    view_.AddItem(QStringLiteral("one more"));
    view_.SetListIndex(kManyRows);
    view_.repaint();
    RecordProperty("milliseconds", static_cast<int>(clock.elapsed()));
    EXPECT_LT(clock.elapsed(), kMillisecondsForManyRows);
    EXPECT_EQ(view_.SelectedRows().size(), kManyRows);
}

}  // namespace
}  // namespace toolkit
