#include "settings/known_servers.h"

#include <gtest/gtest.h>

#include <QFile>

#include "tests/platform/scratch_folder.h"

namespace settings {

static void PrintTo(const KnownServer& known, std::ostream* out) {
    *out << (known.had_tls ? "tls " : "plain ") << qUtf8Printable(known.fingerprint);
}

namespace {

const QString kServer = QStringLiteral("ftp.exempel.se:21");
const QString kOther = QStringLiteral("ftp.exempel.se:2121");

QString Fingerprint(const QString& pair) {
    return QStringList(32, pair).join(u':');
}

const QString kFirst = Fingerprint("0F");
const QString kSecond = Fingerprint("A9");

class KnownServersTest : public testing::Test {
 protected:
    void Set(const QString& key, const QString& value) {
        store_.SaveSetting("Websmide's FTP servers", kServer, key, value);
    }
    QString Get(const QString& key) const {
        return store_.GetSetting("Websmide's FTP servers", kServer, key);
    }
    QString File() const { return folder_.FilePath("Websmide's FTP servers.conf"); }
    QByteArray Content() const {
        QFile file(File());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : "?";
    }

    ScratchFolder folder_;
    Store store_{folder_.Path()};
};

TEST_F(KnownServersTest, OfANewServerNothingIsKnown) {
    EXPECT_EQ(LoadKnownServer(store_, kServer), KnownServer());
    EXPECT_EQ(LoadKnownServer(store_, {}), KnownServer());
    EXPECT_FALSE(QFile::exists(File()));
}

TEST_F(KnownServersTest, AreKeptByHostAndPort) {
    SaveKnownServer(store_, kServer, {true, kFirst});
    SaveKnownServer(store_, kOther, {false, kSecond});
    SaveKnownServer(store_, QStringLiteral("[2001:db8::1]:21"), {true, {}});
    Store again(folder_.Path());
    EXPECT_EQ(LoadKnownServer(again, kServer), (KnownServer{true, kFirst}));
    EXPECT_EQ(LoadKnownServer(again, kOther), (KnownServer{false, kSecond}));
    EXPECT_EQ(LoadKnownServer(again, QStringLiteral("[2001:db8::1]:21")), (KnownServer{true, {}}));
    EXPECT_EQ(LoadKnownServer(again, QStringLiteral("ftp.exempel.se:990")), KnownServer());
    EXPECT_TRUE(Content().contains("[ftp.exempel.se:21]\ncertificate=" + kFirst.toLatin1() + "\ntls=1\n"))
        << Content().constData();
}

TEST_F(KnownServersTest, CapitalsMakeNoOtherServer) {
    SaveKnownServer(store_, QStringLiteral("FTP.Exempel.SE:21"), {true, kFirst});
    EXPECT_EQ(LoadKnownServer(store_, kServer), (KnownServer{true, kFirst}));
    EXPECT_EQ(LoadKnownServer(store_, QStringLiteral("ftp.EXEMPEL.se:21")), (KnownServer{true, kFirst}));
}

TEST_F(KnownServersTest, ANewFingerprintTakesThePlaceOfTheOldOne) {
    SaveKnownServer(store_, kServer, {true, kFirst});
    SaveKnownServer(store_, kServer, {true, kSecond});
    EXPECT_EQ(LoadKnownServer(store_, kServer), (KnownServer{true, kSecond}));
    SaveKnownServer(store_, kServer, {true, {}});
    EXPECT_EQ(LoadKnownServer(store_, kServer), (KnownServer{true, {}}));
}

TEST_F(KnownServersTest, TlsIsNeverTakenBack) {
    SaveKnownServer(store_, kServer, {true, kFirst});
    SaveKnownServer(store_, kServer, {false, {}});
    EXPECT_EQ(LoadKnownServer(store_, kServer), (KnownServer{true, {}}));
}

TEST_F(KnownServersTest, OneWithoutANameIsNotKept) {
    SaveKnownServer(store_, {}, {true, kFirst});
    EXPECT_EQ(LoadKnownServer(store_, {}), KnownServer());
    EXPECT_FALSE(QFile::exists(File()));
}

TEST_F(KnownServersTest, WhatIsNoFingerprintIsNotKept) {
    SaveKnownServer(store_, kServer, {true, kFirst});
    SaveKnownServer(store_, kServer, {true, kFirst.toLower()});
    EXPECT_EQ(Get("certificate"), "");
    EXPECT_EQ(LoadKnownServer(store_, kServer), (KnownServer{true, {}}));
}

// What somebody has written into the file by hand.
TEST_F(KnownServersTest, TlsIsAnyNumberButNought) {
    for (const char* value : {"1", " 1 ", "1x", "7", "-1", "99999999999999999999"}) {
        Set("tls", value);
        EXPECT_TRUE(LoadKnownServer(store_, kServer).had_tls) << value;
    }
    for (const char* value : {"", "0", "00", "x1", "ja", "-"}) {
        Set("tls", value);
        EXPECT_FALSE(LoadKnownServer(store_, kServer).had_tls) << value;
    }
}

TEST_F(KnownServersTest, ARuinedFingerprintDoesNotTakeTlsWithIt) {
    Set("tls", "1");
    Set("certificate", "0F:0F");
    EXPECT_EQ(LoadKnownServer(store_, kServer), (KnownServer{true, {}}));
}

TEST(Fingerprint, IsThirtyTwoPairsOfCapitalHexDigits) {
    EXPECT_TRUE(IsFingerprint(kFirst));
    EXPECT_TRUE(IsFingerprint(kSecond));
    QString text = kFirst;
    for (const QString& wrong : {QString(), kFirst.left(94), kFirst + u':', kFirst + ":0F", kFirst.toLower(),
                                 Fingerprint("0G"), Fingerprint(" F"), Fingerprint("/F"), Fingerprint("@F"),
                                 Fingerprint(":F"), Fingerprint("0F ").left(95), kFirst.left(94) + u'\0',
                                 QString(text.replace(5, 1, u'-')), QString(text.fill(u'A'))})
        EXPECT_FALSE(IsFingerprint(wrong)) << qUtf8Printable(wrong);
    const QString wide_digit = QString(QChar(0xFF10)) + kFirst.mid(1);
    EXPECT_FALSE(IsFingerprint(wide_digit));
}

}  // namespace
}  // namespace settings
