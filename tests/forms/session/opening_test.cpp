#include <QDirIterator>

#include "platform/file_changes.h"
#include "platform/folder.h"
#include "tests/forms/session/session.h"
#include "tests/platform/desktop.h"

using ftp_test::Make;
using toolkit_test::ExpectBox;

namespace forms {
namespace {

// The desktop of this whole process: a browser for pages, an editor for text, nothing for pictures.
Desktop& TheDesktop() {
    static Desktop desktop;
    return desktop;
}

const bool entered = [] {
    TheDesktop().Associate("text/html", "browser");
    TheDesktop().Associate("text/plain", "editor");
    const QByteArray path = qgetenv("PATH");  // the servers are found there
    TheDesktop().Enter();
    qputenv("PATH", qgetenv("PATH") + ':' + path);
    return true;
}();

QString TemporaryPath(const QString& name) {
    return platform::Join(platform::TemporaryFolder(), name);
}

QByteArray Native(const QString& path) {
    return platform::ToNative(path).value_or(QByteArray());
}

QByteArray ReadFile(const QString& path) {
    QFile file(QFile::decodeName(Native(path)));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(missing)");
}

class Opening : public Session {
 protected:
    void TearDown() override {
        const QString folder = platform::TemporaryFolder();
        if (!folder.isEmpty()) QDir(QFile::decodeName(Native(folder))).removeRecursively();
        Session::TearDown();
    }

    /// "browser /path/index.htm", of the program that has been started.
    static QByteArray Started() {
        const auto program = TheDesktop().Started();
        return program ? program->name + ' ' + program->arguments.join(' ') : QByteArray("(nothing)");
    }

    QByteArray LocalNative(const QString& name) const { return QFile::encodeName(files_.filePath(name)); }
    QStringList Errors() { return TraceLines().filter("Fel nummer:"); }
};

TEST_F(Opening, ALocalFileIsRunByItsTypeAndShownInTheEditor) {
    WriteLocalFile("Min sida.HTM", "<p>");
    Open();
    ClickLocal("min sida.htm");
    ClickOn("Command5");
    EXPECT_EQ(Started(), "browser " + LocalNative("Min sida.HTM"));
    ClickOn("Command4");
    EXPECT_EQ(Started(), "editor " + LocalNative("Min sida.HTM"));
    QTest::keyClick(&Get("list2"), Qt::Key_Return);
    EXPECT_EQ(Started(), "browser " + LocalNative("Min sida.HTM"));
    auto& list = Get<QAbstractItemView>("list2");
    QTest::mouseDClick(list.viewport(), Qt::LeftButton, {},
                       list.visualRect(list.model()->index(0, 0)).center());
    EXPECT_EQ(Started(), "browser " + LocalNative("Min sida.HTM"));
    EXPECT_EQ(Errors(), QStringList());
}

TEST_F(Opening, WithSeveralFilesMarkedNothingIsOpened) {
    WriteLocalFile("a.htm", "a");
    WriteLocalFile("b.htm", "b");
    Open();
    ClickLocal("a.htm");
    ClickLocal("b.htm", Qt::ControlModifier);
    for (const char* name : {"a.htm", "b.htm"}) ASSERT_TRUE(QFile::remove(files_.filePath(name)));
    for (const char* name : {"Command4", "Command5"}) {
        Button(name).setEnabled(true);  // no rule enables them then
        ClickOn(name);
    }
    EXPECT_EQ(Errors(), QStringList()) << "what is missing would be told of";
}

TEST_F(Opening, WithoutAProgramForTheTypeTheTraceSaysSo) {
    WriteLocalFile("bild.png", "\x89PNG\r\n\x1a\n");
    Open();
    ClickLocal("bild.png");
    ClickOn("Command5");
    ASSERT_EQ(Errors().size(), 1);
    EXPECT_TRUE(Errors().first().contains("31")) << qPrintable(Errors().first());
    EXPECT_TRUE(Errors().first().contains(Folder() + "\\bild.png")) << qPrintable(Errors().first());
}

TEST_F(Opening, WhatHasVanishedIsToldOf) {
    WriteLocalFile("a.htm", "a");
    Open();
    ClickLocal("a.htm");
    ASSERT_TRUE(QFile::remove(files_.filePath("a.htm")));
    ClickOn("Command5");
    ClickOn("Command4");
    EXPECT_EQ(Errors().size(), 2);
}

TEST_F(Opening, TheHelpDocumentLiesBesideTheProgramFolder) {
    Open();
    const QString folder = platform::ProgramFolder() + QStringLiteral("\\..\\hjälp");
    const bool made = platform::MakeFolder(folder) == platform::FileResult::Done;
    const QString document = QFile::decodeName(Native(folder + "\\helpftp.htm"));
    const bool written = !QFile::exists(document);
    if (written) {
        QFile file(document);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("<!DOCTYPE html>") > 0);
    }
    ClickOn("Command17");
    const QByteArray started = Started();
    EXPECT_TRUE(started.startsWith("browser /") && started.endsWith("hjälp/helpftp.htm"))
        << started.toStdString();
    if (written) QFile::remove(document);
    if (made) QDir().rmdir(QFileInfo(document).path());
}

class OpeningFrom : public Opening, public ::testing::WithParamInterface<Make> {
 protected:
    void SetUp() override {
        if (auto reason = ftp_test::WhyMissing(GetParam())) GTEST_SKIP() << *reason;
        Opening::SetUp();
    }
};

TEST_P(OpeningFrom, AServerFileIsFetchedAndOpened) {
    ftp_test::Server server(GetParam());
    server.WriteFile("index.htm", "<p>ett");
    Open();
    Connect(server.HostField());
    const QString copy = TemporaryPath("index.htm");

    ClickServer("index.htm");
    ClickOn("Command11");
    EXPECT_EQ(Started(), "browser " + Native(copy));
    EXPECT_EQ(ReadFile(copy), "<p>ett");

    server.WriteFile("index.htm", "<p>tv\303\245");  // the copy of last time is replaced
    ClickOn("Command12");
    EXPECT_EQ(Started(), "editor " + Native(copy));
    EXPECT_EQ(ReadFile(copy), "<p>tv\303\245");
    QTest::keyClick(&Get("listdir2"), Qt::Key_Return);
    EXPECT_EQ(Started(), "browser " + Native(copy));
    EXPECT_EQ(Errors(), QStringList());
    EXPECT_FALSE(Button("avb").isEnabled());
}

INSTANTIATE_TEST_SUITE_P(Servers, OpeningFrom, ::testing::ValuesIn(ftp_test::AllServers()),
                         [](const auto& server) { return ftp_test::Name(server.param); });

class OpeningScripted : public Opening {
 protected:
    void Begin(const std::string& name) {
        server_.SetListing(
            {"drwxr-xr-x 2 u g 512 Jan 1 10:00 pub", "-rw-r--r-- 1 u g 3 Jan 1 10:00 " + name});
        server_.AddFile(name, "nytt");
        Open();
        Connect(server_.HostField());
    }

