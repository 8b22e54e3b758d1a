#include "forms/viewer/viewer_text.h"

#include <QStringDecoder>

namespace forms {
namespace {

QString Decode(const QByteArray& bytes, bool more) {
    // A character that the end of the beginning of a file cuts through is no error.
    const auto flag = more ? QStringDecoder::Flag::Default : QStringDecoder::Flag::Stateless;
    QStringDecoder decoder(QStringDecoder::Utf8, flag);
    const QString text = decoder(bytes);
    return decoder.hasError() ? QString::fromLatin1(bytes) : text;
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
