#include "settings/settings_file.h"

#include <QStringDecoder>
#include <algorithm>

namespace settings {
namespace {

constexpr qsizetype kEscapeDigits = 4;

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

std::optional<QString> Unescape(QStringView escaped) {
    QString text;
    for (qsizetype i = 0; i < escaped.size(); ++i) {
        if (escaped[i] != u'\\') {
            text += escaped[i];
            continue;
        }
        const QStringView rest = escaped.sliced(i + 1);
        bool number = false;
        const ushort unit =
            rest.sliced(std::min<qsizetype>(1, rest.size())).left(kEscapeDigits).toUShort(&number, 16);
        if (rest.startsWith(u'\\')) {
            text += u'\\';
            i += 1;
        } else if (rest.startsWith(u'u') && rest.size() > kEscapeDigits && number) {
            text += QChar(unit);
            i += 1 + kEscapeDigits;
        } else {
            return std::nullopt;
        }
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

}  // namespace

std::optional<Sections> Parse(const QByteArray& bytes) {
    const auto text = bytes.size() <= kMaxFileSize ? Decode(bytes) : std::nullopt;
    if (!text) {
        return std::nullopt;
    }
    Sections sections;
    QMap<QString, QString>* section = nullptr;
    for (QStringView line : QStringView(*text).split(u'\n')) {
        line.chop(line.endsWith(u'\r') ? 1 : 0);
        const qsizetype equals = line.indexOf(u'=');
        if (line.isEmpty()) {
            continue;
        }
        if (std::ranges::any_of(line, [](QChar c) { return c.category() == QChar::Other_Control; })) {
            return std::nullopt;
        }
        if (line.startsWith(u'[') && line.endsWith(u']')) {
            const auto name = Unescape(line.sliced(1).chopped(1));
            if (!name) {
                return std::nullopt;
            }
            section = &sections[*name];
            continue;
        }
        const auto key = Unescape(line.left(std::max<qsizetype>(equals, 0)));
        const auto value = Unescape(line.sliced(equals + 1));
        if (equals < 0 || !section || !key || !value) {
            return std::nullopt;
        }
        section->insert(*key, *value);
    }
    return sections;
}

QByteArray Serialise(const Sections& sections) {
    QString text;
    for (auto section = sections.begin(); section != sections.end(); ++section) {
        text += u'[' + Escape(section.key(), {}) + QStringLiteral("]\n");
        for (auto entry = section->begin(); entry != section->end(); ++entry) {
            text += Escape(entry.key(), u"[=") + u'=' + Escape(entry.value(), {}) + u'\n';
        }
    }
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
