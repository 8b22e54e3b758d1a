#include <QAccessible>
#include <QDBusConnection>
#include <QElapsedTimer>
#include <QHelpEvent>
#include <QScrollBar>
#include <QToolTip>
#include <QWheelEvent>

#include "app/shared/transfer_watch.h"
#include "tests/forms/session/folder_upload.h"
#include "tests/platform/session_bus.h"
#include "tools/demo/input.h"

using ftp_test::Hold;
using ftp_test::Say;
using ftp_test::SendData;
using ftp_test::Stall;
using toolkit_test::ExpectBox;

namespace forms {
namespace {

using namespace std::chrono_literals;

constexpr int kPatience = 20'000;  // milliseconds, for what comes from elsewhere
const QString kTurned = QStringLiteral("u\u202Ep.txt");

// What the program tells of a batch beside the strip itself, on the watch's own clock.
class Watching : public FolderUpload {
 protected:
    void SetUp() override {
        Session::SetUp();
        app::TransferWatch::clock = [this] { return now_; };
        for (const char* name : {"x.txt", "y.txt", "z.txt"})
            server_.AddFile(name, std::string(3000, name[0]));
        MakeFile("a.txt", "abc");
        MakeFile(kTurned.toStdString(), "abc");
        MakeFile("mapp/b.txt", std::string(2000, 'b'));
        MakeFile("mapp/c/d.txt", std::string(1000, 'd'));
        Open();
        Connect(server_.HostField());
    }
    void TearDown() override {
        Session::TearDown();
        app::TransferWatch::clock = clock_;
        app::TransferWatch::long_batch = 30s;
    }

    void FetchAll() {
        for (const char* name : {"x.txt", "y.txt", "z.txt"})
            ClickServer(name, name[0] == 'x' ? Qt::NoModifier : Qt::ControlModifier);
        ClickOn("Command2");
    }
    void Stop(const std::string& name) {
        server_.At("RETR " + name, 1, {Say("150 Here it comes."), SendData("0123456789"), Stall()});
    }
    static toolkit::ListBox& Queue() { return *Window("Form1")->findChild<toolkit::ListBox*>("l1"); }
    static QString StateOf(int row) {
        return Queue().model()->index(row, 0).data(Qt::AccessibleDescriptionRole).toString();
    }
    void Abort() {
        ExpectBox question(kAbortTitle, kAbortQuestion, "cmdYes");
        QTest::mouseClick(Window("Form1")->findChild<QPushButton*>("Command1"), Qt::LeftButton);
    }
    /// Raises it as the component does.
    void Fail(const char* text) {
        Q_EMIT window_->findChild<ftp::Component*>()->Error(550, QString::fromUtf8(text));
    }
    /// Sixty files in the listing, none of which is there; too large for a connection of their own, each is
    /// told of before the next one begins. All are marked.
    void MarkSixty() {
        std::vector<std::string> listing;
        for (int i = 0; i < 60; ++i)
            listing.push_back("-rw-r--r--   1 ftp      ftp       3000000 Jan 01 10:00 fil" +
                              std::to_string(100 + i) + ".txt");
        server_.SetListing(listing);
        ClickOn("Command9");
        ClickRow("listdir2", 0);
        QTest::keyClick(&Get("listdir2"), Qt::Key_A, Qt::ControlModifier);
    }
    QString Tip() { return Get("Picture3").toolTip().replace(QChar::Nbsp, u' '); }

