#include <QWindow>

#include "tests/forms/filter/filter_dialog.h"
#include "toolkit/message_box.h"

using toolkit_test::ExpectBox;

namespace forms {
namespace {

using Applying = FilterDialog;

struct Applied {
    std::int16_t mode;
    const char *size, *time;  // the relation that is chosen, or none
    const char* caption;
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
    EXPECT_EQ(captions_, QStringList{QString::fromUtf8(row.caption)});

    Open();
    EXPECT_EQ(SizeRow(), row.size_row);
    EXPECT_EQ(TimeRow(), row.time_row);
}

INSTANTIATE_TEST_SUITE_P(
    All, Modes,
    ::testing::Values(Applied{0, nullptr, nullptr,
                              "Visar filer oavsett 'senast ändrad' och 'storlek'. Klicka här för att ändra!",
                              kDefaultSizeRow, kDefaultTimeRow},
                      Applied{1, "Större än", nullptr,
                              "FILTER=  Filstorlek större än 2 KB. Klicka här för att ändra!",
                              "x Större än 2048 Bytes", kDefaultTimeRow},
                      Applied{2, "Mindre än", nullptr,
                              "FILTER=  Filstorlek mindre än 2 KB. Klicka här för att ändra!",
                              "x Mindre än 2048 Bytes", kDefaultTimeRow},
                      Applied{3, nullptr, "Senare än",
                              "FILTER=  Ändrad senare än 2001-12-31, 07:59:00. Klicka här för att ändra!",
                              kDefaultSizeRow, "x Senare än 2001-12-31 07:59"},
                      Applied{4, nullptr, "Tidigare än",
                              "FILTER=  Ändrad tidigare än 2001-12-31, 07:59:00. Klicka här för att ändra!",
                              kDefaultSizeRow, "x Tidigare än 2001-12-31 07:59"},
                      Applied{5, "Större än", "Senare än",
                              "FILTER=  Större: 2 KB, senare: 2001-12-31. Klicka här för att ändra!",
                              "x Större än 2048 Bytes", "x Senare än 2001-12-31 07:59"},
                      Applied{6, "Större än", "Tidigare än",
                              "FILTER=  Större: 2 KB, tidigare: 2001-12-31. Klicka här för att ändra!",
                              "x Större än 2048 Bytes", "x Tidigare än 2001-12-31 07:59"},
                      Applied{7, "Mindre än", "Senare än",
                              "FILTER=  Mindre: 2 KB, senare: 2001-12-31. Klicka här för att ändra!",
                              "x Mindre än 2048 Bytes", "x Senare än 2001-12-31 07:59"},
                      Applied{8, "Mindre än", "Tidigare än",
                              "FILTER=  Mindre: 2 KB, tidigare: 2001-12-31. Klicka här för att ändra!",
                              "x Mindre än 2048 Bytes", "x Tidigare än 2001-12-31 07:59"}));

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
    EXPECT_EQ(captions_,
              QStringList{"Visar filer oavsett 'senast ändrad' och 'storlek'. Klicka här för att ändra!"});
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
    EXPECT_EQ(captions_,
              QStringList{"FILTER=  Större: 1 Bytes, senare: 1999-01-01. Klicka här för att ändra!"});
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
    EXPECT_EQ(captions_, QStringList{"FILTER=  Filstorlek större än abc Bytes. Klicka här för att ändra!"});
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
        EXPECT_EQ(captions_, QStringList{"FILTER=  Filstorlek större än 7 Bytes. Klicka här för att ändra!"});
        EXPECT_EQ(Entries("bytes").size(), 8) << "the list does not take in what is typed";
    }
}

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
    EXPECT_EQ(captions_,
              QStringList{"FILTER=  Större: 5 Bytes, senare: 1999-02-28. Klicka här för att ändra!"});
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
    EXPECT_EQ(captions_, QStringList{"FILTER=  Filstorlek större än 750 MB. Klicka här för att ändra!"});
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
