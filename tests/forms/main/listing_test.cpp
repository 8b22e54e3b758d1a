#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QToolTip>

#include "tests/forms/main/main_window.h"

namespace forms {
namespace {

class Listing : public MainWindow {
 protected:
    ftp::Component& Ftp1() { return *window_->findChild<ftp::Component*>(QStringLiteral("Ftp1")); }

    void List(const QStringList& lines) {
        window_->ClearServerLists();
        for (const QString& line : lines) Q_EMIT Ftp1().DirItem(line);
        window_->BuildServerList();
    }

    // The rows that are marked when the letters have been typed in a run.
    QList<int> ChosenBy(const QString& letters) {
        auto& list = Get<toolkit::ListView>("listdir2");
        const int interval = QApplication::keyboardInputInterval();
        QApplication::setKeyboardInputInterval(0);
        for (const QChar letter : letters) {
            QTest::sendKeyEvent(QTest::Click, &list, static_cast<Qt::Key>(letter.toUpper().unicode()), letter,
                                {});
            QApplication::setKeyboardInputInterval(60'000);
        }
        QApplication::setKeyboardInputInterval(interval);
        return list.SelectedRows();
    }

    QStringList Rows(const char* list) {
        const QAbstractItemModel& model = *Get<QAbstractItemView>(list).model();
        QStringList rows;
        for (int row = 0; row < model.rowCount(); ++row) rows.append(model.index(row, 0).data().toString());
        return rows;
    }

    QImage PictureOf(int row) {
        const QVariant icon =
            Get<QAbstractItemView>("listdir2").model()->index(row, 0).data(Qt::DecorationRole);
        return icon.value<QIcon>().pixmap(16).toImage();
    }
};

TEST_F(Listing, ShowsTheRawLinesWithoutTheSummary) {
    Open();
    const QString file = QStringLiteral("-rw-r--r-- 1 u g 100 Jan 1 10:00 Index.HTML");
    List({QStringLiteral("total 24"), file, QStringLiteral("Total 24")});
    EXPECT_EQ(Rows("listdir2"), (QStringList{file, QStringLiteral("Total 24")}));
    EXPECT_EQ(Rows("listDir"), Rows("listdir2"));
    List({});
    EXPECT_EQ(Rows("listdir2"), QStringList());
}

TEST_F(Listing, ShowsNothingBeforeItIsWhole) {
    Open();
    List({QStringLiteral("-rw 1 old.txt")});
    window_->ClearServerLists();
    Q_EMIT Ftp1().DirItem(QStringLiteral("-rw 1 new.txt"));
    EXPECT_EQ(Rows("listdir2"), QStringList());
    window_->BuildServerList();
    EXPECT_EQ(Rows("listdir2"), QStringList{QStringLiteral("-rw 1 new.txt")});
}

TEST_F(Listing, HasAPictureOfItsOwnForEachKindOfRow) {
    const std::pair<const char*, const char*> kinds[] = {
        {"-rw-r--r-- 1 u g 1 Jan 1 10:00 a.HTML", "kind1_text"},
        {"lrwxrwxrwx 1 u g 7 Jan 1 10:00 www -> htdocs", "kind2_folder"},
        {"-rw-r--r-- 1 u g 1 Jan 1 10:00 a.bin", "kind3_file"},
        {"-rw-r--r-- 1 u g 1 Jan 1 10:00 a.gif", "kind4_image"},
        {"-rw-r--r-- 1 u g 1 Jan 1 10:00 a.mid", "kind5_sound"},
        {"drwxr-xr-x 2 u g 512 Jan 1 10:00 ..", "kind6_parent"},
        {"drwxr-xr-x 2 u g 512 Jan 1 10:00 .", "kind7_dotted_folder"},
        {"-rw-r--r-- 1 u g 1 Jan 1 10:00 a.zip", "kind8_archive"},
        {"-rw-r--r-- 1 u g 1 Jan 1 10:00 a.exe", "kind9_program"},
    };
    Open();
    QStringList lines;
    for (const auto& [line, picture] : kinds) lines.append(QString::fromLatin1(line));
    List(lines);
    for (int row = 0; row < lines.size(); ++row) {
        const QString file =
            QStringLiteral(":/main/") + QString::fromLatin1(kinds[row].second) + QStringLiteral(".svg");
        const QImage expected = QIcon(file).pixmap(16).toImage();
        ASSERT_FALSE(expected.isNull()) << qPrintable(file);
        EXPECT_EQ(PictureOf(row), expected) << qPrintable(file);
    }
}

TEST_F(Listing, SelectsNoRowByItself) {
    Open();
    List({QStringLiteral("-rw 1 a.txt"), QStringLiteral("-rw 1 b.txt")});
    EXPECT_EQ(Get<toolkit::ListView>("listdir2").SelCount(), 0);
    EXPECT_EQ(Get<toolkit::ListView>("listdir2").ListIndex(), 0) << "where the keyboard begins";
    EXPECT_EQ(window_->SelectedServerName(), QString());
}

TEST_F(Listing, TheNameIsWhatFollowsTheLastBlank) {
    Open();
    List({QStringLiteral("lrwxrwxrwx 1 u g 7 Jan 1 10:00 www -> htdocs"),
          QStringLiteral("-rw-r--r-- 1 u g 7 Jan 1 10:00 my page.htm")});
    ClickRow("listdir2", 0);
    EXPECT_EQ(window_->SelectedServerName(), QStringLiteral("htdocs"));
    EXPECT_EQ(Get<toolkit::ListBox>("listDir").SelectedRows(), QList{0});
    ClickRow("listdir2", 1);
    EXPECT_EQ(window_->SelectedServerName(), QStringLiteral("page.htm"));
}

// Their beginnings are alike, whatever they are called.
TEST_F(Listing, TypingFindsTheNextRowByItsName) {
    Open();
    List({QStringLiteral("drwxr-xr-x 2 u g 512 Jan 1 10:00 arkiv"),
          QStringLiteral("-rw-r--r-- 1 u g 7 Jan 1 10:00 Bild.gif"),
          QStringLiteral("-rw-r--r-- 1 u g 7 Jan 1 10:00 alla.txt"),
          QStringLiteral("-rw-r--r-- 1 u g 7 Jan 1 10:00 äpple.txt")});
    int clicks = 0;
    QObject::connect(&Get<toolkit::ListView>("listdir2"), &toolkit::ListView::ItemClick,
                     [&clicks] { ++clicks; });
    EXPECT_EQ(ChosenBy("a"), QList{0}) << "the current row, which is not marked yet";
    EXPECT_FALSE(Button("Command10").isEnabled()) << "of a directory";
    EXPECT_EQ(ChosenBy("a"), QList{2}) << "the next one";
    EXPECT_EQ(clicks, 2);
    EXPECT_TRUE(Button("Command10").isEnabled()) << "as a key chooses";
    EXPECT_EQ(window_->SelectedServerName(), "alla.txt");
    EXPECT_EQ(ChosenBy("a"), QList{0}) << "round the end";
    EXPECT_EQ(ChosenBy("aa"), QList{0}) << "the same letter again: the one after the next";
    EXPECT_EQ(ChosenBy("al"), QList{2});
    EXPECT_EQ(ChosenBy("ALLA"), QList{2}) << "where it stands already";
    EXPECT_EQ(ChosenBy("bild.x"), QList{1}) << "as far as there was one";
    EXPECT_EQ(ChosenBy(QStringLiteral("ä")), QList{3});
    EXPECT_EQ(ChosenBy("a l"), QList{2}) << "the space key is no letter";
}

TEST_F(Listing, TypingIsQuickAmongManyRows) {
    Open();
    QStringList lines;
    for (int i = 0; i < 10'000; ++i)
        lines.append(QStringLiteral("-rw-r--r-- 1 u g 7 Jan 1 10:00 fil%1.txt").arg(i));
    List(lines);
    QElapsedTimer clock;
    clock.start();
    QTest::keyClick(&Get("listdir2"), Qt::Key_Q);
    RecordProperty("milliseconds", static_cast<int>(clock.elapsed()));
    EXPECT_LT(clock.elapsed(), 5000) << "some milliseconds, where nothing else is done";
}

TEST_F(Listing, ARowIsHeardByItsNameAndKindAndThenInWords) {
    Open();
    List({QStringLiteral("-rw-r--r-- 1 u g 48213 Mar 12 2024 x.txt"),
          QStringLiteral("drwxr-xr-x 2 u g 512 Mar 12 2024 pub"),
          QStringLiteral("lrwxrwxrwx 1 u g 7 Mar 12 2024 www -> htdocs")});
    const QAbstractItemModel& rows = *Get<QAbstractItemView>("listdir2").model();
    const auto heard = [&rows](int row, int role) {
        return rows.index(row, 0).data(role).toString().replace(QChar::Nbsp, u' ');
    };
    EXPECT_EQ(heard(0, Qt::AccessibleTextRole), "x.txt, fil");
    EXPECT_EQ(heard(1, Qt::AccessibleTextRole), "pub, katalog");
    EXPECT_EQ(heard(2, Qt::AccessibleTextRole), "htdocs, länk");
    EXPECT_EQ(heard(0, Qt::AccessibleDescriptionRole),
              "48 213 byte (47,1 kB)\nsenast ändrad tisdag 12 mars 2024");
    EXPECT_EQ(heard(1, Qt::AccessibleDescriptionRole), "senast ändrad tisdag 12 mars 2024");
}

TEST_F(Listing, AKeyShowsTheTipOfTheCurrentRow) {
    Open();
    List({QStringLiteral("-rw-r--r-- 1 u g 7 Mar 12 2024 a.txt")});
    QTest::keyClick(&Get("listdir2"), Qt::Key_F1, Qt::ControlModifier);
    EXPECT_TRUE(QToolTip::isVisible());
    EXPECT_TRUE(QToolTip::text().contains("7 byte\nsenast ändrad")) << qPrintable(QToolTip::text());
}

TEST_F(Listing, ANarrowListKeepsTheNameInSight) {
    Open();
    window_->resize(615, 513);
    QApplication::sendPostedEvents();
    List({QStringLiteral("-rw-r--r--   1 webbmaster webbgruppen       64201 Nov 21 09:59 anteckningar.txt")});
    const auto& list = Get<QTreeView>("listdir2");
    EXPECT_EQ(list.columnWidth(0), list.viewport()->width());
    EXPECT_EQ(list.textElideMode(), Qt::ElideMiddle);
}

TEST_F(Listing, ClosingTheConnectionEmptiesIt) {
    Open();
    List({QStringLiteral("-rw 1 a.txt")});
    Button("Command16").setEnabled(true);
    ClickOn("Command16");
    EXPECT_EQ(Rows("listdir2"), QStringList());
}

using TraceOfSession = Listing;

TEST_F(TraceOfSession, ShowsWhatItHasWordsFor) {
    Open();
    Q_EMIT Ftp1().Debug(QStringLiteral("USER anna"));
    Q_EMIT Ftp1().Debug(QStringLiteral("331 Password please"));
    Q_EMIT Ftp1().Debug(QStringLiteral("PASS ********"));
    Q_EMIT Ftp1().Error(550, QStringLiteral("Nej."));
    EXPECT_EQ(Rows("listTrace"),
              (QStringList{QStringLiteral("Användarnamn: anna"),
                           QStringLiteral("Försöker logga in med aktuella kontouppgifter..."),
                           QStringLiteral("Fel nummer:550 Nej.")}));
    EXPECT_EQ(Get<QLabel>("lblLastError").text(), QStringLiteral("550 Nej."));
}

TEST_F(TraceOfSession, TellsTheStateAndTheLastAction) {
    Open();
    Ftp1().HostName = QStringLiteral("ftp.exempel.se");
    Q_EMIT Ftp1().ConnectedChanged(true);
    EXPECT_EQ(Get<QLabel>("lblState").text(), QStringLiteral("Ansluten till ftp.exempel.se"));
    Q_EMIT Ftp1().CommandSent(QStringLiteral("CWD bilder"));
    Q_EMIT Ftp1().CommandSent(QStringLiteral("EPSV"));
    EXPECT_EQ(Get<QLabel>("lblLastAction").text(), QStringLiteral("Byter till katalog bilder"));
    Q_EMIT Ftp1().ConnectedChanged(false);
    EXPECT_EQ(Get<QLabel>("lblState").text(), QStringLiteral("Ej ansluten"));
}

TEST_F(TraceOfSession, TakesProblemsWithTheSettings) {
    QFile in_the_way(settings_.filePath(QStringLiteral("in_the_way")));
    ASSERT_TRUE(in_the_way.open(QIODevice::WriteOnly));
    settings::Store store(in_the_way.fileName());
    window_ = std::make_unique<MainForm>(store);
    store.SaveSetting(settings::kFtpApplication, QStringLiteral("general"), QStringLiteral("visa"),
                      QStringLiteral("1"));
    const QStringList lines = Rows("listTrace");
    EXPECT_FALSE(lines.isEmpty());
    for (const QString& line : lines)
        EXPECT_TRUE(line.startsWith(QStringLiteral("Fel nummer:"))) << qPrintable(line);
    window_.reset();
}

}  // namespace
}  // namespace forms