    ftp_test::ScriptedServer server_;
};

TEST_F(OpeningScripted, WhatCouldNotBeFetchedIsNotOpened) {
    Begin("a.htm");
    QFile old(QFile::decodeName(Native(TemporaryPath("a.htm"))));
    ASSERT_TRUE(old.open(QIODevice::WriteOnly) && old.write("gammalt") > 0);
    old.close();
    server_.At("RETR a.htm", 1, {ftp_test::Say("550 Not now.")});
    ClickServer("a.htm");
    ClickOn("Command11");
    EXPECT_EQ(ReadFile(TemporaryPath("a.htm")), "gammalt");
    EXPECT_EQ(Errors().size(), 1);
    ClickOn("Command12");
    EXPECT_EQ(Started(), "editor " + Native(TemporaryPath("a.htm"))) << "the first program that is started";
    EXPECT_EQ(ReadFile(TemporaryPath("a.htm")), "nytt");
}

TEST_F(OpeningScripted, AFetchCanBeAborted) {
    Begin("a.htm");
    server_.At("RETR a.htm", 1, {ftp_test::Say("150 Here."), ftp_test::SendData("ny"), ftp_test::Stall()});
    ExpectBox question(kAbortTitle, kAbortQuestion, "cmdYes");
    When([this] { return Strip("label7") == "2"; }, [this] { ClickOn("avb"); });
    ClickServer("a.htm");
    ClickOn("Command11");
    EXPECT_EQ(ReadFile(TemporaryPath("a.htm")), "(missing)");
    EXPECT_EQ(Errors().size(), 1) << "that nothing is there to open is not told of";
    EXPECT_FALSE(Button("avb").isEnabled());
}

// A server may call its files whatever it likes.
TEST_F(OpeningScripted, ANameThatIsNoPlainNameNeverLeavesTheFolder) {
    for (const std::string name :
         {"..\\a.htm", "../a.htm", "C:\\a.htm", "/a.htm", "..", "pub\\..\\..\\a.htm"}) {
        window_.reset();
        server_.AddFile(name, "elakt");
        Begin(name);
        const QDir folder(QFile::decodeName(Native(platform::TemporaryFolder())));
        Get<QAbstractItemView>("listdir2").setFocus();
        ClickRow("listdir2", 1);
        ClickOn("Command11");
        ClickOn("Command12");
        EXPECT_EQ(Errors().size(), 2) << name;
        EXPECT_TRUE(folder.isEmpty()) << name;
        EXPECT_FALSE(QFile::exists(folder.filePath("../a.htm")));
    }
    WriteLocalFile("b.htm", "b");
    ClickOn("Command7");
    ClickLocal("b.htm");
    ClickOn("Command5");
    EXPECT_EQ(Started(), "browser " + LocalNative("b.htm")) << "the first program that is started";
}

TEST_F(OpeningScripted, ADirectoryIsNotFetched) {
    Begin("a.htm");
    ClickServer("pub");
    const auto before = server_.Commands();
    for (const char* name : {"Command11", "Command12"}) {
        Button(name).setEnabled(true);  // no rule enables them then
        ClickOn(name);
    }
    EXPECT_EQ(server_.Commands(), before);
}

}  // namespace
}  // namespace forms
