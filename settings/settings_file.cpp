#include "settings/settings_file.h"

#include <QList>
#include <QStringDecoder>
#include <algorithm>
#include <cctype>
#include <utility>

namespace settings {
namespace {

constexpr qsizetype kEscapeDigits = 4;

// Neither can be an entry or a section, so that a file without its first line is no file without both.
constexpr QStringView kFirstLine = u"# websmide 2";
constexpr QStringView kLastLine = u"# end";

bool IsBare(QChar c) {
    return c != u'\\' && c.category() != QChar::Other_Control && !c.isSurrogate();
}

QString Escaped(QChar c) {
    return c == u'\\' ? QStringLiteral("\\\\")
                      : QStringLiteral("\\u%1").arg(uint(c.unicode()), kEscapeDigits, 16, QLatin1Char('0'));
}

// `form` are the characters that mean something in this place of the line.
QString Escape(const QString& text, QStringView form) {
    QString escaped;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        const bool pair = c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        const bool end_blank = c.isSpace() && (i == 0 || i + 1 == text.size());
        if (pair) {
            escaped += c;
            escaped += text[++i];
        } else if (IsBare(c) && !end_blank && !form.contains(c)) {
            escaped += c;
        } else {
            escaped += Escaped(c);
        }
    }
    return escaped;
}

std::optional<QChar> Unit(QStringView digits) {
    const auto is_digit = [](QChar c) { return c.unicode() < 0x80 && std::isxdigit(c.unicode()); };
    if (digits.size() != kEscapeDigits || !std::ranges::all_of(digits, is_digit)) {
        return std::nullopt;
    }
    return QChar(digits.toUShort(nullptr, 16));
}

std::optional<QString> Unescape(QStringView escaped) {
    QString text;
    for (qsizetype i = 0; i < escaped.size(); ++i) {
        if (escaped[i] != u'\\') {
            text += escaped[i];
            continue;
        }
        const QStringView rest = escaped.sliced(i + 1);
        if (rest.startsWith(u'\\')) {
            text += u'\\';
            i += 1;
            continue;
        }
        const auto unit = rest.startsWith(u'u') ? Unit(rest.sliced(1).left(kEscapeDigits)) : std::nullopt;
        if (!unit) {
            return std::nullopt;
        }
        text += *unit;
        i += 1 + kEscapeDigits;
    }
    return text;
}

std::optional<QString> Decode(const QByteArray& bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(bytes);
    if (decoder.hasError()) {
        return std::nullopt;
    }
    return text;
}

/// Without their ends, and without the empty ones.
QList<QStringView> LinesOf(const QString& text) {
    QList<QStringView> lines;
    for (QStringView line : QStringView(text).split(u'\n')) {
        line.chop(line.endsWith(u'\r') ? 1 : 0);
        if (!line.isEmpty()) {
            lines += line;
        }
    }
    return lines;
}

bool HoldsControls(QStringView line) {
    return std::ranges::any_of(line, [](QChar c) { return c.category() == QChar::Other_Control; });
}

// Takes one line in; `section` is where entries go. False when the line is neither a section nor an entry.
bool Take(QStringView line, Sections& sections, QMap<QString, QString>*& section) {
    if (line.startsWith(u'[') && line.endsWith(u']')) {
        const auto name = Unescape(line.sliced(1).chopped(1));
        section = name ? &sections[*name] : nullptr;
        return section;
    }
    const qsizetype equals = line.indexOf(u'=');
    if (equals < 0 || !section) {
        return false;
    }
    const auto key = Unescape(line.first(equals));
    const auto value = Unescape(line.sliced(equals + 1));
    if (key && value) {
        section->insert(*key, *value);
    }
    return key && value;
}

}  // namespace

std::optional<Sections> Parse(const QByteArray& bytes) {
    const auto text = bytes.size() <= kMaxFileSize ? Decode(bytes) : std::nullopt;
    if (!text) {
        return std::nullopt;
    }
    QList<QStringView> lines = LinesOf(*text);
    if (lines.isEmpty()) {
        return std::nullopt;
    }
    if (lines.first() == kFirstLine) {
        lines.removeFirst();
        if (!lines.removeOne(kLastLine)) {
            return std::nullopt;
        }
    }
    Sections sections;
    QMap<QString, QString>* section = nullptr;
    for (const QStringView line : std::as_const(lines)) {
        if (HoldsControls(line) || !Take(line, sections, section)) {
            return std::nullopt;
        }
    }
    return sections;
}

QByteArray Serialise(const Sections& sections) {
    QString text = kFirstLine.toString() + u'\n';
    for (auto section = sections.begin(); section != sections.end(); ++section) {
        text += u'[' + Escape(section.key(), {}) + QStringLiteral("]\n");
        for (auto entry = section->begin(); entry != section->end(); ++entry) {
            text += Escape(entry.key(), u"[=#") + u'=' + Escape(entry.value(), {}) + u'\n';
        }
    }
    text += kLastLine;
    text += u'\n';
    return text.toUtf8();
}

QByteArray FileName(const QString& application) {
    static const QByteArray harmless = " '(),-._";
    QByteArray name;
    for (const char c : application.toUtf8()) {
        const auto byte = static_cast<uchar>(c);
        const bool hidden = c == '.' && name.isEmpty();
        if (byte >= 0x80 || std::isalnum(byte) || (harmless.contains(c) && !hidden)) {
            name += c;
        } else {
            name += '%' + QByteArray::number(byte, 16).rightJustified(2, '0').toUpper();
        }
    }
    return name + ".conf";
}

}  // namespace settings
