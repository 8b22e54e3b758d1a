#include "settings/profiles.h"
#include "tests/forms/session/session.h"

using ftp_test::Make;
using toolkit_test::ExpectBox;

namespace forms {
namespace {

class TypicalRequest : public Session, public ::testing::WithParamInterface<Make> {
 protected:
    void SetUp() override {
        if (auto reason = ftp_test::WhyMissing(GetParam())) GTEST_SKIP() << *reason;
        Session::SetUp();
    }
};

QByteArray Pattern(qsizetype size, int seed) {
    QByteArray bytes(size, Qt::Uninitialized);
    for (qsizetype i = 0; i < size; ++i) bytes[i] = static_cast<char>((i * 31 + i / 253 + seed) & 0xFF);
    return bytes;
}

TEST_P(TypicalRequest, FromAProfileToADownloadedFile) {
    const QByteArray page = Pattern(482'130, 1);
    ftp_test::Server server(GetParam());
    server.WriteFile("index.htm", page.toStdString());
    server.MakeFolder("pub");
    settings::SaveNewProfile(store_, "Hemma",
                             {QString::fromStdString(server.HostField()), "demo", "demo", ""});
    Open();

    ClickOn("cmdConnection");
    QWidget* dialog = Window("frmConnection");
    ASSERT_TRUE(dialog && QTest::qWaitFor([dialog] { return QApplication::activeWindow() == dialog; }));
    QTest::keyClick(dialog, Qt::Key_Return);
    ASSERT_TRUE(app::Globals().SessionOpen);
    EXPECT_FALSE(Window("frmConnection"));
    EXPECT_TRUE(TraceLines().contains("Försöker logga in med aktuella kontouppgifter..."));

    ClickServer("index.htm");
    EXPECT_EQ(app::Globals().SelectedServerFile, "index.htm");
    {
        ExpectBox name("Ladda hem fil från Server", "Spara index.htm(?)som", "cmdOk");
        ClickOn("Command2");
    }
    EXPECT_EQ(LocalFile("index.htm"), page);
    EXPECT_EQ(Names(), QStringList({"index.htm"}));
    EXPECT_EQ(Strip("label7"), "482130");
    EXPECT_EQ(Strip("antal"), "100 %");
    EXPECT_EQ(Strip("antal2"), "100 %");
    EXPECT_EQ(BarWidth(), FullWidth());
    const QStringList trace = TraceLines();
    EXPECT_TRUE(trace.filter("Hämtar hem filen ").filter("index.htm").size() == 1)
        << qPrintable(trace.join('\n'));
    if (GetParam() == Make::Vsftpd || GetParam() == Make::PyFtpdLib) {  // the others have words of their own
        EXPECT_EQ(trace.last(), "KLART: Kommandot/Överföringen är utförd.");
    }
}

TEST_P(TypicalRequest, SendsFilesAndFetchesThemBack) {
    ftp_test::Server server(GetParam());
    const QStringList names{"a.txt", "b.htm", "tom.txt"};
    const QList<QByteArray> contents{Pattern(100'000, 2), Pattern(70'001, 3), QByteArray()};
    for (int i = 0; i < 3; ++i) WriteLocalFile(names[i], contents[i]);
    Open();
    Connect(server.HostField());

    ClickLocal("a.txt");
    QTest::keyClick(&Get("list2"), Qt::Key_A, Qt::ControlModifier);
    ClickOn("Command1");
    EXPECT_FALSE(Window("Form1"));
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(server.ReadFile(names[i].toStdString()), contents[i].toStdString()) << qPrintable(names[i]);
    for (const QString& name : names) EXPECT_GE(ServerRowOf(name), 0);

    for (const QString& name : names) QFile::remove(files_.filePath(name));
    ClickServer("a.txt");
    ClickServer("b.htm", Qt::ControlModifier);
    ClickServer("tom.txt", Qt::ControlModifier);
    ClickOn("Command2");
    EXPECT_FALSE(Window("Form1"));
    for (int i = 0; i < 3; ++i) EXPECT_EQ(LocalFile(names[i]), contents[i]) << qPrintable(names[i]);
    EXPECT_EQ(Names(), names);
}

INSTANTIATE_TEST_SUITE_P(Servers, TypicalRequest, ::testing::ValuesIn(ftp_test::AllServers()),
                         [](const auto& server) { return ftp_test::Name(server.param); });

}  // namespace
}  // namespace forms
