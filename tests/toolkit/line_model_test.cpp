#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include "toolkit/lists.h"

namespace toolkit {
namespace {

QString Number(int number) {
    return QString::number(number);
}

class LineModelTest : public testing::Test {
 protected:
    QStringList Shown() const {
        QStringList lines;
        for (int row = 0; row < model_.rowCount(); ++row) lines.append(model_.index(row).data().toString());
        return lines;
    }

    LineModel model_;
    QAbstractItemModelTester tester_{&model_, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(LineModelTest, KeepsLinesInOrder) {
    for (int i = 0; i < 4; ++i) model_.Add(Number(i));
    EXPECT_EQ(Shown().join(u' '), QStringLiteral("0 1 2 3"));
    model_.Remove(2);
    EXPECT_EQ(Shown().join(u' '), QStringLiteral("0 1 3"));
    model_.RemoveFirst();
    EXPECT_EQ(Shown().join(u' '), QStringLiteral("1 3"));
    EXPECT_EQ(model_.At(1), QStringLiteral("3"));
    model_.SetLines({QStringLiteral("x")});
    EXPECT_EQ(Shown().join(u' '), QStringLiteral("x"));
    model_.Clear();
    EXPECT_EQ(model_.Count(), 0);
}

TEST_F(LineModelTest, RowsOutsideTheListAreEmptyAndCannotBeRemoved) {
    model_.Add(QStringLiteral("a"));
    for (int row : {-1, 1, 1000}) {
        EXPECT_EQ(model_.At(row), QString());
        model_.Remove(row);
    }
    EXPECT_EQ(model_.Count(), 1);
    model_.Clear();
    model_.RemoveFirst();
    EXPECT_EQ(model_.Count(), 0);
}

TEST_F(LineModelTest, HeldLinesAreCountedButNotShown) {
    model_.Add(QStringLiteral("before"));
    model_.Hold();
    EXPECT_EQ(model_.rowCount(), 0);
    QSignalSpy inserted(&model_, &QAbstractItemModel::rowsInserted);
    QSignalSpy reset(&model_, &QAbstractItemModel::modelReset);
    for (int i = 0; i < 5; ++i) model_.Add(Number(i));
    model_.RemoveFirst();
    EXPECT_EQ(model_.Count(), 5);
    EXPECT_EQ(model_.At(4), QStringLiteral("4"));
    EXPECT_EQ(model_.rowCount(), 0);
    EXPECT_EQ(inserted.count() + reset.count(), 0);
    model_.Publish();
    EXPECT_EQ(reset.count(), 1);
    EXPECT_EQ(Shown().join(u' '), QStringLiteral("0 1 2 3 4"));
    model_.Add(QStringLiteral("5"));
    EXPECT_EQ(inserted.count(), 1);
}

TEST_F(LineModelTest, HoldingOrPublishingTwiceIsOnce) {
    model_.Publish();
    model_.Hold();
    model_.Hold();
    model_.Clear();
    model_.Add(QStringLiteral("a"));
    model_.Publish();
    EXPECT_EQ(Shown(), QStringList{QStringLiteral("a")});
}

}  // namespace
}  // namespace toolkit
