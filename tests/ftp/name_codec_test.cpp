#include "ftp/name_codec.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <string>

#include "ftp/listing_rows.h"

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
        {"\x81\x8D\x8F\x90\x9D", QStringLiteral("‹U+0081›‹U+008D›‹U+008F›‹U+0090›‹U+009D›")},
        {"\xC3", QStringLiteral("Ã")},                   // cut short
        {"\xC0\xAF", QStringLiteral("À¯")},              // overlong
        {"\xED\xA0\x80", QStringLiteral("í‹U+00A0›€")},  // a surrogate
        {"\xC3\xA4\xE4", QStringLiteral("Ã¤ä")},         // both: the whole line is one or the other
        {"\xF0\x9F\x90\xA2", QStringLiteral("🐢")},
        {"\xEF\xBB\xBF"
         "a",
         QStringLiteral("‹U+FEFF›a")},  // nothing is lost
        {"a\0b\t\x1b\x7f"s, QStringLiteral("a␀b␉␛␡")},
        {"a\x1b\xE5", QStringLiteral("a␛å")},
        {"\xE2\x80\xAEgpj.exe", QStringLiteral("‹U+202E›gpj.exe")},
        {"\xE2\x80\xAE\xE5", QStringLiteral("â€®å")},  // no direction mark in Windows-1252
        {"\xE2\x90\x9B", QStringLiteral("‹U+241B›")},
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
        {"-rw-r--r-- 1 u g 1 Jan 1 10:00 a\x81", QStringLiteral("a‹U+0081›")},
        {"-rw-r--r-- 1 u g 1 Jan 1 10:00 a\x1b[31m.txt", QStringLiteral("a␛[31m.txt")},
        {"-rw-r--r-- 1 u g 1 Jan 1 10:00 a\tb", QStringLiteral("a␉b")},
        {"-rw-r--r-- 1 u g 1 Jan 1 10:00 a\xE2\x80\xAEtxt.exe", QStringLiteral("a‹U+202E›txt.exe")},
        {"-rw-r--r-- 1 u g 1 Jan 1 10:00 \xE2\x80\x8B", QStringLiteral("‹U+200B›")},
        {"-rw-r--r-- 1 u g 1 Jan 1 10:00 \xE5\x7F", QStringLiteral("å␡")},
        {"-rw-r--r-- 1 u g 1 Jan 1 10:00 \x01", QStringLiteral("␁")},
        {"a\x1b b", QStringLiteral("b")},
        {"x a\x02 ", QStringLiteral("a␂ ")},
        {"-rw-r--r-- 1 u g 1 m\xE4r 1 10:00 \xC3\xA5.htm", QStringLiteral("Ã¥.htm")},
        {"-rw-r--r-- 1 u g 1 Jan 1 10:00 my p\xE5ge.htm", QStringLiteral("påge.htm")},
        {"\xEF\xBB\xBF"
         "a",
         QStringLiteral("‹U+FEFF›a")},
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

TEST(NameCodec, TellsNamesApartThatLookAlike) {
    const std::string names[] = {
        "a.txt",
        "a.txt\x01",
        "a.txt\xE2\x80\x8B",
        "a.txt\xE2\x80\x8C",
        "a\xC2\xAD.txt",
        "a.txt\xE2\x90\x81",                                      // a literal "␁"
        "a.txt\xE2\x80\xB9U+200B\xE2\x80\xBA",                    // a literal "‹U+200B›"
        "a.txt\xE2\x80\xB9U+2039\xE2\x80\xBAU+200B\xE2\x80\xBA",  // and what that is shown as
    };
    NameCodec codec;
    std::map<QString, std::string> shown;
    for (const std::string& name : names) shown[codec.DecodeListing("- 1 " + name).mid(4)] = name;
    EXPECT_EQ(shown.size(), std::size(names));
    for (const auto& [text, name] : shown) EXPECT_EQ(codec.Encode(text), name) << text.toStdString();
    codec.NewListing();
    EXPECT_EQ(codec.Encode(QStringLiteral("a.txt␁")), "a.txt\xE2\x90\x81") << "typed, not shown";
}

TEST(NameCodec, ShowsTheBytesOfANameThatReadsLikeAnEarlierOne) {
    const TextRow rows[] = {
        {"l\xC3\xB6sen", QStringLiteral("lösen")},
        {"l\xF6sen", QStringLiteral("l‹F6›sen")},
        {"l\xE2\x80\xB9\x46\x36\xE2\x80\xBAsen", QStringLiteral("l‹U+2039›F6›sen")},  // a literal "‹F6›"
        {"\x81", QStringLiteral("‹U+0081›")},
        {"\xC2\x81", QStringLiteral("‹C2›‹81›")},
        {"\xF6\x01\x7F", QStringLiteral("ö␁␡")},
        {"\xC3\xB6\x01\x7F", QStringLiteral("‹C3›‹B6›␁␡")},
        {"l\xC3\xB6sen", QStringLiteral("lösen")},  // once more
        {"l\xF6sen", QStringLiteral("l‹F6›sen")},
    };
    NameCodec codec;
    for (const TextRow& row : rows) EXPECT_EQ(codec.DecodeListing("- 1 " + row.bytes), "- 1 " + row.text);
    for (const TextRow& row : rows) EXPECT_EQ(codec.Encode(row.text), row.bytes) << row.text.toStdString();
    codec.NewListing();
    EXPECT_EQ(codec.DecodeListing("- 1 l\xF6sen"), QStringLiteral("- 1 lösen"));
    EXPECT_EQ(codec.Encode(QStringLiteral("lösen")), "l\xF6sen");
    codec.Reset();
    EXPECT_EQ(codec.Encode(QStringLiteral("l‹F6›")), QStringLiteral("l‹F6›").toStdString()) << "typed";
}

TEST(NameCodec, TakesLongNamesOfAnything) {
    std::string all;
    for (int c = 1; c < 256; ++c) {
        if (c != '\n' && c != ' ') all += static_cast<char>(c);
    }
    std::string bytes;
    while (bytes.size() < 4000) bytes += all;
    std::string hidden;
    while (hidden.size() < 4000) hidden += "\xE2\x80\xAE\xF3\xA0\x81\x81";
    for (const std::string& name : {bytes, hidden, hidden + '\xFF', std::string(4000, '\x01')}) {
        NameCodec codec;
        const QString line = codec.DecodeListing("-rw-r--r-- 1 u g 1 Jan 1 10:00 " + name);
        const QString shown = NameOfListingLine(line);
        EXPECT_EQ(codec.Encode(shown), name) << shown.left(40).toStdString();
        EXPECT_TRUE(std::ranges::all_of(shown.toUcs4(), [](uint c) { return QChar::isPrint(c); }));
    }
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
