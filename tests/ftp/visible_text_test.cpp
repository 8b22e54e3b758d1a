#include "ftp/visible_text.h"

#include <gtest/gtest.h>

#include <QRandomGenerator>
#include <QSet>
#include <QStringList>
#include <string>

namespace ftp {
namespace {

QString Of(char32_t c) {
    return QString::fromUcs4(&c, 1);
}

std::string Number(char32_t c) {
    return QString::number(static_cast<uint>(c), 16).toStdString();
}

struct Row {
    QString text;
    const char* shown;
};

TEST(VisibleText, MarksWhatDoesNotShow) {
    const Row rows[] = {
        {QStringLiteral("\r\nKLART\t!"), "␍␊KLART␉!"},
        {QString(u'\0') + u'\x1b' + u'\x1f' + u'\x7f', "␀␛␟␡"},
        {QStringLiteral("a\u0080b\u0085c\u009Fd"), "a‹U+0080›b‹U+0085›c‹U+009F›d"},
        {QStringLiteral("a\u2028c\u2029d"), "a‹U+2028›c‹U+2029›d"},
        {QStringLiteral("\u202Egpj.exe\u202C"), "‹U+202E›gpj.exe‹U+202C›"},
        {QStringLiteral("\u061C\u200E\u200F"), "‹U+061C›‹U+200E›‹U+200F›"},
        {QStringLiteral("\u202A\u202B\u202D"), "‹U+202A›‹U+202B›‹U+202D›"},
        {QStringLiteral("\u2066\u2067\u2068\u2069"), "‹U+2066›‹U+2067›‹U+2068›‹U+2069›"},
        {QStringLiteral("\u200B\u200C\u200D\u2060\uFEFF"), "‹U+200B›‹U+200C›‹U+200D›‹U+2060›‹U+FEFF›"},
        {QStringLiteral("in\u00ADdex"), "in‹U+00AD›dex"},
        {QStringLiteral("a\u00A0b\u2009c\u3000"), "a‹U+00A0›b‹U+2009›c‹U+3000›"},
        {QStringLiteral("a\uFE0Fb\u3164c\u2800d\uFFFCe"), "a‹U+FE0F›b‹U+3164›c‹U+2800›d‹U+FFFC›e"},
        {QStringLiteral("a\U000E0041\U000E0100b\U0001D173"), "a‹U+E0041›‹U+E0100›b‹U+1D173›"},
        {QString(u'a') + QChar(0xD83D), "a‹U+D83D›"},
        {QString(QChar(0xDC22)) + QChar(0xD83D) + u'a', "‹U+DC22›‹U+D83D›a"},
        {QStringLiteral("👩\u200D🚒.png"), "👩‹U+200D›🚒.png"},
    };
    for (const Row& row : rows) EXPECT_EQ(VisibleText(row.text).toStdString(), row.shown);
}

TEST(VisibleText, LeavesPlainTextAlone) {
    for (const QString& text :
         {QString(), QStringLiteral("index.htm"), QStringLiteral("räksmörgås €.txt"), QStringLiteral("🐢"),
          QStringLiteral("日本語 العربية"), QStringLiteral("e\u0301"), QStringLiteral("‹U›"),
          QStringLiteral("U+202E›"), QStringLiteral("‹"), QStringLiteral("‹U"), QStringLiteral(" a b "),
          QStringLiteral("a\U0001F5BFb")}) {
        const QString shown = VisibleText(text);
        EXPECT_EQ(shown, text);
        EXPECT_EQ(shown.constData(), text.constData()) << "copied: " << text.toStdString();
    }
}

TEST(VisibleText, MarksWhatLooksLikeAMark) {
    const Row rows[] = {
        {QStringLiteral("␉"), "‹U+2409›"},
        {QStringLiteral("␀␠␡␢"), "‹U+2400›‹U+2420›‹U+2421›␢"},
        {QStringLiteral("‹U+202E›"), "‹U+2039›U+202E›"},
        {QStringLiteral("‹‹U+"), "‹‹U+2039›U+"},
        {QStringLiteral("‹\u202E›"), "‹‹U+202E››"},
        {QStringLiteral("‹U\u200B+"), "‹U‹U+200B›+"},
    };
    for (const Row& row : rows) EXPECT_EQ(VisibleText(row.text).toStdString(), row.shown);
}

// Reads the marks back, which can be done in one way only.
QString WithoutMarks(const QString& shown) {
    QString text;
    for (qsizetype i = 0; i < shown.size();) {
        const char16_t c = shown[i].unicode();
        if (c >= 0x2400 && c <= 0x2421) {
            text += c == 0x2421 ? QChar(0x7F) : QChar(c - 0x2400);
            ++i;
        } else if (QStringView(shown).sliced(i).startsWith(u"‹U+")) {
            const qsizetype end = shown.indexOf(u'›', i);
            const char32_t code = shown.mid(i + 3, end - i - 3).toUInt(nullptr, 16);
            text += QChar::requiresSurrogates(code) ? Of(code) : QString(QChar(static_cast<char16_t>(code)));
            i = end + 1;
        } else {
            text += shown[i++];
        }
    }
    return text;
}

TEST(VisibleText, NeverShowsTwoTextsAsOne) {
    const QStringList pieces = {
        QStringLiteral("‹"),      QStringLiteral("U"),      QStringLiteral("+"), QStringLiteral("2039"),
        QStringLiteral("›"),      QStringLiteral("␉"),      QString(u'\t'),      QString(u'\x7f'),
        QStringLiteral("\u202E"), QStringLiteral("\u2039"), QStringLiteral(" "), Of(0xE0041),
        QString(QChar(0xD83D)),   QString(QChar(0xDC22)),
    };
    QRandomGenerator random(1);
    for (int n = 0; n < 50'000; ++n) {
        QString text;
        for (int i = random.bounded(9); i >= 0; --i) text += pieces[random.bounded(pieces.size())];
        const QString shown = VisibleText(text);
        ASSERT_EQ(WithoutMarks(shown), text) << shown.toStdString();
        ASSERT_EQ(shown.count(u' '), text.count(u' ')) << shown.toStdString();
    }
}

TEST(VisibleText, TellsEveryCharacterFromEveryOther) {
    QSet<QString> seen;
    for (char32_t c = 0; c < 0xE1000;
         c += c == 0x1FFFF ? 0xC0001 : 1) {  // nothing hides between these planes
        const QString text = QChar::requiresSurrogates(c) ? Of(c) : QString(QChar(static_cast<char16_t>(c)));
        const QString shown = VisibleText(text);
        ASSERT_FALSE(seen.contains(shown)) << Number(c);
        if (shown != text || c < 0x3000) seen.insert(shown);  // a mark of its own, or what looks like a mark
        const auto kind = QChar::category(c);
        const bool hides = kind == QChar::Other_Control || kind == QChar::Other_Format ||
                           kind == QChar::Separator_Line || kind == QChar::Separator_Paragraph ||
                           (kind == QChar::Separator_Space && c != ' ');
        const bool shows = QChar::isPrint(c) && c < 0x300 && c != 0xA0;
        ASSERT_TRUE(!hides || shown != text) << Number(c);
        ASSERT_TRUE(!shows || shown == text) << Number(c);
    }
}

}  // namespace
}  // namespace ftp
