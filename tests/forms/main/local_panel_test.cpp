#include <QLineEdit>
#include <ctime>

#include "tests/forms/main/main_window.h"
#include "toolkit/wrapped_label.h"

namespace forms {
namespace {

using LocalPanel = MainWindow;

QString Title(const char* rest) {
    return QStringLiteral("Websmide's FTP-program 3.0") + QString::fromUtf8(rest);
}

TEST_F(LocalPanel, ARowTellsSizeAndTimeInWords) {
    MakeFile("a.txt", 48213);
    QFile file(files_.filePath("a.txt"));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(
        file.setFileTime(QDateTime(QDate(2024, 3, 12), QTime(14, 30)), QFileDevice::FileModificationTime));
    file.close();
    Open();
    const QAbstractItemModel& rows = *Get<QAbstractItemView>("list2").model();
    const auto told = [&rows](int column, int role) {
        return rows.index(0, column).data(role).toString().replace(QChar::Nbsp, u' ');
    };
    const QString words = "48 213 byte (47,1 kB)\nsenast ändrad tisdag 12 mars 2024 kl. 14.30";
    for (int column = 0; column < 3; ++column)
        EXPECT_EQ(told(column, Qt::ToolTipRole), toolkit::PlainToolTip("a.txt\n" + words));
    EXPECT_EQ(told(0, Qt::AccessibleDescriptionRole), words);
}

TEST_F(LocalPanel, ListsTheCurrentFolderInLowerCaseAndNoFolders) {
    MakeFile(QStringLiteral("Index.HTML"), 100);
    MakeFile(QStringLiteral("ÅTERBUD.txt"), 2048);
    ASSERT_TRUE(QDir(files_.path()).mkdir(QStringLiteral("Bilder")));
    Open();
    EXPECT_EQ(Get<toolkit::DirListBox>("Dir1").Path(), Folder());
    EXPECT_EQ(Names(), (QStringList{QStringLiteral("index.html"), QStringLiteral("återbud.txt")}));

    const QAbstractItemModel& rows = *Get<toolkit::ListView>("list2").model();
    EXPECT_EQ(rows.headerData(0, Qt::Horizontal).toString(), QStringLiteral("Filnamn"));
    EXPECT_EQ(rows.headerData(1, Qt::Horizontal).toString(), QStringLiteral("Storlek"));
    EXPECT_EQ(rows.headerData(2, Qt::Horizontal).toString(), QStringLiteral("Senast ändrad"));
    EXPECT_EQ(rows.index(1, 1).data().toString(), QStringLiteral("2048"));
    const QDateTime changed = QFileInfo(files_.filePath(QStringLiteral("Index.HTML"))).lastModified();
    EXPECT_EQ(rows.index(0, 2).data().toString(), changed.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
}

TEST_F(LocalPanel, SelectionSetsTheButtonsAndTheTitle) {
    MakeFile(QStringLiteral("a.bin"), 320 * 1024);
    MakeFile(QStringLiteral("b.bin"), 511);
    MakeFile(QStringLiteral("c.bin"), 512);
    Open();
    const char* const of_one[] = {"Command4", "Command5", "Command6", "Command8"};
    for (const char* name : of_one) EXPECT_FALSE(Button(name).isEnabled()) << name;

    ClickRow("list2", 0);
    for (const char* name : of_one) EXPECT_TRUE(Button(name).isEnabled()) << name;
    EXPECT_FALSE(Button("Command1").isEnabled()) << "no connection is open";
    EXPECT_EQ(window_->windowTitle(), Title("   -   320 KB  =  ca 2 min     =  101 sek med 28.8"));
    EXPECT_EQ(Get<toolkit::ListBox>("List1").SelectedRows(), QList{0});

    ClickRow("list2", 1, Qt::ControlModifier);
    for (const char* name : of_one) EXPECT_FALSE(Button(name).isEnabled()) << name;
    EXPECT_EQ(app::Globals().SelectionKilobytes, 320) << "less than half a kilobyte adds nothing";

    ClickRow("list2", 2, Qt::ControlModifier);
    EXPECT_EQ(app::Globals().SelectionKilobytes, 321);

    ClickRow("list2", 1);
    for (const char* name : of_one) EXPECT_TRUE(Button(name).isEnabled()) << name;
    EXPECT_EQ(window_->windowTitle(), Title("   -   0 KB  =  ca 0 min     =  1 sek med 28.8"));
}

TEST_F(LocalPanel, AClickBesideTheRowsSelectsNothingAndStillSetsTheTitle) {
    MakeFile(QStringLiteral("a.bin"), 4096);
    Open();
    ClickRow("list2", 0);
    auto& list = Get<toolkit::ListView>("list2");
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, QPoint(5, list.viewport()->height() - 3));
    EXPECT_EQ(list.SelCount(), 0);
    EXPECT_EQ(window_->windowTitle(), Title("   -   0 KB  =  ca 0 min     =  1 sek med 28.8"));
}

TEST_F(LocalPanel, UploadIsEnabledWhileAConnectionIsOpenUntilTheListIsRebuilt) {
    MakeFile(QStringLiteral("a.bin"), 1);
    Open();
    Button("Command16").setEnabled(true);
    ClickRow("list2", 0);
    EXPECT_TRUE(Button("Command1").isEnabled());
    ClickOn("Command7");
    for (const char* name : {"Command1", "Command4", "Command5", "Command6", "Command8"})
        EXPECT_FALSE(Button(name).isEnabled()) << name;
    EXPECT_EQ(Get<toolkit::ListView>("list2").SelCount(), 0);
}

TEST_F(LocalPanel, KeyboardSelectionIsASelection) {
    MakeFile(QStringLiteral("a.bin"), 1024);
    MakeFile(QStringLiteral("b.bin"), 2048);
    Open();
    ClickRow("list2", 0);
    QTest::keyClick(&Get("list2"), Qt::Key_Down);
    EXPECT_EQ(app::Globals().SelectionKilobytes, 2);
    QTest::keyClick(&Get("list2"), Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(app::Globals().SelectionKilobytes, 3);
}

TEST_F(LocalPanel, ThePatternIsAppliedByEnterAndByAClick) {
    for (const char* name : {"a.htm", "b.html", "c.txt"}) MakeFile(QString::fromLatin1(name), 1);
    Open();
    auto& pattern = Get<QComboBox>("Text1");
    QStringList patterns;
    for (int i = 0; i < pattern.count(); ++i) patterns.append(pattern.itemText(i));
    EXPECT_EQ(patterns.join(QLatin1Char(' ')), QStringLiteral("*.* *.exe *.htm* *.txt *.zip"));

    pattern.lineEdit()->selectAll();
    QTest::keyClicks(pattern.lineEdit(), QStringLiteral("*.HTM*"));
    EXPECT_EQ(Names().size(), 3) << "not before Enter";
    QTest::keyClick(pattern.lineEdit(), Qt::Key_Return);
    EXPECT_EQ(Names(), (QStringList{QStringLiteral("a.htm"), QStringLiteral("b.html")}));

    MakeFile(QStringLiteral("d.htm"), 1);
    QTest::mouseClick(pattern.lineEdit(), Qt::LeftButton);
    EXPECT_EQ(Names().size(), 3);

    pattern.lineEdit()->selectAll();
    QTest::keyClick(pattern.lineEdit(), Qt::Key_Delete);
    QTest::keyClick(pattern.lineEdit(), Qt::Key_Return);
    EXPECT_EQ(Names().size(), 4) << "an empty pattern lists all files";
}

class Filter : public LocalPanel {
 protected:
    void MakeFileOf(const QString& name, qint64 size, const QDateTime& changed) {
        MakeFile(name, size);
        QFile file(files_.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(changed, QFileDevice::FileModificationTime));
    }

    void SetFilterTime(QDate date, const char* time) {
        app::Globals().FilterTime = date.startOfDay();
        app::Globals().FilterTimeValue = QString::fromLatin1(time);
    }

    /// What the list shows, one name after the other.
    std::string Listed(std::int16_t mode) {
        app::Globals().FilterMode = mode;
        window_->Dir1_Change();
        return Names().join(u' ').toStdString();
    }
};

// Each file is named by its size and its time: less than, equal to or greater than the filter's.
TEST_F(Filter, ListsWhatEachModeAsksFor) {
    const QDate day(1999, 4, 6);
    const struct {
        char16_t letter;
        qint64 size;
        QTime time;
    } standings[] = {{u'a', 99, {12, 29}}, {u'b', 100, {12, 30}}, {u'c', 101, {12, 31}}};
    for (const auto& size : standings)
        for (const auto& time : standings)
            MakeFileOf(QString(QChar(size.letter)) + QChar(time.letter), size.size, {day, time.time});
    app::Globals().FilterSizeBytes = 100;
    SetFilterTime(day, "12:30:00");
    Open();
    EXPECT_EQ(Listed(0), "aa ab ac ba bb bc ca cb cc");
    EXPECT_EQ(Listed(1), "ca cb cc");
    EXPECT_EQ(Listed(2), "aa ab ac");
    EXPECT_EQ(Listed(3), "ac bc cc");
    EXPECT_EQ(Listed(4), "aa ba ca");
    EXPECT_EQ(Listed(5), "cc");
    EXPECT_EQ(Listed(6), "ca");
    EXPECT_EQ(Listed(7), "ac");
    EXPECT_EQ(Listed(8), "aa");
}

TEST_F(Filter, IsInForceWhenTheWindowOpens) {
    MakeFile(QStringLiteral("100"), 100);
    MakeFile(QStringLiteral("101"), 101);
    app::Globals().FilterMode = 1;
    app::Globals().FilterSizeBytes = 100;
    Open();
    EXPECT_EQ(Names(), QStringList{QStringLiteral("101")});
}

TEST_F(Filter, ComparesTimesToTheMinute) {
    const QDate day(1999, 4, 6);
    MakeFileOf(QStringLiteral("before"), 1, {day, {12, 29, 59}});
    MakeFileOf(QStringLiteral("first"), 1, {day, {12, 30, 0}});
    MakeFileOf(QStringLiteral("last"), 1, {day, {12, 30, 59}});
    MakeFileOf(QStringLiteral("next"), 1, {day, {12, 31, 0}});
    SetFilterTime(day, "12:30:00");
    Open();
    EXPECT_EQ(Listed(3), "next");
    EXPECT_EQ(Listed(4), "before");
}

TEST_F(Filter, ComparesDaysBeforeHours) {
    MakeFileOf(QStringLiteral("day_before"), 1, {{1999, 4, 5}, {23, 59}});
    MakeFileOf(QStringLiteral("day_after"), 1, {{1999, 4, 7}, {0, 0}});
    SetFilterTime({1999, 4, 6}, "12:30:00");
    Open();
    EXPECT_EQ(Listed(3), "day_after");
    EXPECT_EQ(Listed(4), "day_before");
}

/// Local time as a rule of the system has it, until this ends.
class TimeZone {
 public:
    explicit TimeZone(const char* rule) {
        qputenv("TZ", rule);
        tzset();
    }
    ~TimeZone() {
        if (before_.isNull())
            qunsetenv("TZ");
        else
            qputenv("TZ", before_);
        tzset();
    }

 private:
    const QByteArray before_ = qgetenv("TZ");
};

// The filter asks for what the clock shows, also where the clock never showed it.
TEST_F(Filter, KnowsTheHourThatSummerTimeLeavesOut) {
    const TimeZone swedish("CET-1CEST,M3.5.0,M10.5.0/3");
    const QDate day(2016, 3, 27);
    MakeFileOf(QStringLiteral("before"), 1, {day, {1, 40}});
    MakeFileOf(QStringLiteral("after"), 1, {day, {3, 10}});
    SetFilterTime(day, "02:30:00");
    Open();
    EXPECT_EQ(Listed(3), "after");
    EXPECT_EQ(Listed(4), "before");
}

TEST_F(LocalPanel, ARowActsOnTheVeryFileItWasMadeFrom) {
    for (const char* name : {"Ensam.txt", "tvilling.txt", "Tvilling.txt", "MAPP"})
        MakeFile(QString::fromLatin1(name), 1);
    ASSERT_TRUE(QDir(files_.path()).mkdir(QStringLiteral("mapp")));
    Open();
    ASSERT_EQ(Names().size(), 4);
    QStringList native;
    for (int row = 0; row < 4; ++row) {
        const auto path = platform::Resolve(window_->LocalPathOfRow(row));
        ASSERT_TRUE(path);
        native.append(QFileInfo(QFile::decodeName(*path)).fileName());
    }
    native.sort();
    EXPECT_EQ(native.join(QLatin1Char(' ')), QStringLiteral("Ensam.txt MAPP Tvilling.txt tvilling.txt"));
    EXPECT_EQ(window_->LocalPathOfRow(0), Folder() + QStringLiteral("\\Ensam.txt"));
}

TEST_F(LocalPanel, OpeningAFolderListsIt) {
    ASSERT_TRUE(QDir(files_.path()).mkdir(QStringLiteral("bilder")));
    MakeFile(QStringLiteral("bilder/en.gif"), 1);
    Open();
    auto& folders = Get<toolkit::DirListBox>("Dir1");
    int row = 0;
    while (row < folders.ListCount() && folders.List(row) != Folder() + QStringLiteral("\\bilder")) ++row;
    const QModelIndex index = folders.model()->index(row, 0);
    folders.scrollTo(index);
    QTest::mouseDClick(folders.viewport(), Qt::LeftButton, {}, folders.visualRect(index).center());
    EXPECT_EQ(Names(), QStringList{QStringLiteral("en.gif")});
}

TEST_F(LocalPanel, F5ReadsTheFolderAgain) {
    Open();
    MakeFile(QStringLiteral("ny.txt"), 1);
    ASSERT_TRUE(QDir(files_.path()).mkdir(QStringLiteral("mapp")));
    auto& folders = Get<toolkit::DirListBox>("Dir1");
    const int before = folders.ListCount();
    folders.setFocus();
    QTest::keyClick(&folders, Qt::Key_F5);
    EXPECT_EQ(Names(), QStringList{QStringLiteral("ny.txt")});
    EXPECT_EQ(folders.ListCount(), before + 1);
}

}  // namespace
}  // namespace forms
