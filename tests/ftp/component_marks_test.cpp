// The component with names that hide something, and with a server that says the password again.

#include <gtest/gtest.h>

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <string>

#include "ftp/listing_rows.h"
#include "ftp/name_codec.h"
#include "tests/ftp/component_fixture.h"
#include "tests/support/scripted_server.h"

namespace ftp {
namespace {

using namespace ftp_test;  // the steps read as words

struct HiddenName {
    const char* bytes;
    const char* shown;
};

constexpr HiddenName kHiddenNames[] = {
    {"a\x1b[31m.txt", "a␛[31m.txt"},
    {"a\tb.txt", "a␉b.txt"},
    {"a\x7F", "a␡"},
    {"gpj.\xE2\x80\xAEtxt.exe", "gpj.‹U+202E›txt.exe"},
    {"a\xE2\x80\x8B.txt", "a‹U+200B›.txt"},
    {"a.txt", "a.txt"},
    {"a\xE2\x90\x89"
     "b.txt",
     "a‹U+2409›b.txt"},
    {"\xE5\x81\x01", "å‹U+0081›␁"},
};

class HiddenNames : public ComponentTest {
 protected:
    void SetUp() override {
        for (const HiddenName& name : kHiddenNames) server.AddFile(name.bytes, name.bytes);
        ComponentTest::Connect(server.HostField());
        ASSERT_TRUE(component->Connected());
        component->ListDirectory();
        for (const QString& line : listing) names += NameOfListingLine(line);
    }
    QByteArray Fetched(const QString& name) const {
        QFile file(folder.filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    ScriptedServer server;
    QTemporaryDir folder;
    QStringList names;
};

TEST_F(HiddenNames, AreShownWithMarks) {
    QStringList shown;
    for (const HiddenName& name : kHiddenNames) shown += QString::fromUtf8(name.shown);
    EXPECT_EQ(names.size(), shown.size());
    for (const QString& name : shown) EXPECT_TRUE(names.contains(name)) << name.toStdString();
}

TEST_F(HiddenNames, AreFetchedUnderTheirMarkedNames) {
    for (const HiddenName& name : kHiddenNames) {
        component->SourceFileName = QString::fromUtf8(name.shown);
        component->DestinationFileName = folder.filePath(component->SourceFileName);
        component->GetFile();
        EXPECT_TRUE(errors.empty()) << errors.front().second;
        EXPECT_EQ(Fetched(component->SourceFileName).toStdString(), name.bytes);
    }
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).size(), std::ssize(kHiddenNames));
}

TEST_F(HiddenNames, AreRenamedAndDeleted) {
    for (const HiddenName& name : kHiddenNames) {
        component->SourceFileName = QString::fromUtf8(name.shown);
        component->DestinationFileName = QStringLiteral("ny.txt");
        component->RenameFile();
        EXPECT_EQ(server.Commands().end()[-2], std::string("RNFR ") + name.bytes);
        component->DeleteFile();
        EXPECT_EQ(server.Commands().back(), std::string("DELE ") + name.bytes);
        EXPECT_EQ(trace.filter(QStringLiteral("DELE")).last().toStdString(),
                  std::string("DELE ") + name.shown);
    }
}

TEST_F(HiddenNames, AreNamedInErrors) {
    server.At("RETR", {Say("550 a\x1b[2J: no.")});
    component->SourceFileName = QStringLiteral("a␉b.txt");
    component->DestinationFileName = folder.filePath(component->SourceFileName);
    component->GetFile();
    ASSERT_EQ(OnlyError(), 550);
    EXPECT_EQ(errors.front().second, "Servern vägrar: 550 a␛[2J: no.");
    EXPECT_TRUE(trace.contains(QStringLiteral("550 a␛[2J: no.")));
    EXPECT_TRUE(QDir(folder.path()).isEmpty(QDir::Files | QDir::Hidden));
}

TEST_F(HiddenNames, AreNamedOnceInErrorsOfARun) {
    server.At("RETR", {Say("550 No.")});
    const std::string plain = "Servern vägrar: 550 No.", named = plain + " [a␉b.txt]";
    const TransferRun run(*component);
    const auto by_another_connection = [&] {
        return std::ranges::any_of(errors, [&](const auto& error) { return error.second != plain; });
    };
    for (int i = 0; i < 1000 && !by_another_connection(); ++i) {
        component->ExpectedSize = 5;
        component->SourceFileName = QStringLiteral("a␉b.txt");
        component->DestinationFileName = folder.filePath(QString::number(i));
        component->GetFile();
    }
    ASSERT_TRUE(by_another_connection());
    for (const auto& [number, text] : errors) EXPECT_TRUE(text == plain || text == named) << text;
}

TEST_F(HiddenNames, ThatAreTooLongForTheDiskLeaveNoLitter) {
    std::string hidden;
    while (hidden.size() < 90) hidden += "\xE2\x80\xAE";
    for (const std::string& name : {std::string(300, 'a'), hidden}) {
        errors.clear();
        server.AddFile(name, "hej");
        component->SourceFileName = NameCodec().Decode(name);
        component->DestinationFileName = folder.filePath(component->SourceFileName);
        component->GetFile();
        EXPECT_EQ(OnlyError(), 75);
        EXPECT_TRUE(errors.front().second.starts_with("Sökvägen leder inte till en fil: /"));
        EXPECT_TRUE(QDir(folder.path()).isEmpty(QDir::Files | QDir::Hidden));
    }
}

class Secrets : public ComponentTest {
 protected:
    Secrets() {
        component->UserName = QStringLiteral("demo");
        component->Password = QStringLiteral("hemlöst");
        component->Account = QStringLiteral("konto 7");
    }
    std::string Everything() const {
        std::string all = trace.join(u'\n').toStdString() + '\n' + commands.join(u'\n').toStdString();
        for (const auto& [number, text] : errors) all += '\n' + text;
        return all;
    }
    void ExpectNoSecrets() const {
        const QString all = QString::fromStdString(Everything());
        for (const QString& part : {QStringLiteral("heml"), QStringLiteral("konto")}) {
            EXPECT_FALSE(all.contains(part)) << all.toStdString();
        }
    }

