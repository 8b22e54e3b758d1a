#include <QWindow>

#include "tests/forms/filter/filter_dialog.h"
#include "toolkit/message_box.h"

using toolkit_test::ExpectBox;

namespace forms {
namespace {

/// An apply that fails shows one box and leaves the dialog as it was.
class Failing : public FilterDialog {
 protected:
    void ExpectFailure(const char* text, const std::function<void()>& apply) {
        const auto size_row = SizeRow(), time_row = TimeRow();
        ExpectBox box(toolkit::kDefaultTitle, QString::fromLatin1(text), QStringLiteral("cmdOk"));
        apply();
        EXPECT_TRUE(QTest::qWaitFor([&box] { return box.HasCome(); }));
        EXPECT_TRUE(dialog_->isVisible());
        EXPECT_FALSE(window_.isEnabled());
        EXPECT_EQ(SizeRow(), size_row);
        EXPECT_EQ(TimeRow(), time_row);
        EXPECT_TRUE(captions_.isEmpty());
        WaitForDialog();
    }

    const std::function<void()> ways_[3] = {
        [this] { ClickOn("Command1"); },
        [this] { QTest::keyClick(&BytesField(), Qt::Key_Return); },
        [this] { QTest::keyClick(dialog_->windowHandle(), Qt::Key_V, Qt::AltModifier); },
    };
};

TEST_F(Failing, ADayThatTheCalendarDoesNotHave) {
    app::ftpglob& filter = app::Globals();
    filter.FilterMode = 1;
    filter.FilterSizeBytes = 77;
    Open();
    TypeNumber(QStringLiteral("5"));
    ChooseDay("1999", "02", "31");
    for (const auto& apply : ways_) {
        filter.FilterMode = 1;
        ExpectFailure("Inkompatibla typer", apply);
        EXPECT_EQ(filter.FilterMode, 0);
        EXPECT_EQ(filter.FilterSizeBytes, 77);
        EXPECT_FALSE(filter.FilterTime.isValid());
        EXPECT_EQ(filter.FilterTimeValue, "");
    }

    Choose("dag", QStringLiteral("28"));
    ClickOn("Command1");
    EXPECT_FALSE(dialog_->isVisible());
    EXPECT_TRUE(window_.isEnabled());
    EXPECT_EQ(filter.FilterMode, 5);
    EXPECT_EQ(filter.FilterTime.date(), QDate(1999, 2, 28));
    EXPECT_EQ(captions_, QStringList{FilterCaption(5, {"5", "Bytes", QDate(1999, 2, 28), {}})});
}

TEST_F(Failing, ASizeBeyondThirtyTwoBits) {
    app::ftpglob& filter = app::Globals();
    filter.FilterMode = 1;
    filter.FilterSizeBytes = 77;
    Open();
    TypeNumber(QStringLiteral("750"));
    Choose("typ", QStringLiteral("GB"));
    for (const auto& apply : ways_) {
        filter.FilterMode = 1;
        ExpectFailure("Spill", apply);
        EXPECT_EQ(filter.FilterMode, 0);
        EXPECT_EQ(filter.FilterSizeBytes, 77);
    }

    Choose("typ", QStringLiteral("MB"));
    ClickOn("Command1");
    EXPECT_FALSE(dialog_->isVisible());
    EXPECT_TRUE(window_.isEnabled());
    EXPECT_EQ(filter.FilterMode, 1);
    EXPECT_EQ(filter.FilterSizeBytes, 786432000);
    EXPECT_EQ(captions_, QStringList{FilterCaption(1, {"750", "MB", {}, {}})});
}

TEST_F(Failing, ASizeAfterATimeThatIsStored) {
    Open();
    TypeNumber(QStringLiteral("1e400"));
    Choose("när", QStringLiteral("Tidigare än"));
    ExpectFailure("Spill", ways_[0]);
    EXPECT_EQ(app::Globals().FilterMode, 4);
    EXPECT_EQ(app::Globals().FilterTime.date(), QDate(1999, 1, 1));
    EXPECT_EQ(app::Globals().FilterTimeValue, "12:30:00");
    EXPECT_EQ(app::Globals().FilterSizeBytes, 0);
    ClickOn("Command2");
    EXPECT_TRUE(window_.isEnabled());
    EXPECT_TRUE(captions_.isEmpty());
}

}  // namespace
}  // namespace forms
