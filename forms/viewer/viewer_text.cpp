#include "forms/viewer/viewer_text.h"

#include <QStringDecoder>
#include <iterator>

namespace forms {
namespace {

// Bytes 0x80 to 0x9F of Windows-1252, which is Latin-1 otherwise. Five mean nothing there.
constexpr char16_t kWindows1252[] = {0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                     0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x8D,   0x017D, 0x8F,
                                     0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                     0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};
static_assert(std::size(kWindows1252) == 0xA0 - 0x80);

QString FromWindows1252(const QByteArray& bytes) {
    QString text = QString::fromLatin1(bytes);
    for (QChar& c : text) {
        if (c >= QChar(0x80) && c < QChar(0xA0)) c = kWindows1252[c.unicode() - 0x80];
    }
    return text;
}

// Qt passes halves of pairs on from UTF-16. The last one of a beginning has its other half in what follows.
QString WithoutHalves(QString text, bool more) {
    if (more && !text.isEmpty() && text.back().isHighSurrogate()) text.chop(1);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool pair = text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        if (pair) {
            ++i;
        } else if (text[i].isSurrogate()) {
            text[i] = QChar::ReplacementCharacter;
        }
    }
    return text;
}

QString Decode(const QByteArray& bytes, bool more) {
    const auto marked = QStringConverter::encodingForData(bytes);
    // A character that the end of the beginning of a file cuts through is no error.
    const auto flag = more ? QStringDecoder::Flag::Default : QStringDecoder::Flag::Stateless;
    QStringDecoder decoder(marked.value_or(QStringDecoder::Utf8), flag);
    const QString text = decoder(bytes);
    if (marked && *marked != QStringDecoder::Utf8) {
        return WithoutHalves(text, more);  // what is wrong in it makes it nothing else
    }
    return decoder.hasError() ? FromWindows1252(bytes) : text;
}

// Control characters, what steers the layout or the direction of what is read, and what means something of
// its own to a text document.
bool IsUnseen(char16_t c) {
    return c < u' ' || (c >= 0x7F && c <= 0x9F) || c == 0x061C || c == 0x200E || c == 0x200F ||
           (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) || c == 0xFEFF ||
           (c >= 0xFDD0 && c <= 0xFDEF) || (c >= 0xFFF9 && c <= 0xFFFC) || c >= 0xFFFE;
}

QChar Visible(QChar c) {
    return IsUnseen(c.unicode()) ? QChar(QChar::ReplacementCharacter) : c;
}

// Puts the lines down one character at a time.
class Lines {
 public:
    explicit Lines(qsizetype size) { result_.text.reserve(size); }

    bool Full() const { return lines_ == kMostLines; }
    void End() {
        result_.text += u'\n';
        length_ = 0;
        ++lines_;
    }
    void Add(QChar c) {
        if (length_ >= kLongestLine && !c.isLowSurrogate()) {
            result_.lines_split = true;
            End();
        }
        result_.text += c;
        ++length_;
    }
    ViewedText Result(bool cut) && {
        result_.cut = cut;
        return std::move(result_);
    }

 private:
    ViewedText result_;
    qsizetype lines_ = 0, length_ = 0;
};

}  // namespace

ViewedText TextOf(const QByteArray& bytes, bool more) {
    const QString text = Decode(bytes, more);
    Lines lines(text.size());
    qsizetype i = 0;
    for (; i < text.size() && !lines.Full(); ++i) {
        const QChar c = text[i];
        if (c == u'\n' || c == u'\r') {
            lines.End();
            if (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') ++i;
        } else {
            lines.Add(c == u'\t' ? c : Visible(c));
        }
    }
    return std::move(lines).Result(more || i < text.size());
}

QString VisibleText(const QString& text) {
    QString visible = text;
    for (QChar& c : visible) c = Visible(c);
    return visible;
}

}  // namespace forms
