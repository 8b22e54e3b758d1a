#include <QGroupBox>
#include <QLabel>
#include <QWindow>

#include "tests/forms/filter/filter_dialog.h"

namespace forms {
namespace {

using Window = FilterDialog;

QStringList Numbers(int first, int last) {
    QStringList texts;
    for (int number = first; number <= last; ++number)
        texts.append((number < 10 ? QStringLiteral("0") : QString()) + QString::number(number));
    return texts;
}

TEST_F(Window, HasItsCaptions) {
    Open();
    EXPECT_EQ(dialog_->objectName(), "Form3");
    EXPECT_EQ(dialog_->windowTitle(), "Filter för fillistan");
    EXPECT_EQ(Get<QLabel>("Label2").text(), "Filfilter");
    EXPECT_EQ(Get<QGroupBox>("Frame1").title(), "Inställningar");
    EXPECT_EQ(Get<QCheckBox>("Check2").text(), "Filstorlek");
    EXPECT_EQ(Get<QCheckBox>("Check1").text(), "Senast ändrad");
    EXPECT_EQ(Get<QPushButton>("Command1").text(), "&Välj filter!");
    EXPECT_EQ(Get<QPushButton>("Command2").text(), "&Avbryt");
    EXPECT_EQ(List("minut").placeholderText(), "Minut");
    EXPECT_EQ(List("timme").placeholderText(), "Timma");
    EXPECT_EQ(List("dag").placeholderText(), "Dag");
    EXPECT_EQ(List("månad").placeholderText(), "Månad");
    EXPECT_EQ(List("år").placeholderText(), "År");
}

TEST_F(Window, HasItsLists) {
    Open();
    EXPECT_EQ(Entries("bytes"), QStringList({"1", "5", "10", "50", "100", "250", "500", "750"}));
    EXPECT_EQ(Entries("typ"), QStringList({"Bytes", "KB", "MB", "GB"}));
    EXPECT_EQ(Entries("storlek"), QStringList({"Större än", "Mindre än"}));
    EXPECT_EQ(Entries("när"), QStringList({"Senare än", "Tidigare än"}));
    EXPECT_EQ(Entries("år"), Numbers(1990, 2020));
    EXPECT_EQ(Entries("månad"), Numbers(1, 12));
    EXPECT_EQ(Entries("dag"), Numbers(1, 31));
    EXPECT_EQ(Entries("timme"), Numbers(0, 23));
    EXPECT_EQ(Entries("minut"), Numbers(0, 59));
    EXPECT_TRUE(List("bytes").isEditable());
    for (const char* list : {"typ", "storlek", "när", "år", "månad", "dag", "timme", "minut"})
        EXPECT_FALSE(List(list).isEditable()) << list;
}

TEST_F(Window, OpensWithItsDefaultsOverTheMainWindow) {
    Open();
    EXPECT_EQ(SizeRow(), kDefaultSizeRow);
    EXPECT_EQ(TimeRow(), kDefaultTimeRow);
    EXPECT_FALSE(window_.isEnabled());
    EXPECT_EQ(dialog_->windowHandle()->transientParent(), window_.windowHandle());
    const QPoint off = dialog_->frameGeometry().center() - dialog_->screen()->availableGeometry().center();
    EXPECT_LE(off.manhattanLength(), 40);  // the window manager's frame comes later
}

// With other choices made, and with another filter in force.
TEST_F(Window, CancellingChangesNothing) {
    app::ftpglob& filter = app::Globals();
    filter.FilterMode = 1;
    filter.FilterSizeBytes = 77;
    filter.FilterTimeValue = QStringLiteral("10:10:00");
    Open();
    TypeNumber(QStringLiteral("5"));
    Choose("när", QStringLiteral("Tidigare än"));
    ClickOn("Command2");
    EXPECT_FALSE(dialog_->isVisible());
    EXPECT_EQ(filter.FilterMode, 1);
    EXPECT_EQ(filter.FilterSizeBytes, 77);
    EXPECT_FALSE(filter.FilterTime.isValid());
    EXPECT_EQ(filter.FilterTimeValue, "10:10:00");
    EXPECT_TRUE(captions_.isEmpty());
}

TEST_F(Window, TheKeyboardReachesEveryControlInTurn) {
    Open();
    const char* const order[] = {"Check2", "storlek", "bytes", "typ",   "Check1",   "när",     "år",
                                 "månad",  "dag",     "timme", "minut", "Command1", "Command2"};
    for (const char* name : order) {
        EXPECT_EQ(QApplication::focusWidget()->objectName(), QString::fromUtf8(name));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(QApplication::focusWidget()->objectName(), "Check2");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    EXPECT_TRUE(IsTicked("Check2"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    EXPECT_FALSE(IsTicked("Check2"));
}

TEST_F(Window, ALongListOpensUnderItsField) {
    Open();
    QComboBox& minutes = List("minut");
    minutes.setFocus();
    QTest::keyClick(&minutes, Qt::Key_F4);
    const QWidget& popup = *minutes.view()->window();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(minutes.view()->window()));
    EXPECT_LT(popup.height(), 16 * minutes.height());
    EXPECT_TRUE(minutes.view()->viewport()->rect().contains(
        minutes.view()->visualRect(minutes.view()->currentIndex())));
}

TEST_F(Window, EveryListHasAnAccessibleName) {
    Open();
    QSet<QString> names;
    for (const QComboBox* list : dialog_->findChildren<QComboBox*>()) names.insert(list->accessibleName());
    EXPECT_EQ(names.size(), 9);
    EXPECT_FALSE(names.contains(QString()));
}

TEST_F(Window, NothingIsClipped) {
    Open();
    for (const QWidget* control : dialog_->findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
        EXPECT_TRUE(dialog_->rect().contains(control->geometry())) << qUtf8Printable(control->objectName());
    for (const QWidget* control : Get("Frame1").findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        EXPECT_GE(control->width(), control->minimumSizeHint().width())
            << qUtf8Printable(control->objectName());
        EXPECT_GE(control->height(), control->sizeHint().height()) << qUtf8Printable(control->objectName());
        EXPECT_TRUE(Get("Frame1").rect().contains(control->geometry()))
            << qUtf8Printable(control->objectName());
    }
}

TEST_F(Window, AYearOutsideTheListIsNotShown) {
    app::Globals().FilterMode = 3;
    app::Globals().FilterTime = QDate(2021, 2, 3).startOfDay();
    app::Globals().FilterTimeValue = QStringLiteral("00:00:00");
    Open();
    EXPECT_EQ(TimeRow(), "x Senare än -02-03 00:00");
}

TEST_F(Window, OpenedAgainItStartsAfresh) {
    Open();
    TypeNumber(QStringLiteral("5"));
    Choose("minut", QStringLiteral("59"));
    dialog_->close();
    dialog_->Form_Load();
    WaitForDialog();
    EXPECT_EQ(SizeRow(), kDefaultSizeRow);
    EXPECT_EQ(TimeRow(), kDefaultTimeRow);
}

}  // namespace
}  // namespace forms