    std::chrono::milliseconds now_ = 1h;
    const app::TransferWatch::Clock clock_ = app::TransferWatch::clock;
    ftp_test::ScriptedServer server_;
};

TEST_F(Watching, TheQueueShowsHowEachFileStands) {
    server_.At("RETR x.txt", {Say("550 No.")});
    Stop("y.txt");
    bool seen = false;
    When([] { return Window("Form1") && StateOf(0) == "misslyckades" && StateOf(1) == "pågår"; },
         [&] {
             seen = true;
             EXPECT_EQ(StateOf(2), "väntar");
             EXPECT_EQ(Queue().ListIndex(), 1);
             EXPECT_TRUE(Queue().List(0).endsWith(" x.txt"));
             Abort();
         });
    FetchAll();
    EXPECT_TRUE(seen);
}

TEST_F(Watching, AFileThatIsOnlyLookedAtHasItsPaceToo) {
    Stop("x.txt");
    bool seen = false;
    When(
        [this] {
            now_ += 1s;
            return !Tip().isEmpty();
        },
        [&] {
            seen = true;
            EXPECT_EQ(Get("p1").accessibleDescription().replace(QChar::Nbsp, u' '), Tip())
                << "is heard as well";
            ExpectBox question(kAbortTitle, kAbortQuestion, "cmdYes");
            ClickOn("avb");
        });
    ClickServer("x.txt");
    ClickOn("Command12");
    EXPECT_TRUE(seen);
}

TEST_F(Watching, AFileThatHasComeIsDone) {
    Stop("z.txt");
    bool seen = false;
    When([] { return Window("Form1") && StateOf(2) == "pågår" && StateOf(1) == "klar"; },
         [&] {
             seen = true;
             EXPECT_EQ(StateOf(0), "klar");
             Abort();
         });
    FetchAll();
    EXPECT_TRUE(seen);
}

TEST_F(Watching, TheQueueScrollsAndKeepsItsCurrentRow) {
    Stop("fil100.txt");
    MarkSixty();
    bool seen = false;
    When([this] { return Window("Form1") && Strip("label7") == "10"; },
         [&] {
             seen = true;
             QScrollBar& bar = *Queue().verticalScrollBar();
             QWidget& rows = *Queue().viewport();
             ASSERT_GT(bar.maximum(), 0);
             QTest::keyClick(Window("Form1")->focusWidget(), Qt::Key_PageDown);
             const int page = bar.value();
             EXPECT_GT(page, 0);
             QTest::keyClick(Window("Form1")->focusWidget(), Qt::Key_Down);
             EXPECT_GT(bar.value(), page);
             QTest::keyClick(Window("Form1")->focusWidget(), Qt::Key_End);
             EXPECT_EQ(bar.value(), bar.maximum());
             QWheelEvent wheel(rows.rect().center(), rows.mapToGlobal(rows.rect().center()), {}, {0, 120},
                               Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
             QApplication::sendEvent(&rows, &wheel);
             EXPECT_LT(bar.value(), bar.maximum());
             QTest::mouseClick(&rows, Qt::LeftButton, {}, {20, 20});
             EXPECT_EQ(Queue().ListIndex(), 0);
             QTest::keyClick(Window("Form1")->focusWidget(), Qt::Key_Home);
             EXPECT_EQ(bar.value(), 0);
             EXPECT_EQ(Queue().SelectedRows(), QList<int>({0}));
             QAccessible::queryAccessibleInterface(&Queue())->tableInterface()->selectRow(3);
             EXPECT_EQ(Queue().ListIndex(), 0) << "nor from an assistive program";
             QTest::keyClick(Window("Form1")->focusWidget(), Qt::Key_End);
             Window("Form1")->resize(400, 180);
             EXPECT_TRUE(QTest::qWaitFor([&] { return bar.value() == 0; }, kPatience));
             Abort();
         });
    ClickOn("Command2");
    EXPECT_TRUE(seen);
}

TEST_F(Watching, TheQueueScrollsWithItsCurrentRow) {
    Stop("fil140.txt");
    MarkSixty();
    bool seen = false;
    When([] { return Window("Form1") && StateOf(40) == "pågår"; },
         [&] {
             seen = true;
             EXPECT_EQ(StateOf(39), "misslyckades");
             EXPECT_EQ(Queue().ListIndex(), 40);
             const QRect row = Queue().visualRect(Queue().currentIndex());
             EXPECT_TRUE(Queue().viewport()->rect().contains(row.center()));
             Abort();
         });
    ClickOn("Command2");
    EXPECT_TRUE(seen);
}

TEST_F(Watching, TheQueueStaysWhereTheUserLooks) {
    server_.At("RETR fil100.txt", {Hold(), Say("550 No.")});
    Stop("fil101.txt");
    MarkSixty();
    bool seen = false;
    When(
        [] {
            return Window("Form1") && StateOf(0) == "pågår" &&
                   QApplication::activeWindow() == Window("Form1");
        },
        [&] {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_End);
            server_.Release();
        });
    When([] { return Window("Form1") && StateOf(1) == "pågår"; },
         [&] {
             seen = true;
             const QScrollBar& bar = *Queue().verticalScrollBar();
             EXPECT_GT(bar.maximum(), 0);
             EXPECT_EQ(bar.value(), bar.maximum());
             EXPECT_EQ(Queue().ListIndex(), 1);
             Abort();
         });
    ClickOn("Command2");
    EXPECT_TRUE(seen);
}

TEST_F(Watching, AFileThatFailsLateIsNotDone) {
    Stop("z.txt");
    bool seen = false;
    When([] { return Window("Form1") && StateOf(2) == "pågår" && StateOf(1) == "klar"; },
         [&] {
             seen = true;
             Fail("Servern vägrar: 550 No. [x.txt]");
             EXPECT_EQ(StateOf(0), "misslyckades");
             Fail("Servern vägrar: 550 No. [w.txt]");  // nobody's
             EXPECT_EQ(StateOf(1), "klar");
             EXPECT_EQ(StateOf(2), "pågår");
             Fail("Servern vägrar: 550 No.");
             EXPECT_EQ(StateOf(2), "misslyckades");
             Abort();
         });
    FetchAll();
    EXPECT_TRUE(seen);
}

TEST_F(Watching, TheQueueGoesOnAfterAFileThatTheUserAborts) {
    Stop("y.txt");
    Stop("z.txt");
    bool seen = false;
    When([this] { return Window("Form1") && StateOf(1) == "pågår" && Strip("label7") == "10"; },
         [&] {
             ExpectBox question(kAbortTitle, kAbortQuestion, "cmdYes");
             ClickOn("avb");
         });
    When([] { return Window("Form1") && StateOf(2) == "pågår"; },
         [&] {
             seen = true;
             EXPECT_EQ(StateOf(0), "klar");
             EXPECT_EQ(StateOf(1), "misslyckades");
             Abort();
         });
    FetchAll();
    EXPECT_TRUE(seen);
    EXPECT_EQ(LocalFile("x.txt").size(), 3000);
    EXPECT_FALSE(LocalNames().contains("y.txt"));
}

TEST_F(Watching, TheStripTellsThePaceWhileTheMouseRestsThere) {
    Stop("x.txt");
    demo::Input input;
    QStringList told;
    When([this] { return Window("Form1") && Strip("label7") == "10"; },
         [&] {
             const QWidget& label = Get("label7");
             QElapsedTimer resting;
             int aside = 0;
             EXPECT_TRUE(QTest::qWaitFor(
                 [&] {  // coming in is no move, and two moves at once may be none
                     if (QToolTip::isVisible()) return true;
                     if (resting.isValid() && !resting.hasExpired(1500)) return false;
                     resting.start();
                     aside = 3 - aside;
                     input.Move(label.mapToGlobal(label.rect().center()) - QPoint(aside, 0));
                     return false;
                 },
                 kPatience));
             told.append(QToolTip::text());
             now_ += 1min;
             EXPECT_TRUE(QTest::qWaitFor([&] { return QToolTip::text() != told.first(); }, kPatience));
             told.append(QToolTip::text());
             input.Move({1, 1});
             Abort();
         });
    FetchAll();
    EXPECT_EQ(told, QStringList({"Överföringen har börjat", "Ingenting kommer fram just nu"}));
    EXPECT_EQ(Tip(), "");  // of a batch that has been aborted
}

TEST_F(Watching, AfterwardsTheStripTellsHowItWent) {
    FetchAll();
    EXPECT_EQ(Tip(), "8,8 kB på 1 s (8,6 MB/s)");
    ClickLocal("a.txt");
    ClickOn("Command1");
    EXPECT_EQ(Tip(), "3 byte på 1 s (2,9 kB/s)");
    Choose("mapp");
    Send("mapp");
    EXPECT_EQ(Tip(), "2,9 kB på 1 s (2,9 MB/s)");
}

TEST_F(Watching, ANoticeTellsOfTheEndAndLeadsBackToTheWindow) {
    const SessionBus bus;
    FakeDesktop desktop(bus);
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus.Address().toUtf8());
    app::TransferWatch::long_batch = -1ms;
    ClickLocal("a.txt");
    window_->showMinimized();
    ASSERT_TRUE(QTest::qWaitFor([] { return !QApplication::activeWindow(); }, kPatience));
    Button("Command1").click();
    ASSERT_TRUE(QTest::qWaitFor([&] { return desktop.notices.size() == 1; }, kPatience));
    EXPECT_EQ(desktop.notices[0].heading, "Överföringen är klar");
    EXPECT_EQ(desktop.notices[0].text, "a.txt, 3 byte på 1 s");
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
            Q_EMIT desktop.ActionInvoked(41, "default");
            return QTest::qWaitFor([this] { return window_->isActiveWindow(); }, 100);
        },
        kPatience));
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
}

