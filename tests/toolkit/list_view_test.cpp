#include <QAccessible>
#include <QApplication>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QMenu>
#include <QScrollBar>
#include <QStringListModel>

#include "tests/toolkit/list_test.h"
#include "toolkit/fonts.h"
#include "toolkit/lists.h"

namespace toolkit {
namespace {

// Rows of three columns, "0.0", "0.1", "0.2", "1.0", ...
class TableModel : public QAbstractTableModel {
 public:
    int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : rows_; }
    int columnCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : 3; }
    QVariant data(const QModelIndex& index, int role) const override {
        if (role != Qt::DisplayRole) return {};
        if (index.column() == 2 && index.row() == long_row_) return QString(200, u'x');
        return QStringLiteral("%1.%2").arg(index.row()).arg(index.column());
    }

    void SetRows(int rows, int long_row = -1) {
        beginResetModel();
        rows_ = rows;
        long_row_ = long_row;
        endResetModel();
    }

 private:
    int rows_ = 0, long_row_ = -1;
};

class ListViewTest : public ListTest<ListView> {
 protected:
    void SetUp() override {
        view_.setModel(&model_);
        QObject::connect(&view_, &ListView::ItemClick,
                         [this](int row) { Note(QStringLiteral("ItemClick(%1)").arg(row)); });
        QObject::connect(&view_, &ListView::Click, [this] { Note(QStringLiteral("Click")); });
        QObject::connect(&view_, &ListView::DblClick, [this] { Note(QStringLiteral("DblClick")); });
    }

    TableModel model_;
};

TEST_F(ListViewTest, ClicksTellTheRowFirst) {
    model_.SetRows(5);
    Show();
    ClickRow(2);
    EXPECT_EQ(Raised(), QStringLiteral("ItemClick(2)[2] Click[2]"));
    ClickRow(4, Qt::ShiftModifier);
    EXPECT_EQ(Raised(), QStringLiteral("ItemClick(4)[2,3,4] Click[2,3,4]"));
    ClickRow(3, Qt::ControlModifier);
    EXPECT_EQ(Raised(), QStringLiteral("ItemClick(3)[2,4] Click[2,4]"));
    EXPECT_EQ(view_.ListIndex(), 3);
    ClickRow(4);
    EXPECT_EQ(Raised(), QStringLiteral("ItemClick(4)[4] Click[4]"));
}

TEST_F(ListViewTest, AClickBesideTheRowsSelectsNothing) {
    model_.SetRows(3);
    Show();
    ClickRow(1);
    Raised();
    ClickBesideRows();
    EXPECT_EQ(Raised(), QStringLiteral("Click[]"));
    EXPECT_EQ(view_.SelCount(), 0);
}

TEST_F(ListViewTest, ARightClickSelectsAnUnselectedRow) {
    model_.SetRows(5);
    Show();
    ClickRow(1);
    Raised();
    ClickRow(3, {}, Qt::RightButton);
    EXPECT_EQ(Raised(), QStringLiteral("ItemClick(3)[3] Click[3]"));
}

TEST_F(ListViewTest, ADoubleClickIsAClickAndThenADoubleClick) {
    model_.SetRows(3);
    Show();
    DoubleClickRow(1);
    EXPECT_EQ(Raised(), QStringLiteral("ItemClick(1)[1] Click[1] DblClick[1]"));
    QTest::mouseDClick(view_.viewport(), Qt::LeftButton, {}, {20, view_.viewport()->height() - 3});
    EXPECT_FALSE(Raised().contains(QStringLiteral("DblClick")));
}

TEST_F(ListViewTest, DraggingSelectsAndClicksWhenReleased) {
    model_.SetRows(6);
    Show();
    QTest::mousePress(view_.viewport(), Qt::LeftButton, {}, Middle(1));
    EXPECT_EQ(Raised(), QString());
    for (int row = 1; row <= 4; ++row) QTest::mouseMove(view_.viewport(), Middle(row));
    const bool selected = QTest::qWaitFor([this] { return view_.SelCount() == 4; });
    QTest::mouseRelease(view_.viewport(), Qt::LeftButton, {}, Middle(4));
    EXPECT_TRUE(selected);
    EXPECT_EQ(Raised(), QStringLiteral("ItemClick(4)[1,2,3,4] Click[1,2,3,4]"));
}

