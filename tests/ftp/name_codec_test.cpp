#include "ftp/name_codec.h"

#include <gtest/gtest.h>

#include <string>

namespace ftp {
namespace {

using namespace std::string_literals;

struct TextRow {
    std::string bytes;
    QString text;
};

TEST(NameCodec, ReadsUtf8OrElseWindows1252) {
    const TextRow rows[] = {
        {"", QString()},
        {"plain.htm", QStringLiteral("plain.htm")},
        {"r\xC3\xA4ksm\xC3\xB6rg\xC3\xA5s", QStringLiteral("räksmörgås")},
        {"r\xE4ksm\xF6rg\xE5s", QStringLiteral("räksmörgås")},
        {"\x80 5 \x96 \x9F", QStringLiteral("€ 5 – Ÿ")},
        {"\x81\x8D\x8F\x90\x9D", QStringLiteral("\u0081\u008D\u008F\u0090\u009D")},
        {"\xC3", QStringLiteral("Ã")},                 // cut short
        {"\xC0\xAF", QStringLiteral("À¯")},            // overlong
        {"\xED\xA0\x80", QStringLiteral("í\u00A0€")},  // a surrogate
        {"\xC3\xA4\xE4", QStringLiteral("Ã¤ä")},       // both: the whole line is one or the other
        {"\xF0\x9F\x90\xA2", QStringLiteral("🐢")},
        {"\xEF\xBB\xBF"
         "a",
         QStringLiteral("\uFEFFa")},  // nothing is lost
        {"a\0b"s, QStringLiteral("a\0b")},
    };
    for (const TextRow& row : rows) {
        EXPECT_EQ(NameCodec().Decode(row.bytes), row.text) << row.text.toStdString();
        EXPECT_EQ(NameCodec().DecodeListing(row.bytes), row.text) << row.text.toStdString();
    }
}

TEST(NameCodec, SendsBackTheBytesThatWereShown) {
    const TextRow rows[] = {
        {"-rw-r--r-- 1 u g 1 Jan 1 10:00 plain.htm", QStringLiteral("plain.htm")},
        {"-rw-r--r-- 1 u g 1 Jan 1 10:00 \xE5\xE4\xF6.htm", QStringLiteral("åäö.htm")},
        {"-rw-r--r-- 1 u g 1 Jan 1 10:00 \xC3\xA5\xC3\xA4\xC3\xB6.gif", QStringLiteral("åäö.gif")},
        {"-rw-r--r-- 1 u g 1 Jan 1 10:00 a\x81", QStringLiteral("a\u0081")},
        {"-rw-r--r-- 1 u g 1 m\xE4r 1 10:00 \xC3\xA5.htm", QStringLiteral("Ã¥.htm")},
        {"-rw-r--r-- 1 u g 1 Jan 1 10:00 my p\xE5ge.htm", QStringLiteral("påge.htm")},
        {"\xEF\xBB\xBF"
         "a",
         QStringLiteral("\uFEFFa")},
        {"\xE5", QStringLiteral("å")},
        {"x \xE5 ", QStringLiteral("å ")},
    };
    for (const bool another_name_is_legacy : {false, true}) {
        for (const TextRow& row : rows) {
            NameCodec codec;
            if (another_name_is_legacy) codec.DecodeListing("\xFF");
            const QString line = codec.DecodeListing(row.bytes);
            EXPECT_TRUE(line.endsWith(row.text)) << line.toStdString();
            const auto name_at = row.bytes.find_last_of(' ', row.bytes.size() - 2) + 1;
            EXPECT_EQ(codec.Encode(row.text), row.bytes.substr(name_at)) << row.text.toStdString();
        }
    }
}

TEST(NameCodec, SendsTypedNamesAsTheServerWritesItsOwn) {
    const QString typed = QStringLiteral("smörgås €");
    const std::string utf8 = typed.toStdString();
    const std::string legacy = "sm\xF6rg\xE5s \x80";
    NameCodec codec;
    EXPECT_EQ(codec.Encode(typed), utf8);
    codec.DecodeListing("- 1 \xC3\xA5");
    EXPECT_EQ(codec.Encode(typed), utf8);
    codec.DecodeListing("- m\xE4r plain");
    EXPECT_EQ(codec.Encode(typed), utf8) << "a month says nothing about names";
    codec.DecodeListing("- 1 \xE5");
    EXPECT_EQ(codec.Encode(typed), legacy);
    EXPECT_EQ(codec.Encode(QStringLiteral("жå")), QStringLiteral("жå").toStdString())
        << "not in Windows-1252";
    EXPECT_EQ(codec.Encode(QStringLiteral("a\u0080")), "a\xC2\x80") << "not in Windows-1252";
    codec.NewListing();
    EXPECT_EQ(codec.Encode(typed), legacy) << "the session's server has not changed";
    codec.Reset();
    EXPECT_EQ(codec.Encode(typed), utf8);
}

TEST(NameCodec, ForgetsAListingWithTheNext) {
    NameCodec codec;
    codec.DecodeListing("- 1 a\xE5");
    codec.DecodeListing("- 1 \xC3\xA4");
    EXPECT_EQ(codec.Encode(QStringLiteral("ä")), "\xC3\xA4");
    codec.NewListing();
    EXPECT_EQ(codec.Encode(QStringLiteral("ä")), "\xE4");
}

}  // namespace
}  // namespace ftp
