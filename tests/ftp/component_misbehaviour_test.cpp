// The component with a server that misbehaves, and with users who do.

#include <gtest/gtest.h>

#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include "tests/ftp/component_fixture.h"
#include "tests/support/scripted_server.h"

namespace ftp {
namespace {

using namespace ftp_test;  // the steps read as words

class Misbehaviour : public ComponentTest {
 protected:
    void SetUp() override {
        server.AddFile("a.htm", std::string(3000, 'a'));
        ComponentTest::Connect(server.HostField());
        ASSERT_TRUE(component->Connected()) << trace.join(u'\n').toStdString();
        trace.clear();
        connected.clear();
    }

    void Get() {
        component->SourceFileName = QStringLiteral("a.htm");
        component->DestinationFileName = folder.filePath(QStringLiteral("a.htm"));
        component->GetFile();
    }
    QByteArray Fetched() const {
        QFile file(folder.filePath(QStringLiteral("a.htm")));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    /// A download that waits after its first 1000 bytes until the server is told to go on.
    void HoldDownload() {
        server.At("RETR", {Say("150 Opening (3000 bytes)."), SendData(std::string(1000, 'a')), Hold(),
                           SendData(std::string(2000, 'a')), CloseData(), Say("226 Transfer complete.")});
    }
    /// A listing of more lines than the component has read when the test loses interest, and no end.
    void ListLong() {
        std::string lines;
        for (int i = 0; i < 200'000; ++i) lines += "-rw-r--r-- 1 u g 100 Jan 1 10:00 a.htm\r\n";
        server.At("LIST", {Say("150 Here."), SendData(lines), Stall()});
    }

    ScriptedServer server;
    QTemporaryDir folder;
};

TEST_F(Misbehaviour, CountsWhileAServerHoldsStill) {
    HoldDownload();
    QObject::connect(component.get(), &Component::Progress, [this](std::int64_t bytes) {
        if (bytes == 1000) server.Release();
    });
    Get();
    EXPECT_EQ(progress, (std::vector<std::int64_t>{1000, 3000}));
    EXPECT_EQ(component->StatedSize(), 3000);
    EXPECT_EQ(Fetched(), QByteArray(3000, 'a'));
    EXPECT_TRUE(errors.empty()) << errors.front().second;
}

TEST_F(Misbehaviour, EndsAStalledDownloadOnAbort) {
    HoldDownload();
    QObject::connect(component.get(), &Component::Progress, [this] { component->AbortTransfer(); });
    Get();
    EXPECT_EQ(progress, std::vector<std::int64_t>{1000});
    EXPECT_EQ(OnlyError(), 10004);
    EXPECT_EQ(Fetched(), QByteArray());
}

TEST_F(Misbehaviour, LeavesAStalledDownloadOnDisconnect) {
    HoldDownload();
    QObject::connect(component.get(), &Component::Progress, [this] { component->SetAction(9); });
    Get();
    EXPECT_EQ(OnlyError(), 10004);
    EXPECT_EQ(connected, std::vector{false});
    EXPECT_EQ(Fetched(), QByteArray());
    server.Release();

    ComponentTest::Connect(server.HostField());
    EXPECT_TRUE(component->Connected()) << "and comes back";
}

TEST_F(Misbehaviour, WaitsForAQuestionThatOutlastsItsTransfer) {
    HoldDownload();
    const QString end = QStringLiteral("226 Transfer complete.");
    bool answered = false;
    QObject::connect(component.get(), &Component::Progress, [&](std::int64_t bytes) {
        if (bytes != 1000) return;
        QEventLoop question;
        QObject::connect(component.get(), &Component::Debug, &question, [&](const QString& line) {
            if (line == end) QTimer::singleShot(0, &question, &QEventLoop::quit);
        });
        server.Release();
        question.exec();
        EXPECT_TRUE(component->Busy());
        component->AbortTransfer();
        answered = true;
    });
    Get();
    EXPECT_TRUE(answered);
    EXPECT_FALSE(component->Busy());
    EXPECT_TRUE(trace.contains(end));
    component->ListDirectory();
    EXPECT_EQ(listing.size(), 1) << "the session goes on";
}

TEST_F(Misbehaviour, KeepsTheOrderOfTheWire) {
    QStringList all;
    for (const auto signal : {&Component::Debug, &Component::DirItem}) {
        QObject::connect(component.get(), signal, [&all](const QString& line) { all += line; });
    }
    server.SetListing({"-rw 1", "-rw 2", "-rw 3"});
    component->ListDirectory();
    const auto place = [&all](const char* line) { return all.indexOf(QString::fromUtf8(line)); };
    EXPECT_EQ(listing.join(u',').toStdString(), "-rw 1,-rw 2,-rw 3");
    EXPECT_EQ(trace.last().left(4).toStdString(), "226 ") << "all has been told when the call returns";
    EXPECT_LT(place("LIST"), place("-rw 1"));
    EXPECT_EQ(commands.last().toStdString(), "LIST");
}

TEST_F(Misbehaviour, TellsWhenTheServerHangsUp) {
    server.At("CWD", {Say("421 Closing."), Close()});
    component->DirectoryName = QStringLiteral("a");
    component->ChangeDirectory();
    EXPECT_EQ(OnlyError(), 421);
    EXPECT_EQ(connected, std::vector{false});
    errors.clear();
    component->ListDirectory();  // opens the session again
    EXPECT_TRUE(errors.empty());
    EXPECT_EQ(connected, (std::vector{false, true}));
}

TEST_F(Misbehaviour, TellsWhenTheConnectionBreaks) {
    server.At("CWD", {ftp_test::Reset()});
    component->DirectoryName = QStringLiteral("a");
    component->ChangeDirectory();
    EXPECT_EQ(OnlyError(), 10054);
    EXPECT_EQ(connected, std::vector{false});
}

TEST_F(Misbehaviour, ShowsHostileWordsAsTheyAre) {
    server.At("CWD", {Say("550 a\x1b[2J\xE2\x80\xAE"
                          "b")});
    component->DirectoryName = QStringLiteral("a");
    component->ChangeDirectory();
    ASSERT_EQ(OnlyError(), 550);
    EXPECT_EQ(errors.front().second, "Servern vägrar: 550 a␛[2J‹U+202E›b");
}

TEST_F(Misbehaviour, NeverSendsALineEndInAName) {
    const auto before = server.Commands();
    component->DirectoryName = QStringLiteral("a\r\nDELE a.htm");
    component->ChangeDirectory();
    EXPECT_EQ(OnlyError(), 10022);
    component->CloseConnection();
    ASSERT_EQ(server.Commands().size(), before.size() + 1);
    EXPECT_EQ(server.Commands().back(), "QUIT");
}

TEST_F(Misbehaviour, LeavesAnLongListing) {
    ListLong();
    QObject::connect(component.get(), &Component::DirItem, [this] {
        if (listing.size() == 20'000) component->Shutdown();
    });
    component->ListDirectory();
    EXPECT_GE(listing.size(), 20'000);
    EXPECT_LT(listing.size(), 200'000);
    EXPECT_EQ(OnlyError(), 10004);
    EXPECT_EQ(connected, std::vector{false});
}

TEST_F(Misbehaviour, MayBeDestroyedInAnLongListing) {
    ListLong();
    QObject::connect(component.get(), &Component::DirItem, [this] {
        if (listing.size() == 20'000) component.reset();
    });
    component->ListDirectory();
    EXPECT_EQ(listing.size(), 20'000);
    EXPECT_TRUE(errors.empty());
}

}  // namespace
}  // namespace ftp
