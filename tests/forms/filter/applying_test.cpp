#include <QWindow>

#include "tests/forms/filter/filter_dialog.h"

namespace forms {
namespace {

using Applying = FilterDialog;

struct Applied {
    std::int16_t mode;
    const char *size, *time;          // the relation that is chosen, or none
    const char *size_row, *time_row;  // in the dialog opened again
};

void PrintTo(const Applied& row, std::ostream* out) {
    *out << "mode " << row.mode;
}

class Modes : public FilterDialog, public ::testing::WithParamInterface<Applied> {};

TEST_P(Modes, AreStoredAndShownAgain) {
    const Applied& row = GetParam();
    Open();
    if (row.size) {
        Choose("storlek", QString::fromUtf8(row.size));
        TypeNumber(QStringLiteral("2"));
        Choose("typ", QStringLiteral("KB"));
    }
    if (row.time) {
        Choose("när", QString::fromUtf8(row.time));
        ChooseDay("2001", "12", "31");
        Choose("timme", QStringLiteral("07"));
        Choose("minut", QStringLiteral("59"));
    }
    ClickOn("Command1");
    EXPECT_FALSE(dialog_->isVisible());
    EXPECT_TRUE(window_.isEnabled());
    const app::ftpglob& filter = app::Globals();
    EXPECT_EQ(filter.FilterMode, row.mode);
    EXPECT_EQ(filter.FilterSizeBytes, row.size ? 2048 : 0);
    EXPECT_EQ(filter.FilterTime, row.time ? QDateTime(QDate(2001, 12, 31), QTime(0, 0)) : QDateTime());
    EXPECT_EQ(filter.FilterTimeValue, row.time ? "07:59:00" : "");
    EXPECT_EQ(captions_, QStringList{FilterCaption(
                             row.mode, {"2", "KB", QDate(2001, 12, 31), QStringLiteral("07:59:00")})});

    Open();
    EXPECT_EQ(SizeRow(), row.size_row);
    EXPECT_EQ(TimeRow(), row.time_row);
}

INSTANTIATE_TEST_SUITE_P(
    All, Modes,
    ::testing::Values(
        Applied{0, nullptr, nullptr, kDefaultSizeRow, kDefaultTimeRow},
        Applied{1, "Större än", nullptr, "x Större än 2048 Bytes", kDefaultTimeRow},
        Applied{2, "Mindre än", nullptr, "x Mindre än 2048 Bytes", kDefaultTimeRow},
        Applied{3, nullptr, "Senare än", kDefaultSizeRow, "x Senare än 2001-12-31 07:59"},
        Applied{4, nullptr, "Tidigare än", kDefaultSizeRow, "x Tidigare än 2001-12-31 07:59"},
        Applied{5, "Större än", "Senare än", "x Större än 2048 Bytes", "x Senare än 2001-12-31 07:59"},
        Applied{6, "Större än", "Tidigare än", "x Större än 2048 Bytes", "x Tidigare än 2001-12-31 07:59"},
        Applied{7, "Mindre än", "Senare än", "x Mindre än 2048 Bytes", "x Senare än 2001-12-31 07:59"},
        Applied{8, "Mindre än", "Tidigare än", "x Mindre än 2048 Bytes", "x Tidigare än 2001-12-31 07:59"}));

TEST_F(Applying, FieldsWhoseBoxIsNotTickedAreLeftOut) {
    app::Globals().FilterMode = 5;
    app::Globals().FilterSizeBytes = 77;
    app::Globals().FilterTime = QDate(2001, 12, 31).startOfDay();
    app::Globals().FilterTimeValue = QStringLiteral("07:59:00");
    Open();
    TypeNumber(QStringLiteral("5"));
    Choose("dag", QStringLiteral("01"));
    ClickBox("Check1");
    ClickBox("Check2");
    ClickOn("Command1");
    EXPECT_EQ(app::Globals().FilterMode, 0);
    EXPECT_EQ(app::Globals().FilterSizeBytes, 77);
    EXPECT_EQ(app::Globals().FilterTime.date(), QDate(2001, 12, 31));
    EXPECT_EQ(captions_, QStringList{FilterCaption(0, {})});
}

TEST_F(Applying, ATickAloneTakesTheDefaults) {
    Open();
    ClickBox("Check1");
    ClickBox("Check2");
    ClickOn("Command1");
    EXPECT_EQ(app::Globals().FilterMode, 5);
    EXPECT_EQ(app::Globals().FilterSizeBytes, 1);
    EXPECT_EQ(app::Globals().FilterTime.date(), QDate(1999, 1, 1));
    EXPECT_EQ(app::Globals().FilterTimeValue, "12:30:00");
    EXPECT_EQ(captions_, QStringList{FilterCaption(5, {"1", "Bytes", QDate(1999, 1, 1), {}})});
}

TEST_F(Applying, TheCaptionIsWrittenWhileTheMainWindowIsStillDisabled) {
    bool asked = false;
    dialog_ = std::make_unique<Form3>(FilterHost{window_, [&](const QString&) {
                                                     asked = true;
                                                     EXPECT_FALSE(window_.isEnabled());
                                                     EXPECT_EQ(app::Globals().FilterMode, 1);
                                                 }});
    dialog_->Form_Load();
    WaitForDialog();
    ClickBox("Check2");
    ClickOn("Command1");
    EXPECT_TRUE(asked);
    EXPECT_TRUE(window_.isEnabled());
}

TEST_F(Applying, ATextThatIsNoNumberIsZeroAndStandsInTheCaption) {
    app::Globals().FilterSizeBytes = 77;
    Open();
    TypeNumber(QStringLiteral("abc"));
    ClickOn("Command1");
    EXPECT_EQ(app::Globals().FilterMode, 1);
    EXPECT_EQ(app::Globals().FilterSizeBytes, 0);
    EXPECT_EQ(captions_, QStringList{FilterCaption(1, {"abc", "Bytes", {}, {}})});
}

TEST_F(Applying, IsDoneByTheKeyboard) {
    const std::function<void()> ways[] = {
        [this] { QTest::keyClick(&BytesField(), Qt::Key_Return); },
        [this] { QTest::keyClick(&List("minut"), Qt::Key_Enter); },
        [this] { QTest::keyClick(dialog_->windowHandle(), Qt::Key_V, Qt::AltModifier); },
    };
    for (const auto& apply : ways) {
        app::Globals() = {};
        captions_.clear();
        Open();
        TypeNumber(QStringLiteral("7"));
        apply();
        ASSERT_TRUE(QTest::qWaitFor([this] { return !dialog_->isVisible(); }));
        EXPECT_EQ(app::Globals().FilterSizeBytes, 7);
        EXPECT_EQ(captions_, QStringList{FilterCaption(1, {"7", "Bytes", {}, {}})});
        EXPECT_EQ(Entries("bytes").size(), 8) << "the list does not take in what is typed";
    }
}

}  // namespace
}  // namespace forms
