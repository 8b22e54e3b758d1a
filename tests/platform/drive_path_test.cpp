#include "platform/drive_path.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <random>

#include "tests/platform/scratch_folder.h"

namespace platform {
namespace {

QString Private(std::initializer_list<int> bytes) {
    QString text;
    for (const int byte : bytes) {
        text += QChar(0xF000 + byte);
    }
    return text;
}

TEST(Names, StandInTheNotation) {
    struct Row {
        QByteArray native;
        QString name;
    };
    const Row rows[] = {
        {"", ""},
        {"index.htm", "index.htm"},
        {"\303\205\303\204\303\226.TXT", "ÅÄÖ.TXT"},
        {"\360\237\220\237", QStringLiteral("🐟")},
        {" a\tb\nc ", " a\tb\nc "},
        {"a\\b", "a" + Private({0x5C}) + "b"},
        {"\\", Private({0x5C})},
        {"sm\366rg\345s", "sm" + Private({0xF6}) + "rg" + Private({0xE5}) + "s"},
        {"\303\205\366\303\226", "Å" + Private({0xF6}) + "Ö"},
        {"\303", Private({0xC3})},
        {"\360\237\220", Private({0xF0, 0x9F, 0x90})},
        {"\300\257", Private({0xC0, 0xAF})},                      // overlong "/"
        {"\355\240\200", Private({0xED, 0xA0, 0x80})},            // half of a surrogate pair
        {"\364\220\200\200", Private({0xF4, 0x90, 0x80, 0x80})},  // beyond Unicode
        {"\357\201\234", Private({0xEF, 0x81, 0x9C})},            // U+F05C itself
        {"\357\203\277", Private({0xEF, 0x83, 0xBF})},            // U+F0FF itself
        {"\357\200\257", QString(QChar(0xF02F))},                 // U+F02F stands for no byte
        {"\357\204\200", QString(QChar(0xF100))},                 // just outside
        {"\357\273\277a", QString(QChar(0xFEFF)) + "a"},          // a byte order mark is part of the name
    };
    for (const Row& row : rows) {
        EXPECT_EQ(NameFromNative(row.native), row.name) << row.native.toPercentEncoding().toStdString();
        EXPECT_EQ(NameToNative(row.name), row.native) << row.native.toPercentEncoding().toStdString();
    }
}

TEST(Names, CannotSmuggleSeparatorsIntoNativePaths) {
    for (int byte = 0; byte < 0x80; ++byte) {
        const QByteArray native = NameToNative(Private({byte}));
        EXPECT_FALSE(native.contains('/') || native.contains('\0') || native.contains('.')) << byte;
    }
}

TEST(Names, OfAnyBytesComeBackAsTheyWere) {
    std::mt19937 random(3);
    // Bytes that meet: lead and trail bytes, the private characters' own bytes, the separator's escape.
    const QByteArray likely = "aA.\\\xC3\xA5\xEF\x80\x81\x9C\x83\xBF\xED\xA0\xF0\x9F\xFF";
    for (int round = 0; round < 20'000; ++round) {
        QByteArray native;
        for (unsigned length = random() % 12; length > 0; --length) {
            char byte = random() % 4 ? likely[random() % likely.size()] : static_cast<char>(random());
            native += byte == '\0' || byte == '/' ? 'x' : byte;
        }
        const QString name = NameFromNative(native);
        ASSERT_EQ(NameToNative(name), native) << native.toPercentEncoding().toStdString();
        ASSERT_FALSE(name.contains(u'\\'));
    }
}

TEST(DrivePath, JoinsWithoutDoubling) {
    EXPECT_EQ(Join("C:\\", "a"), "C:\\a");
    EXPECT_EQ(Join("C:", "a"), "C:\\a");
    EXPECT_EQ(Join("C:\\x", "a"), "C:\\x\\a");
    EXPECT_EQ(Join("C:\\x\\", "a b"), "C:\\x\\a b");
}

TEST(DrivePath, LongPathsTravelWhole) {
    QByteArray native;
    for (int i = 0; i < 1000; ++i) {
        native += "/\303\245" + QByteArray(20, 'x');
    }
    EXPECT_EQ(ToNative(FromNative(native)), native);
}

TEST(DrivePath, CIsAlwaysTheRoot) {
    const QList<Drive> drives = Drives();
    ASSERT_FALSE(drives.isEmpty());
    EXPECT_EQ(drives.first().root, "C:\\");
    EXPECT_EQ(drives.first().native, "/");
    for (const Drive& drive : drives) {
        EXPECT_EQ(ToNative(drive.root), drive.native);
    }
}

TEST(Url, CarriesAnyNameThereAndBack) {
    for (const QByteArray& native :
         {QByteArray("/home/anna/a b #1 & 100%.htm"), QByteArray("/latin-\366.txt"), QByteArray("/a\\b?.txt"),
          QByteArray("/")}) {
        const QUrl url = ToUrl(FromNative(native));
        EXPECT_EQ(QByteArray::fromPercentEncoding(url.toEncoded()), "file://" + native);
        EXPECT_EQ(FromUrl(url), FromNative(native));
    }
    EXPECT_EQ(FromUrl(QUrl("file:///home/anna/%C3%A5ret.txt")), QStringLiteral("C:\\home\\anna\\året.txt"));
    EXPECT_EQ(FromUrl(QUrl("file://localhost/a.txt")), QStringLiteral("C:\\a.txt"));
    EXPECT_EQ(FromUrl(QUrl("file://another/a.txt")), std::nullopt);
    EXPECT_EQ(FromUrl(QUrl("file:///a%00.txt")), std::nullopt);
    EXPECT_EQ(FromUrl(QUrl("https://example.org/a.txt")), std::nullopt);
    EXPECT_TRUE(ToUrl("ingen sökväg").isEmpty());
}

class ResolveTest : public testing::Test {
 protected:
    void Touch(const QByteArray& name) {
        QFile file(QFile::decodeName(folder_.Native(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << name.toStdString();
    }
    void MakeDir(const QString& name) { ASSERT_TRUE(QDir(folder_.Path()).mkpath(name)); }
    // What the notation path below the test's folder resolves to, relative to that folder.
    QByteArray Found(const QString& path) {
        const QByteArray base = folder_.Native();
        const auto native = Resolve(FromNative(base) + u'\\' + path);
        return native && native->startsWith(base + '/') ? native->sliced(base.size() + 1) : "?";
    }
    ScratchFolder folder_;
};

TEST_F(ResolveTest, LooksNamesUpAsClassicFileSystemsDo) {
    MakeDir("Webb/Bilder");
    MakeDir("dubbel");
    MakeDir("DUBBEL");
    Touch("Webb/INDEX.htm");
    Touch("Webb/\303\205\303\204\303\226.txt");
    Touch("Webb/Lika.txt");
    Touch("Webb/LIKA.txt");
    Touch("dubbel/a.txt");
    struct Row {
        QString path;
        QByteArray found;
    };
    const Row rows[] = {
        {"Webb\\INDEX.htm", "Webb/INDEX.htm"}, {"webb\\index.HTM", "Webb/INDEX.htm"},
        {"WEBB\\bilder", "Webb/Bilder"},       {"webb\\åäö.TXT", "Webb/\303\205\303\204\303\226.txt"},
        {"webb\\Lika.txt", "Webb/Lika.txt"},   {"webb\\LIKA.txt", "Webb/LIKA.txt"},
        {"webb\\lika.txt", "Webb/lika.txt"},   {"webb\\Ny\\Fil.txt", "Webb/Ny/Fil.txt"},
        {"Dubbel\\A.TXT", "Dubbel/A.TXT"},     {"dubbel\\A.TXT", "dubbel/a.txt"},
        {"DUBBEL\\a.txt", "DUBBEL/a.txt"},     {"webb\\index.htm\\x", "Webb/INDEX.htm/x"},
        {"saknas\\Webb", "saknas/Webb"},       {"webb\\\\INDEX.HTM\\", "Webb/INDEX.htm"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(Found(row.path), row.found) << row.path.toStdString();
    }
}

TEST_F(ResolveTest, LooksUpNativePathsToo) {
    Touch("Fil.TXT");
    const QByteArray base = folder_.Native();
    EXPECT_EQ(Resolve(folder_.Path() + "/fil.txt"), base + "/Fil.TXT");
    EXPECT_EQ(Resolve("fil.txt"), std::nullopt);
}

TEST_F(ResolveTest, SeesLinksThatLeadNowhere) {
    QFile::link(folder_.FilePath("borta"), folder_.FilePath("Pekare"));
    EXPECT_EQ(Found("pekare"), "Pekare");
}

}  // namespace
}  // namespace platform
