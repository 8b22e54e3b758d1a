#include <QClipboard>

#include "tests/forms/filter/filter_dialog.h"

namespace forms {
namespace {

struct Control {
    const char *list, *box, *other_box;
};

void PrintTo(const Control& control, std::ostream* out) {
    *out << control.list;
}

class Choosing : public FilterDialog, public ::testing::WithParamInterface<Control> {
 protected:
    void SetUp() override {
        FilterDialog::SetUp();
        Open();
    }

    void ExpectItsBoxTicked() {
        EXPECT_TRUE(IsTicked(GetParam().box));
        EXPECT_FALSE(IsTicked(GetParam().other_box));
    }
};

TEST_P(Choosing, AnotherValueTicks) {
    Choose(GetParam().list, Entries(GetParam().list).at(1));
    ExpectItsBoxTicked();
}

TEST_P(Choosing, TheSameValueTicks) {
    Choose(GetParam().list, Text(GetParam().list));
    ExpectItsBoxTicked();
}

TEST_P(Choosing, ByTheArrowKeysTicks) {
    QComboBox& list = List(GetParam().list);
    list.setFocus();
    const int before = list.currentIndex();
    QTest::keyClick(&list, Qt::Key_Down);
    EXPECT_EQ(list.currentIndex(), before + 1);
    ExpectItsBoxTicked();
}

TEST_P(Choosing, NeverUnticks) {
    ClickBox(GetParam().box);
    ClickBox(GetParam().other_box);
    Choose(GetParam().list, Entries(GetParam().list).at(1));
    EXPECT_TRUE(IsTicked(GetParam().box));
    EXPECT_TRUE(IsTicked(GetParam().other_box));
}

TEST_P(Choosing, TicksAgainWhatTheUserHasUnticked) {
    const QString value = Entries(GetParam().list).at(1);
    Choose(GetParam().list, value);
    ClickBox(GetParam().box);
    EXPECT_FALSE(IsTicked(GetParam().box));
    Choose(GetParam().list, value);
    ExpectItsBoxTicked();
}

TEST_P(Choosing, GivenUpTicksNothing) {
    QComboBox& list = List(GetParam().list);
    list.setFocus();
    QTest::keyClick(&list, Qt::Key_F4);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(list.view()->window()));
    QTest::keyClick(list.view(), Qt::Key_Escape);
    ASSERT_TRUE(QTest::qWaitFor([&list] { return !list.view()->isVisible(); }));
    EXPECT_TRUE(dialog_->isVisible());
    EXPECT_EQ(SizeRow(), kDefaultSizeRow);
    EXPECT_EQ(TimeRow(), kDefaultTimeRow);
}

INSTANTIATE_TEST_SUITE_P(
    Controls, Choosing,
    ::testing::Values(Control{"bytes", "Check2", "Check1"}, Control{"storlek", "Check2", "Check1"},
                      Control{"typ", "Check2", "Check1"}, Control{"när", "Check1", "Check2"},
                      Control{"år", "Check1", "Check2"}, Control{"månad", "Check1", "Check2"},
                      Control{"dag", "Check1", "Check2"}, Control{"timme", "Check1", "Check2"},
                      Control{"minut", "Check1", "Check2"}));

using Typing = FilterDialog;

TEST_F(Typing, ANumberTicks) {
    Open();
    List("bytes").setFocus();
    QTest::keyClick(&BytesField(), Qt::Key_End);
    EXPECT_FALSE(IsTicked("Check2"));
    QTest::keyClick(&BytesField(), Qt::Key_7);
    EXPECT_EQ(SizeRow(), "x Större än 17 Bytes");
    EXPECT_FALSE(IsTicked("Check1"));
}

TEST_F(Typing, RemovingTheNumberTicks) {
    Open();
    List("bytes").setFocus();
    QTest::keyClick(&BytesField(), Qt::Key_End);
    QTest::keyClick(&BytesField(), Qt::Key_Backspace);
    EXPECT_EQ(SizeRow(), "x Större än  Bytes");
}

TEST_F(Typing, IsNotFinishedFromTheList) {
    Open();
    TypeNumber(QStringLiteral("7"));
    EXPECT_EQ(Text("bytes"), "7");
    QTest::keyClick(&BytesField(), Qt::Key_Tab);
    EXPECT_EQ(Text("bytes"), "7");
    EXPECT_EQ(Entries("bytes").size(), 8);
}

TEST_F(Typing, ANumberEndsAtThirtyTwoCharacters) {
    Open();
    const QString number(32, u'1');
    TypeNumber(number);
    QTest::keyClick(&BytesField(), Qt::Key_2);
    EXPECT_EQ(Text("bytes"), number);
    QApplication::clipboard()->setText(QString(40, u'3'));
    BytesField().selectAll();
    QTest::keyClick(&BytesField(), Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(Text("bytes"), QString(32, u'3'));
}

TEST_F(Typing, AYearChoosesIt) {
    Open();
    List("år").setFocus();
    QTest::keyClicks(&List("år"), QStringLiteral("2001"));
    EXPECT_EQ(TimeRow(), "x Senare än 2001-01-01 12:30");
    EXPECT_FALSE(IsTicked("Check2"));
}

// The field chooses an entry by itself when it is left with the entry's text.
TEST_F(Typing, PassingARestoredNumberTicksNothing) {
    for (const std::int64_t stored : {1, 500, 501}) {
        app::Globals().FilterMode = 1;
        app::Globals().FilterSizeBytes = stored;
        Open();
        ClickBox("Check2");
        List("bytes").setFocus();
        QTest::keyClick(&BytesField(), Qt::Key_Tab);
        EXPECT_EQ(QApplication::focusWidget(), &List("typ"));
        EXPECT_FALSE(IsTicked("Check2")) << stored;
        EXPECT_EQ(Text("bytes"), QString::number(stored));
        dialog_->close();
    }
}

}  // namespace
}  // namespace forms