TEST_F(ListViewTest, TheKeyboardClicksAsItMoves) {
    model_.SetRows(4);
    Show();
    ClickRow(0);
    Raised();
    Key(Qt::Key_Down);
    EXPECT_EQ(Raised(), QStringLiteral("ItemClick(1)[1] Click[1]"));
    Key(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(Raised(), QStringLiteral("ItemClick(2)[1,2] Click[1,2]"));
    Key(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(Raised(), QStringLiteral("ItemClick(2)[0,1,2,3] Click[0,1,2,3]"));
    Key(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(Raised(), QString()) << "nothing moved";
}

TEST_F(ListViewTest, AnAssistiveProgramClicksAsItChooses) {
    model_.SetRows(6);
    Show();
    ClickRow(0);
    Raised();
    QAccessibleTableInterface& table = *QAccessible::queryAccessibleInterface(&view_)->tableInterface();
    table.selectRow(4);
    EXPECT_EQ(Raised(), QStringLiteral("ItemClick(4)[0,4] Click[0,4]"));
    table.unselectRow(0);
    EXPECT_EQ(Raised(), QStringLiteral("ItemClick(0)[4] Click[4]"));
    const auto toggle = [&table](int row) {
        table.cellAt(row, 1)->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    };
    toggle(2);
    EXPECT_EQ(Raised(), QStringLiteral("ItemClick(2)[2,4] Click[2,4]"));
    EXPECT_EQ(view_.ListIndex(), 2);
    toggle(4);
    EXPECT_EQ(Raised(), QStringLiteral("ItemClick(4)[2] Click[2]"));
    table.selectRow(2);
    EXPECT_EQ(view_.ListIndex(), 2) << "also of a row that is selected already";
}

TEST_F(ListViewTest, AnAssistiveProgramChoosesNothingWhereNoKeyWould) {
    model_.SetRows(3);
    Show();
    QAccessibleTableInterface& table = *QAccessible::queryAccessibleInterface(&view_)->tableInterface();
    {
        QWidget dialog;
        dialog.setWindowModality(Qt::ApplicationModal);
        dialog.show();
        table.selectRow(1);
    }
    view_.setEnabled(false);
    table.selectRow(1);
    EXPECT_EQ(view_.SelCount(), 0);
    EXPECT_EQ(Raised(), QString());
    view_.setEnabled(true);
    table.selectRow(1);
    EXPECT_EQ(Raised(), QStringLiteral("ItemClick(1)[1] Click[1]"));
}

TEST_F(ListViewTest, AnAssistiveProgramIsHeardAfterAMenuToo) {
    model_.SetRows(4);
    Show();
    QTest::mousePress(view_.viewport(), Qt::RightButton, {}, Middle(1));
    QMenu menu;
    menu.addAction(QStringLiteral("a"));
    menu.popup(view_.pos());
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&menu));
    menu.close();
    Raised();
    QAccessible::queryAccessibleInterface(&view_)->tableInterface()->selectRow(3);
    EXPECT_EQ(Raised(), QStringLiteral("ItemClick(3)[1,3] Click[1,3]"));
}

TEST_F(ListViewTest, ControlAndTheMouseSelectFurtherRowsAndClickOnce) {
    model_.SetRows(6);
    Show();
    ClickRow(0);
    Raised();
    QTest::mousePress(view_.viewport(), Qt::LeftButton, Qt::ControlModifier, Middle(2));
    for (int row = 2; row <= 4; ++row) {
        const QPointF place = Middle(row);
        QMouseEvent move(QEvent::MouseMove, place, view_.viewport()->mapToGlobal(place), Qt::NoButton,
                         Qt::LeftButton, Qt::ControlModifier);
        QApplication::sendEvent(view_.viewport(), &move);
    }
    EXPECT_EQ(Raised(), QString());
    QTest::mouseRelease(view_.viewport(), Qt::LeftButton, Qt::ControlModifier, Middle(4));
    EXPECT_EQ(Raised(), QStringLiteral("ItemClick(4)[0,2,3,4] Click[0,2,3,4]"));
}

TEST_F(ListViewTest, TheSpaceKeyClicksOnce) {
    model_.SetRows(3);
    Show();
    Key(Qt::Key_Space);
    EXPECT_EQ(Raised(), QStringLiteral("ItemClick(0)[0] Click[0]"));
}

TEST_F(ListViewTest, WhatTheProgramSelectsRaisesNothing) {
    model_.SetRows(6);
    ListBox box;
    ShareSelection(box, view_);
    Show();
    box.SetSelected(5, true);
    box.SetSelected(5, false);
    box.SetSelected(4, true);
    box.SetListIndex(2);
    view_.selectAll();
    view_.clearSelection();
    view_.selectionModel()->setCurrentIndex(model_.index(3, 0), QItemSelectionModel::NoUpdate);
    view_.setCurrentIndex(model_.index(1, 0));
    EXPECT_EQ(view_.SelectedRows(), QList{1});
    model_.SetRows(3);
    EXPECT_EQ(Raised(), QString()) << "only the user clicks";
}

TEST_F(ListViewTest, SelectingAllWithoutACurrentRowMakesTheFirstCurrent) {
    Show();
    model_.SetRows(3);
    ASSERT_EQ(view_.ListIndex(), -1);
    Key(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(Raised(), QStringLiteral("ItemClick(0)[0,1,2] Click[0,1,2]"));
}

TEST_F(ListViewTest, EnterIsADoubleClickOnTheSelectedRow) {
    model_.SetRows(3);
    Show();
    Key(Qt::Key_Return);
    EXPECT_EQ(Raised(), QString());
    ClickRow(1);
    Raised();
    Key(Qt::Key_Return);
    EXPECT_EQ(Raised(), QStringLiteral("DblClick[1]"));
    model_.SetRows(3);
    Key(Qt::Key_Return);
    EXPECT_EQ(Raised(), QString()) << "new rows, none selected";
}

TEST_F(ListViewTest, TheSelectedItemIsTheCurrentOneOrTheFirst) {
    model_.SetRows(5);
    Show();
    EXPECT_EQ(view_.SelectedItemText(), QString());
    ClickRow(1);
    ClickRow(3, Qt::ControlModifier);
    EXPECT_EQ(view_.SelectedItemText(), QStringLiteral("3.0"));
    ClickRow(3, Qt::ControlModifier);
    EXPECT_EQ(view_.ListIndex(), 3);
    EXPECT_EQ(view_.SelectedItemText(), QStringLiteral("1.0"));
}

TEST_F(ListViewTest, AViewWithoutAModelIsEmpty) {
    ListView bare;
    bare.show();
    EXPECT_EQ(bare.ListIndex(), -1);
    EXPECT_EQ(bare.SelCount(), 0);
    EXPECT_FALSE(bare.Selected(0));
    EXPECT_EQ(bare.SelectedItemText(), QString());
    QTest::keyClick(&bare, Qt::Key_Return);
    QTest::keyClick(&bare, Qt::Key_A, Qt::ControlModifier);
    QTest::mouseClick(bare.viewport(), Qt::LeftButton);
}

TEST_F(ListViewTest, TwoViewsShareModelAndSelection) {
    model_.SetRows(6);
    ListBox box;
    ShareSelection(box, view_);
    Show();
    ClickRow(4);
    ClickRow(2, Qt::ControlModifier);
    EXPECT_EQ(box.SelectedRows(), (QList{2, 4}));
    EXPECT_EQ(box.ListIndex(), 2);
    EXPECT_EQ(box.Text(), QStringLiteral("2.0"));
    box.SetSelected(5, true);
    EXPECT_EQ(view_.SelectedRows(), (QList{2, 4, 5}));
    EXPECT_TRUE(view_.selectionModel()->isRowSelected(5)) << "in all its columns";
    box.SetListIndex(0);
    EXPECT_EQ(view_.ListIndex(), 0);
    EXPECT_EQ(view_.SelCount(), 3) << "a multi-selection list only moves";
    model_.SetRows(6);
    EXPECT_EQ(box.SelCount(), 0);
}

TEST_F(ListViewTest, TheLastColumnReachesTheEdgeOrTheEndOfItsLongestText) {
    view_.setFont(FixedPitchFont());
    model_.SetRows(3);
    Show();
    const auto filled = [this] { return view_.header()->length() == view_.viewport()->width(); };
    EXPECT_TRUE(QTest::qWaitFor(filled));
    view_.setColumnWidth(0, 30);
    EXPECT_TRUE(filled());
    view_.resize(500, 200);
    EXPECT_TRUE(QTest::qWaitFor(filled));
    model_.SetRows(100, 50);
    const int text = view_.fontMetrics().horizontalAdvance(QString(200, u'x'));
    EXPECT_TRUE(QTest::qWaitFor([&] { return view_.columnWidth(2) > text; }));
    EXPECT_LT(view_.columnWidth(2), text + 24);
    EXPECT_GT(view_.horizontalScrollBar()->maximum(), 0);
}

TEST_F(ListViewTest, ManyRowsAreNothingSpecial) {
    Show();
    QElapsedTimer clock;
    clock.start();
    model_.SetRows(kManyRows);
    view_.scrollToBottom();
    view_.repaint();
    Key(Qt::Key_A, Qt::ControlModifier);
    for (int i = 0; i < 1000; ++i) EXPECT_EQ(view_.SelCount(), kManyRows);
    view_.repaint();
    RecordProperty("milliseconds", static_cast<int>(clock.elapsed()));
    EXPECT_LT(clock.elapsed(), kMillisecondsForManyRows);
    EXPECT_EQ(view_.SelectedRows().size(), kManyRows);
}

}  // namespace
}  // namespace toolkit