// During a file the first time, after the last one the second time.
TEST_F(Watching, TheNoticeTellsOfErrorsThatNobodyCanPlace) {
    const SessionBus bus;
    FakeDesktop desktop(bus);
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus.Address().toUtf8());
    app::TransferWatch::long_batch = -1ms;
    for (const bool during : {true, false}) {
        bool failed = false;
        const auto fail = QObject::connect(
            window_->findChild<ftp::Component*>(), &ftp::Component::BusyChanged, [&](bool busy) {
                const QWidget* form = Window("Form1");
                if (failed || !busy || !form || StateOf(during ? 1 : 2) != (during ? "pågår" : "klar"))
                    return;
                failed = true;
                Fail(during ? "Servern vägrar: 550 No. [w.txt]" : "Servern svarade inte i tid.");
                for (QWidget* window : QApplication::topLevelWidgets())
                    if (window->isVisible()) window->showMinimized();
                EXPECT_TRUE(QTest::qWaitFor([] { return !QApplication::activeWindow(); }, kPatience));
            });
        FetchAll();
        QObject::disconnect(fail);
        EXPECT_TRUE(failed);
        const qsizetype notices = during ? 1 : 2;
        ASSERT_TRUE(QTest::qWaitFor([&] { return desktop.notices.size() >= notices; }, kPatience));
        EXPECT_EQ(desktop.notices.back().heading, "Överföringen är klar, med fel");
        EXPECT_TRUE(desktop.notices.back().text.startsWith("3 filer, "));
        window_->showNormal();
        window_->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));
    }
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
}

