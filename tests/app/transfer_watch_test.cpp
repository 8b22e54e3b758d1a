#include "app/shared/transfer_watch.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDBusConnectionInterface>
#include <QTest>
#include <QWidget>

#include "tests/platform/session_bus.h"

namespace app {
namespace {

using namespace std::chrono_literals;

constexpr int kPatience = 20'000;  // milliseconds, for what comes from elsewhere
constexpr std::int64_t kMega = 1 << 20;

template <class Condition>
bool Becomes(Condition condition) {
    return QTest::qWaitFor(condition, kPatience);
}

class Watching : public ::testing::Test {
 protected:
    void SetUp() override {
        qputenv("DBUS_SESSION_BUS_ADDRESS", bus_.Address().toUtf8());
        TransferWatch::clock = [this] { return now_; };
        watch_ = std::make_unique<TransferWatch>();
    }
    void TearDown() override {
        watch_.reset();
        TransferWatch::clock = before_;
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    }

    QString Words() const { return watch_->Words().replace(QChar::Nbsp, u' '); }
    void Move(std::int64_t bytes, std::chrono::milliseconds after) {
        now_ += after;
        watch_->Report(bytes);
    }
    /// One file of ten megabytes, in so much time.
    void Send(std::chrono::milliseconds length) {
        const WatchedBatch batch(watch_.get(), 10 * kMega);
        watch_->BeginFile("bild.png", 10 * kMega);
        Move(10 * kMega, length);
    }
    int Visitors() const {
        const QDBusConnection asker = QDBusConnection::connectToBus(bus_.Address(), "asker");
        const int names = static_cast<int>(asker.interface()->registeredServiceNames().value().size());
        return names;
    }

    const SessionBus bus_;
    FakeDesktop desktop_{bus_};
    const TransferWatch::Clock before_ = TransferWatch::clock;
    std::chrono::milliseconds now_ = 1h;
    std::unique_ptr<TransferWatch> watch_;
};

TEST_F(Watching, TellsThePaceWhileItRunsAndTheWholeAfterwards) {
    EXPECT_EQ(Words(), "");
    {
        const WatchedBatch batch(watch_.get(), 10 * kMega);
        EXPECT_EQ(Words(), "Överföringen har börjat");
        watch_->BeginFile("a", 4 * kMega);
        Move(2 * kMega, 2s);
        ASSERT_TRUE(Becomes([&] { return Words() == "1,0 MB/s, ungefär 8 s kvar"; }));
        now_ += 10s;
        ASSERT_TRUE(Becomes([&] { return Words() == "Ingenting kommer fram just nu"; }));
        watch_->EndFile();
        Move(3 * kMega, 1s);  // of no file
    }
    EXPECT_EQ(Words(), "2,0 MB på 13 s (157,5 kB/s)");
    QString heard = Words();
    QObject::connect(watch_.get(), &TransferWatch::WordsChanged,
                     [&](const QString& words) { heard = words; });
    Move(5 * kMega, 1s);
    Send(1s);
    EXPECT_EQ(heard, watch_->Words());
}

TEST_F(Watching, AnAbortedBatchLeavesNothingToSay) {
    {
        const WatchedBatch batch(watch_.get(), 10 * kMega);
        watch_->BeginFile("a", 10 * kMega);
        Move(kMega, 5s);
        watch_->AbortFile();
    }
    EXPECT_EQ(Words(), "");
}

TEST_F(Watching, LeavesTheBusAloneWhereABatchIsShort) {
    const int before = Visitors();
    Send(500ms);
    EXPECT_EQ(Visitors(), before);
}

TEST_F(Watching, ShowsTheShareInTheTaskBarUntilItEnds) {
    const std::function<void()> ends[] = {[&] { watch_->End(); }, [&] { watch_->Leave(); },
                                          [&] { watch_.reset(); }};
    for (const auto& end : ends) {
        watch_ = std::make_unique<TransferWatch>();
        watch_->Begin(10 * kMega);
        watch_->BeginFile("a", 10 * kMega);
        Move(4 * kMega, 4s);
        ASSERT_TRUE(Becomes([&] { return desktop_.ShowsProgress(); }));
        EXPECT_DOUBLE_EQ(desktop_.Progress(), 0.4);
        end();
        EXPECT_TRUE(Becomes([&] { return !desktop_.ShowsProgress(); }));
    }
}

TEST_F(Watching, TellsOfTheEndWhereTheUserIsElsewhere) {
    ASSERT_EQ(QApplication::activeWindow(), nullptr);
    Send(31s);
    ASSERT_TRUE(Becomes([&] { return desktop_.notices.size() == 1; }));
    EXPECT_EQ(desktop_.notices[0].heading, "Överföringen är klar");
    EXPECT_EQ(desktop_.notices[0].text.replace(QChar::Nbsp, u' '), "bild.png, 10,0 MB på 31 s");
}

TEST_F(Watching, TellsTheTruthOfFailuresAndAborts) {
    {
        const WatchedBatch batch(watch_.get(), 3);
        for (int i = 0; i < 3; ++i) {
            watch_->BeginFile("a", 1);
            Move(1, 20s);
            watch_->EndFile();
        }
        watch_->Fail();
    }
    ASSERT_TRUE(Becomes([&] { return desktop_.notices.size() == 1; }));
    EXPECT_EQ(desktop_.notices[0].heading, "Överföringen är klar, med fel");
    EXPECT_EQ(desktop_.notices[0].text, "2 av 3 filer, 3 byte på 1 min. Händelserna berättar om felen.");
    {
        const WatchedBatch batch(watch_.get(), 3);
        watch_->BeginFile("a", 1);
        Move(1, 31s);
        watch_->Abort();
    }
    ASSERT_TRUE(Becomes([&] { return desktop_.notices.size() == 2; }));
    EXPECT_EQ(desktop_.notices[1].heading, "Överföringen är avbruten");
}

// What would be told comes before the notice of the long batch that ends the test.
TEST_F(Watching, IsSilentOfWhatTheUserKnows) {
    Send(30s);
    {
        QWidget window;
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        Send(31s);
    }
    ASSERT_TRUE(Becomes([] { return !QApplication::activeWindow(); }));
    {
        TransferWatch leaving;
        leaving.Begin(1);
        leaving.BeginFile("a", 1);
        now_ += 40s;
        leaving.Leave();
        leaving.End();
    }
    Send(32s);
    ASSERT_TRUE(Becomes([&] { return !desktop_.notices.isEmpty(); }));
    EXPECT_EQ(desktop_.notices.size(), 1);
    EXPECT_TRUE(desktop_.notices[0].text.endsWith("32 s"));
}

TEST(WatchedBatch, NeedsNoWatch) {
    const WatchedBatch batch(nullptr, {});
}

}  // namespace
}  // namespace app
