#include "platform/desktop_signs.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTest>
#include <cstring>

#include "tests/platform/session_bus.h"

namespace platform {
namespace {

using State = DesktopBus::State;

constexpr int kPatience = 20'000;   // milliseconds, for what comes from elsewhere
constexpr int kNoticeable = 1'000;  // that a call may take on a loaded machine, and no bus does

template <class Condition>
bool Becomes(Condition condition) {
    return QTest::qWaitFor(condition, kPatience);
}

/// A socket where somebody listens and never says a word.
class MuteBus {
 public:
    MuteBus() : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un place{};
        place.sun_family = AF_UNIX;
        const QByteArray path = QFile::encodeName(files_.filePath("bus"));
        std::memcpy(place.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
        EXPECT_EQ(bind(socket_, reinterpret_cast<sockaddr*>(&place), sizeof place), 0);
        EXPECT_EQ(listen(socket_, 5), 0);
    }
    ~MuteBus() { close(socket_); }
    QString Address() const { return "unix:path=" + files_.filePath("bus"); }

 private:
    QTemporaryDir files_;
    const int socket_;
};

TEST(SessionBusAddress, IsWhereTheSessionSays) {
    QTemporaryDir runtime, empty;
    QFile(runtime.filePath("bus")).open(QIODevice::WriteOnly);
    struct Row {
        const char* stated;
        QString runtime;
        std::optional<QString> address;
    };
    const Row table[] = {
        {"unix:path=/run/x", empty.path(), "unix:path=/run/x"},
        {"unix:abstract=/tmp/x,guid=7", empty.path(), "unix:abstract=/tmp/x,guid=7"},
        {"tcp:host=h;unix:path=/run/x", empty.path(), "unix:path=/run/x"},
        {"autolaunch:", runtime.path(), {}},  // would start one
        {"", runtime.path(), "unix:path=" + runtime.path() + "/bus"},
        {"", empty.path(), {}},
        {"", "", {}},
    };
    const QByteArray before = qgetenv("DBUS_SESSION_BUS_ADDRESS"), folder = qgetenv("XDG_RUNTIME_DIR");
    for (const Row& row : table) {
        qputenv("DBUS_SESSION_BUS_ADDRESS", row.stated);
        row.runtime.isEmpty() ? (void)qunsetenv("XDG_RUNTIME_DIR")
                              : (void)qputenv("XDG_RUNTIME_DIR", row.runtime.toUtf8());
        EXPECT_EQ(SessionBusAddress(), row.address) << row.stated;
    }
    before.isNull() ? (void)qunsetenv("DBUS_SESSION_BUS_ADDRESS")
                    : (void)qputenv("DBUS_SESSION_BUS_ADDRESS", before);
    folder.isNull() ? (void)qunsetenv("XDG_RUNTIME_DIR") : (void)qputenv("XDG_RUNTIME_DIR", folder);
}

TEST(DesktopSigns, LeaveTheBusAloneUntilThereIsSomethingToShow) {
    const SessionBus bus;
    DesktopSigns signs(bus.Address());
    signs.HideProgress();
    EXPECT_EQ(signs.Standing(), State::Closed);
}

TEST(DesktopSigns, ShowTheProgressInTheTaskBar) {
    const SessionBus bus;
    FakeDesktop desktop(bus);
    {
        DesktopSigns signs(bus.Address());
        signs.ShowProgress(0.25);
        ASSERT_TRUE(Becomes([&] { return desktop.ShowsProgress(); }));
        EXPECT_EQ(desktop.Progress(), 0.25);
        EXPECT_EQ(desktop.launchers, QStringList("application://websmide-ftp.desktop"));
        signs.ShowProgress(0.5);
        ASSERT_TRUE(Becomes([&] { return desktop.Progress() == 0.5; }));
        signs.HideProgress();
        ASSERT_TRUE(Becomes([&] { return !desktop.ShowsProgress(); }));
        signs.ShowProgress(0.75);
        ASSERT_TRUE(Becomes([&] { return desktop.Progress() == 0.75; }));
    }
    EXPECT_TRUE(Becomes([&] { return !desktop.ShowsProgress(); }));  // with its sender
}

TEST(DesktopSigns, SendFewOfManyStepsAndTheLastOneAlways) {
    const SessionBus bus;
    FakeDesktop desktop(bus);
    DesktopSigns signs(bus.Address());
    signs.ShowProgress(0);
    ASSERT_TRUE(Becomes([&] { return desktop.progress.size() == 1; }));
    for (int i = 1; i <= 1000; ++i) signs.ShowProgress(i / 1000.0);
    ASSERT_TRUE(Becomes([&] { return desktop.Progress() == 1; }));
    EXPECT_LE(desktop.progress.size(), 3);
    const auto sent = desktop.progress.size();
    signs.ShowProgress(1);  // nothing new
    signs.HideProgress();
    ASSERT_TRUE(Becomes([&] { return !desktop.ShowsProgress(); }));
    EXPECT_EQ(desktop.progress.size(), sent + 1);
}

TEST(DesktopSigns, TellWithTheAbilitiesOfTheDesktop) {
    const SessionBus bus;
    const QString hostile = "<b>fet</b> & \"bild\".png, 4 byte på 31 s";
    for (const bool able : {true, false}) {
        FakeDesktop desktop(bus, able ? QStringList{"actions", "body-markup"} : QStringList{"body"});
        DesktopSigns signs(bus.Address());
        signs.Tell("Överföringen är klar", hostile);
        ASSERT_TRUE(Becomes([&] { return desktop.notices.size() == 1; }));
        const FakeDesktop::Notice& notice = desktop.notices.first();
        EXPECT_EQ(notice.heading, "Överföringen är klar");
        EXPECT_EQ(notice.text, able ? hostile.toHtmlEscaped() : hostile);
        EXPECT_EQ(notice.actions, able ? QStringList({"default", "Visa fönstret"}) : QStringList());
        EXPECT_EQ(notice.icon, "websmide-ftp");
        EXPECT_EQ(notice.hints["desktop-entry"], "websmide-ftp");
    }
}

TEST(DesktopSigns, ReplaceTheNoticeBefore) {
    const SessionBus bus;
    FakeDesktop desktop(bus);
    DesktopSigns signs(bus.Address());
    signs.Tell("ett", "");
    ASSERT_TRUE(Becomes([&] { return desktop.notices.size() == 1; }));
    EXPECT_EQ(desktop.notices[0].replaces, 0U);
    ASSERT_TRUE(Becomes([&] {  // until its number has come back
        signs.Tell("två", "");
        return QTest::qWaitFor([&] { return desktop.notices.last().replaces == 41; }, 50);
    }));
    EXPECT_EQ(desktop.notices.last().heading, "två");
}

TEST(DesktopSigns, HearThatTheirNoticeIsChosen) {
    const SessionBus bus;
    FakeDesktop desktop(bus);
    DesktopSigns signs(bus.Address());
    QStringList chosen;
    QObject::connect(&signs, &DesktopSigns::Chosen, [&](const QString& token) { chosen.append(token); });
    signs.Tell("ett", "");
    ASSERT_TRUE(Becomes([&] { return desktop.notices.size() == 1; }));
    ASSERT_TRUE(Becomes([&] {  // until its number has come back
        signs.Tell("två", "");
        return QTest::qWaitFor([&] { return desktop.notices.last().replaces == 41; }, 50);
    }));
    Q_EMIT desktop.ActionInvoked(7, "default");  // another program's
    Q_EMIT desktop.ActionInvoked(41, "close");
    Q_EMIT desktop.ActionInvoked(41, "default");
    EXPECT_TRUE(Becomes([&] { return chosen == QStringList(""); }));
    Q_EMIT desktop.ActivationToken(7, "of another program");
    Q_EMIT desktop.ActivationToken(41, "for the window");
    Q_EMIT desktop.ActionInvoked(41, "default");
    Q_EMIT desktop.ActionInvoked(41, "default");
    EXPECT_TRUE(Becomes([&] { return chosen == QStringList({"", "for the window", ""}); }));
}

TEST(DesktopSigns, DoNothingWithoutABus) {
    for (const std::optional<QString>& address :
         std::initializer_list<std::optional<QString>>{{},
                                                       "autolaunch:",
                                                       "tcp:host=localhost,port=9",
                                                       "unix:path=",
                                                       "unix:path=/nowhere/bus",
                                                       "unix:path=/" + QString(300, 'x')}) {
        DesktopSigns signs(address);
        signs.ShowProgress(0.5);
        signs.Tell("a", "b");
        EXPECT_TRUE(Becomes([&] { return signs.Standing() == State::None; }));
        signs.ShowProgress(1);
        signs.HideProgress();
    }
}

TEST(DesktopSigns, DoNotWaitForABusThatNeverAnswers) {
    const MuteBus bus;
    QElapsedTimer clock;
    clock.start();
    {
        DesktopSigns signs(bus.Address());
        signs.ShowProgress(0.5);
        signs.Tell("a", "b");
        EXPECT_EQ(signs.Standing(), State::Opening);
    }
    EXPECT_LT(clock.elapsed(), kNoticeable);
    DesktopBus::patience = std::chrono::milliseconds(50);
    DesktopSigns signs(bus.Address());
    signs.ShowProgress(0.5);
    EXPECT_TRUE(Becomes([&] { return signs.Standing() == State::None; }));
    DesktopBus::patience = std::chrono::seconds(5);
}

TEST(DesktopSigns, DoNotMindThatNobodyTakesNotices) {
    const SessionBus bus;
    DesktopSigns signs(bus.Address());
    signs.Tell("a", "b");
    ASSERT_TRUE(Becomes([&] { return signs.Standing() == State::Open; }));
    FakeDesktop desktop(bus);  // comes later
    signs.Tell("c", "d");
    ASSERT_TRUE(Becomes([&] { return !desktop.notices.isEmpty(); }));
    EXPECT_EQ(desktop.notices.last().heading, "c");
}

TEST(DesktopSigns, DoNotMindThatTheBusGoes) {
    SessionBus bus;
    DesktopSigns signs(bus.Address());
    signs.ShowProgress(0.5);
    ASSERT_TRUE(Becomes([&] { return signs.Standing() == State::Open; }));
    bus.End();
    QElapsedTimer clock;
    clock.start();
    signs.ShowProgress(0.75);
    signs.Tell("a", "b");
    QCoreApplication::processEvents();
    signs.HideProgress();
    EXPECT_LT(clock.elapsed(), kNoticeable);
}

}  // namespace
}  // namespace platform

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