    ScriptedServer server;
};

TEST_F(Secrets, AreMaskedInEveryReply) {
    server.At("USER", {Say("331 Not heml\xC3\xB6st?")});
    server.At("PASS", {Say("332-heml\xF6st it is\r\nheml\xC3\xB6stheml\xC3\xB6st\r\n332 Account?")});
    server.At("ACCT", {Say("230-konto 7\r\n heml\xC3\xB6st \x1b\r\n230 heml\xC3\xB6st")});
    Connect(server.HostField());
    ASSERT_TRUE(component->Connected()) << Everything();
    ExpectNoSecrets();
    for (const char* line : {"331 Not ****?", "332-**** it is", "********", "230-****", " **** ␛", "230 ****",
                             "PASS ****", "ACCT ****"}) {
        EXPECT_TRUE(trace.contains(QString::fromUtf8(line))) << line << " is not in\n" << Everything();
    }
    EXPECT_TRUE(commands.contains(QStringLiteral("PASS ****")));
    EXPECT_EQ(component->Password, QStringLiteral("hemlöst")) << "the caller's";
}

TEST_F(Secrets, AreMaskedInARefusal) {
    server.At("PASS", {Say("530 heml\xC3\xB6st is wrong")});
    Connect(server.HostField());
    ASSERT_EQ(OnlyError(), 530);
    EXPECT_EQ(errors.front().second, "Servern vägrar: 530 **** is wrong");
    EXPECT_TRUE(trace.contains(QStringLiteral("530 **** is wrong")));
    ExpectNoSecrets();
}

TEST_F(Secrets, AreMaskedForTheWholeSession) {
    server.At("CWD", {Say("550 heml\xC3\xB6st: konto 7")});
    server.At("QUIT", {Say("221 Bye heml\xC3\xB6st"), Close()});
    Connect(server.HostField());
    component->DirectoryName = QStringLiteral("a");
    component->ChangeDirectory();
    ASSERT_EQ(OnlyError(), 550);
    EXPECT_EQ(errors.front().second, "Servern vägrar: 550 ****: ****");
    component->CloseConnection();
    EXPECT_TRUE(trace.contains(QStringLiteral("221 Bye ****")));
    ExpectNoSecrets();
}

// The worker logs in again by itself, with the password of the last connect.
TEST_F(Secrets, AreMaskedWhenTheSessionIsOpenedAgain) {
    server.At("TYPE", {Say("200 Ok."), Close()});
    server.At("PASS", 2, {Say("530 heml\xC3\xB6st is wrong")});
    Connect(server.HostField());
    const QDeadlineTimer patience(20'000);
    while (component->Connected() && !patience.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    component->ListDirectory();
    ASSERT_EQ(errors.size(), 1u) << Everything();
    EXPECT_EQ(errors.front().second, "Servern vägrar: 530 **** is wrong");
    ExpectNoSecrets();
}

TEST_F(Secrets, AreThoseOfThePresentSession) {
    server.At("NOOP", {Say("200 Ok.")});
    Connect(server.HostField());
    component->CloseConnection();
    component->Password = QStringLiteral("annat");
    component->Account.clear();
    server.At("PASS", {Say("230 heml\xC3\xB6st annat")});
    Connect(server.HostField());
    EXPECT_TRUE(trace.contains(QStringLiteral("230 hemlöst ****"))) << Everything();
}

TEST_F(Secrets, AreNotTheUserName) {
    component->Password = component->UserName;
    server.At("PASS", {Say("230 Welcome demo")});
    Connect(server.HostField());
    EXPECT_TRUE(trace.contains(QStringLiteral("230 Welcome demo"))) << Everything();
}

TEST_F(Secrets, LeaveNamesOfFilesAlone) {
    server.AddFile("heml\xC3\xB6st.txt", "hej");
    Connect(server.HostField());
    component->ListDirectory();
    ASSERT_EQ(listing.size(), 1);
    EXPECT_EQ(NameOfListingLine(listing.front()), QStringLiteral("hemlöst.txt"));
    component->SourceFileName = QStringLiteral("hemlöst.txt");
    component->DeleteFile();
    EXPECT_EQ(server.Commands().back(), "DELE heml\xC3\xB6st.txt");
    EXPECT_EQ(commands.last(), QStringLiteral("DELE ****.txt"));
}

}  // namespace
}  // namespace ftp
