#include "ftp/visible_text.h"

#include <QChar>
#include <QStringView>
#include <algorithm>
#include <array>

namespace ftp {
namespace {

constexpr char16_t kFirstPicture = 0x2400;
constexpr char16_t kDelete = 0x7F;
constexpr char16_t kPictureOfDelete = 0x2421;
constexpr QStringView kMark = u"‹U+";

struct Range {
    char32_t first, last;
};

// Drawn as nothing or as a blank, though their category does not tell. The braille blank and the musical one
// are among them, and the place that a text layout keeps for a picture.
constexpr std::array kFillers = {
    Range{0x034F, 0x034F},   Range{0x115F, 0x1160}, Range{0x17B4, 0x17B5}, Range{0x180B, 0x180F},
    Range{0x2065, 0x2065},   Range{0x2800, 0x2800}, Range{0x3164, 0x3164}, Range{0xFE00, 0xFE0F},
    Range{0xFFA0, 0xFFA0},   Range{0xFFF0, 0xFFF8}, Range{0xFFFC, 0xFFFC}, Range{0x1D159, 0x1D159},
    Range{0xE0000, 0xE0FFF},
};

bool IsHidden(char32_t c) {
    switch (QChar::category(c)) {
        case QChar::Other_Control:
        case QChar::Other_Format:
        case QChar::Other_Surrogate:
        case QChar::Separator_Line:
        case QChar::Separator_Paragraph:
            return true;
        case QChar::Separator_Space:
            return c != ' ';
        default:
            return std::ranges::any_of(kFillers, [c](Range r) { return c >= r.first && c <= r.last; });
    }
}

/// Nearly all that comes: shown as it is, whatever stands beside it.
bool IsPlain(QChar each) {
    const char16_t c = each.unicode();
    return (c >= 0x20 && c < kDelete) || (c > 0xA0 && c < 0x300 && c != 0xAD);
}

/// "‹80›" to "‹FF›".
bool IsMarkOfByte(QStringView text) {
    const auto is_digit = [&](qsizetype place, QStringView digits) { return digits.contains(text[place]); };
    return text.size() >= 4 && text[0] == u'‹' && is_digit(1, u"89ABCDEF") &&
           is_digit(2, u"0123456789ABCDEF") && text[3] == u'›';
}

bool LooksLikeAMark(char32_t c, QStringView from_there) {
    return (c >= kFirstPicture && c <= kPictureOfDelete) || from_there.startsWith(kMark) ||
           IsMarkOfByte(from_there);
}

void AppendMark(QString& shown, char32_t c) {
    if (c < 0x20) {
        shown += QChar(static_cast<char16_t>(kFirstPicture + c));
    } else if (c == kDelete) {
        shown += QChar(kPictureOfDelete);
    } else {
        shown += kMark;
        shown += QString::number(static_cast<uint>(c), 16).toUpper().rightJustified(4, u'0');
        shown += u'›';
    }
}

/// The character that `text` begins with: of one unit or two.
char32_t FirstOf(QStringView text) {
    const QChar unit = text.front();
    const bool pair = unit.isHighSurrogate() && text.size() > 1 && text[1].isLowSurrogate();
    return pair ? QChar::surrogateToUcs4(unit, text[1]) : unit.unicode();
}

}  // namespace

QString VisibleBytes(std::string_view bytes) {
    QString shown;
    for (const char each : bytes) {
        const auto byte = static_cast<unsigned char>(each);
        if (byte < 0x20 || byte == kDelete)
            AppendMark(shown, byte);
        else if (byte < 0x80)
            shown += QLatin1Char(each);
        else
            shown += u'‹' + QString::number(byte, 16).toUpper() + u'›';
    }
    return shown;
}

QString VisibleText(const QString& text) {
    QStringView rest = text;
    qsizetype untouched = std::ranges::find_if_not(rest, IsPlain) - rest.begin();
    if (untouched == rest.size()) return text;
    QString shown;
    bool marked = false;
    while (!rest.empty()) {
        shown += rest.first(untouched);
        rest = rest.sliced(untouched);
        if (rest.empty()) break;
        const char32_t c = FirstOf(rest);
        const qsizetype units = QChar::requiresSurrogates(c) ? 2 : 1;
        if (IsHidden(c) || LooksLikeAMark(c, rest)) {
            AppendMark(shown, c);
            marked = true;
        } else {
            shown += rest.first(units);
        }
        rest = rest.sliced(units);
        untouched = std::ranges::find_if_not(rest, IsPlain) - rest.begin();
    }
    return marked ? shown : text;
}

}  // namespace ftp
