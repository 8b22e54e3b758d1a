#include "toolkit/splitter.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>

namespace toolkit {
namespace {

// Two parts of a window side by side, the right one with two parts of its own, and a field below.
class SplitterTest : public testing::TestWithParam<Qt::Orientation> {
 protected:
    SplitterTest() {
        auto* rows = new QVBoxLayout(&window_);
        rows->addWidget(&outer_, 1);
        rows->addWidget(&field_);
        outer_.setOrientation(GetParam());
        outer_.setChildrenCollapsible(false);
        outer_.addWidget(Part());
        outer_.addWidget(&inner_);
        inner_.addWidget(Part());
        inner_.addWidget(Part());
        window_.resize(800, 600);
        window_.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window_));
        outer_.setSizes({300, 300});
        field_.setFocus();
    }

    static QWidget* Part() {
        auto* part = new QLabel;
        part->setMinimumSize(50, 50);
        return part;
    }

    /// The handles of what lies inside come first.
    void ReachOuter() {
        FocusNextHandle(window_);
        FocusNextHandle(window_);
        ASSERT_EQ(window_.focusWidget(), outer_.handle(1));
    }
    void Press(Qt::Key key) { QTest::keyClick(window_.focusWidget(), key); }
    Qt::Key Back() const { return GetParam() == Qt::Horizontal ? Qt::Key_Left : Qt::Key_Up; }
    Qt::Key On() const { return GetParam() == Qt::Horizontal ? Qt::Key_Right : Qt::Key_Down; }
    int First() const { return outer_.sizes().first(); }

    QWidget window_;
    Splitter outer_, inner_;
    QLineEdit field_;
};

INSTANTIATE_TEST_SUITE_P(Orientations, SplitterTest, testing::Values(Qt::Horizontal, Qt::Vertical),
                         [](const auto& orientation) {
                             return std::string(orientation.param == Qt::Horizontal ? "Horizontal"
                                                                                    : "Vertical");
                         });

TEST_P(SplitterTest, ArrowsMoveTheHandle) {
    ReachOuter();
    const int before = First();
    Press(On());
    EXPECT_EQ(First(), before + 16);
    Press(Back());
    Press(Back());
    EXPECT_EQ(First(), before - 16);
    EXPECT_EQ(window_.focusWidget(), outer_.handle(1));
}

TEST_P(SplitterTest, HomeAndEndGoAsFarAsThePartsLetThem) {
    ReachOuter();
    Press(Qt::Key_Home);
    EXPECT_EQ(outer_.sizes().first(), 50);
    Press(Back());
    EXPECT_EQ(outer_.sizes().first(), 50);
    Press(Qt::Key_End);
    const int least = GetParam() == Qt::Horizontal ? inner_.minimumSizeHint().width() : 50;
    EXPECT_EQ(outer_.sizes().last(), least);
}

TEST_P(SplitterTest, HandlesFollowEachOtherAndTheLastGivesTheFocusBack) {
    FocusNextHandle(window_);
    EXPECT_EQ(window_.focusWidget(), inner_.handle(1));
    FocusNextHandle(window_);
    EXPECT_EQ(window_.focusWidget(), outer_.handle(1));
    FocusNextHandle(window_);
    EXPECT_EQ(window_.focusWidget(), &field_);
}

TEST_P(SplitterTest, EnterAndEscapeGiveTheFocusBackFromAnyHandle) {
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}) {
        FocusNextHandle(window_);
        FocusNextHandle(window_);
        Press(key);
        EXPECT_EQ(window_.focusWidget(), &field_) << key;
    }
}

TEST_P(SplitterTest, HiddenHandlesArePassedOver) {
    inner_.hide();
    ASSERT_TRUE(QTest::qWaitFor([this] { return !outer_.handle(1)->isVisible(); }));
    FocusNextHandle(window_);
    EXPECT_EQ(window_.focusWidget(), &field_) << "with one part there is nothing to move";
}

TEST_P(SplitterTest, TabGoesFromPartToPart) {
    for (int i = 0; i < 5; ++i) {
        Press(Qt::Key_Tab);
        EXPECT_FALSE(qobject_cast<QSplitterHandle*>(window_.focusWidget()));
    }
}

TEST_P(SplitterTest, OtherKeysBelongToTheWindow) {
    ReachOuter();
    const int before = First();
    Press(GetParam() == Qt::Horizontal ? Qt::Key_Up : Qt::Key_Left);
    Press(Qt::Key_A);
    EXPECT_EQ(First(), before);
}

}  // namespace
}  // namespace toolkit
