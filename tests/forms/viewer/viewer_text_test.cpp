#include "forms/viewer/viewer_text.h"

#include <gtest/gtest.h>

namespace forms {
namespace {

TEST(TextOf, ReadsWhatSystemsWrite) {
    struct Row {
        QByteArray bytes;
        QString text;
    };
    const Row rows[] = {
        {"", ""},
        {"a\nb\n", "a\nb\n"},
        {"a\r\nb\r\n", "a\nb\n"},
        {"a\rb\r", "a\nb\n"},
        {"a\n\r\n\n\rb", "a\n\n\n\nb"},
        {"\303\245\303\244\303\266 \360\237\220\237", "åäö 🐟"},
        {"\345\344\366 \303\245", "åäö Ã¥"},
        {"\xEF\xBB\xBFmärke", "märke"},
        {"\xEF\xBB\xBF", ""},
        {"\ttab", "\ttab"},
        {QByteArray("a\0b", 3), "a\uFFFDb"},
        {"\1\33[31m\177\f", "\uFFFD\uFFFD[31m\uFFFD\uFFFD"},
        {"\226 \223x\224 \200 \205 \237", "– “x” € … Ÿ"},
        {"\201\215\217\220\235\240\377", "\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\u00A0ÿ"},  // not in use
        {"\xEF\xBB\xBF\xE5", "ï»¿å"},                                               // a mark that is not true
        {QByteArray("\xFF\xFE\xE5\0\r\0\n\0\x3D\xD8\x1F\xDC", 12), "å\n🐟"},
        {QByteArray("\xFE\xFF\0\xE5\0\n\xD8\x3D\xDC\x1F", 10), "å\n🐟"},
        {QByteArray("\xFF\xFE\0\0\xE5\0\0\0", 8), "å"},
        {QByteArray("\xFF\xFE\0\0x\0\0\0\1\0\0\0", 12), "x\uFFFD"},
        {QByteArray("\xFF\xFEx\0y", 5), "x\uFFFD"},  // an odd byte is half a character
        {QByteArray("\xFF\xFE\x3D\xD8x\0", 6), "\uFFFDx"},
        {QByteArray("\xFF\xFE\x1F\xDC\x3D\xD8\x1F\xDC\x3D\xD8", 10), "\uFFFD🐟\uFFFD"},
        {"\xFF\xFE", ""},
        {"\xFE\xFF", ""},
        {"\xFFx", "ÿx"},
        {"exe.\u202Etxt", "exe.\uFFFDtxt"},
        {"a\u2028b\u2029c\u0085d\uFEFFe\uFFFCf\uFDD0g", "a\uFFFDb\uFFFDc\uFFFDd\uFFFDe\uFFFDf\uFFFDg"},
        {"\303", "Ã"},  // half a character at the end is none
    };
    for (const Row& row : rows) {
        const ViewedText viewed = TextOf(row.bytes, false);
        EXPECT_EQ(viewed.text, row.text) << row.bytes.toPercentEncoding().toStdString();
        EXPECT_FALSE(viewed.cut || viewed.lines_split) << row.bytes.toPercentEncoding().toStdString();
    }
}

TEST(TextOf, TheBeginningOfALongerFileMayEndWithinACharacter) {
    const QByteArray fish = "\303\245\360\237\220\237";
    for (qsizetype size = 0; size < 4; ++size) {
        const ViewedText viewed = TextOf(fish.first(2 + size), true);
        EXPECT_EQ(viewed.text, "å");
        EXPECT_TRUE(viewed.cut);
    }
    EXPECT_EQ(TextOf(fish, true).text, "å🐟");
    EXPECT_EQ(TextOf("\303\245\345a", true).text, "Ã¥åa");
    const QByteArray wide("\xFF\xFE\xE5\0\x3D\xD8\x1F\xDC", 8);
    for (qsizetype size = 4; size < 8; ++size) {
        EXPECT_EQ(TextOf(wide.first(size), true).text, "å") << size;
    }
    EXPECT_EQ(TextOf(wide, true).text, "å🐟");
}

TEST(TextOf, TakesAsManyLinesAsAViewCanShow) {
    const ViewedText full = TextOf(QByteArray(kMostLines, '\n'), false);
    EXPECT_EQ(full.text.size(), kMostLines);
    EXPECT_FALSE(full.cut);
    const ViewedText cut = TextOf(QByteArray(kMostLines, '\n') + "x", false);
    EXPECT_EQ(cut.text.size(), kMostLines);
    EXPECT_TRUE(cut.cut);
}

TEST(TextOf, SplitsLinesThatAreTooLong) {
    const ViewedText whole = TextOf(QByteArray(kLongestLine, 'x') + "\ny", false);
    EXPECT_FALSE(whole.lines_split);
    const ViewedText split = TextOf(QByteArray(2 * kLongestLine + 1, 'x') + "\ny", false);
    EXPECT_TRUE(split.lines_split);
    const QString line(kLongestLine, u'x');
    EXPECT_EQ(split.text, line + u'\n' + line + "\nx\ny");
    // A pair of surrogates stays together.
    const ViewedText fish = TextOf(QByteArray(kLongestLine - 1, 'x') + "\360\237\220\237y", false);
    EXPECT_EQ(fish.text, line.chopped(1) + "🐟\ny");
    // And so do the lines of a split that is not one: an endless line without end is bounded, too.
    const ViewedText endless = TextOf(QByteArray(kMostLines * 3, 'x'), false);
    EXPECT_FALSE(endless.cut);
}

TEST(VisibleText, LeavesNothingThatActs) {
    EXPECT_EQ(VisibleText("rad\nbrytning\t\r"), "rad\uFFFDbrytning\uFFFD\uFFFD");
    for (char32_t c = 0; c <= 0xFFFF; ++c) {
        const QChar visible = VisibleText(QString(QChar(char16_t(c))))[0];
        EXPECT_NE(visible.category(), QChar::Other_Control) << std::uint32_t(c);
        EXPECT_NE(visible.category(), QChar::Separator_Line) << std::uint32_t(c);
        EXPECT_NE(visible.category(), QChar::Separator_Paragraph) << std::uint32_t(c);
    }
}

}  // namespace
}  // namespace forms