TEST_F(Watching, NothingHidesInTheNameOfANotice) {
    const SessionBus bus;
    FakeDesktop desktop(bus);
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus.Address().toUtf8());
    app::TransferWatch::long_batch = -1ms;
    ClickLocal(kTurned);
    window_->showMinimized();
    ASSERT_TRUE(QTest::qWaitFor([] { return !QApplication::activeWindow(); }, kPatience));
    Button("Command1").click();
    ASSERT_TRUE(QTest::qWaitFor([&] { return desktop.notices.size() == 1; }, kPatience));
    EXPECT_EQ(desktop.notices[0].text, "u‹U+202E›p.txt, 3 byte på 1 s");
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
}

TEST_F(Watching, AServerRowTellsSizeAndTimeInWords) {
    server_.SetListing({"-rw-r--r-- 1 u g 48213 Mar 12 2024 x.txt",
                        "-rw-r--r-- 1 u g 7 Mar 12 2024 <b>" + std::string(300, 'y') + ".txt", "nonsense"});
    ClickOn("Command9");
    auto& list = Get<QAbstractItemView>("listdir2");
    const auto tip_of = [&](int row) {
        QToolTip::hideText();
        const QPoint place = list.visualRect(list.model()->index(row, 0)).center();
        QHelpEvent help(QEvent::ToolTip, place, list.viewport()->mapToGlobal(place));
        QApplication::sendEvent(list.viewport(), &help);
        return QToolTip::text().replace(QChar::Nbsp, u' ');
    };
    EXPECT_TRUE(tip_of(0).contains("48 213 byte (47,1 kB)\nsenast ändrad tisdag 12 mars 2024"));
    EXPECT_FALSE(tip_of(0).contains("x.txt"));
    EXPECT_TRUE(tip_of(1).contains("&lt;b&gt;y"));  // shortened: the whole line first
    EXPECT_TRUE(tip_of(1).contains(".txt\n7 byte\nsenast ändrad"));
    QToolTip::hideText();
    EXPECT_TRUE(QTest::qWaitFor([] { return !QToolTip::isVisible(); }, kPatience));
    EXPECT_FALSE(tip_of(2).contains("nonsense"));
}

}  // namespace
}  // namespace forms
