#include "platform/drive_path.h"

#include <sys/stat.h>

#include <QFile>
#include <QStringDecoder>
#include <algorithm>
#include <mutex>

#include "platform/folder_stream.h"
#include "platform/mount_table.h"

namespace platform {
namespace {

// A byte that the notation cannot hold stands as the private character U+F000 + byte: the backslash, and the
// bytes that are not UTF-8. These characters themselves, when a name on the disk has them, stand byte by
// byte. No other private character means a byte, so that none can smuggle a "/" or a NUL into a native name.
constexpr char16_t kPrivate = 0xF000;

bool StandsForByte(QChar c) {
    return c == QChar(kPrivate + '\\') || (c >= QChar(kPrivate + 0x80) && c <= QChar(kPrivate + 0xFF));
}

bool Unholdable(QChar c) {
    return c == u'\\' || StandsForByte(c);
}

std::optional<QString> HoldableText(const QByteArray& bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    const QString text = decoder(bytes);
    if (decoder.hasError() || std::ranges::any_of(text, Unholdable)) {
        return std::nullopt;
    }
    return text;
}

bool Exists(const QByteArray& native) {
    struct stat status;
    return lstat(native.constData(), &status) == 0;
}

// The one entry of the folder that is equal to `name` but for case; empty when there is none or more than
// one.
QByteArray OnlyMatch(const QByteArray& folder, const QByteArray& name) {
    const QString wanted = NameFromNative(name).toLower();
    QByteArray match;
    FolderStream stream(folder);
    while (const dirent* entry = stream.Next()) {
        const QByteArray candidate(entry->d_name);
        if (NameFromNative(candidate).toLower() == wanted) {
            if (!match.isEmpty()) {
                return {};
            }
            match = candidate;
        }
    }
    return match;
}

}  // namespace

QString NameFromNative(const QByteArray& name) {
    if (const auto text = HoldableText(name)) {
        return *text;
    }
    QString text;
    for (qsizetype i = 0; i < name.size();) {
        // The shortest run of bytes that is a character; a single byte that is none stands as private
        // character.
        qsizetype length = 1;
        std::optional<QString> character;
        for (; length <= 4 && i + length <= name.size(); ++length) {
            if ((character = HoldableText(name.sliced(i, length)))) {
                break;
            }
        }
        text += character ? *character : QString(QChar(kPrivate + static_cast<uchar>(name[i])));
        i += character ? length : 1;
    }
    return text;
}

QByteArray NameToNative(const QString& name) {
    QByteArray bytes;
    for (auto at = name.begin(); at != name.end();) {
        const auto special = std::find_if(at, name.end(), StandsForByte);
        bytes += QStringView(at, special).toUtf8();
        at = special;
        if (at != name.end()) {
            bytes += static_cast<char>(at->unicode() - kPrivate);
            ++at;
        }
    }
    return bytes;
}

QList<Drive> Drives() {
    static std::mutex mutex;
    static DriveLetters letters;
    QFile table(QStringLiteral("/proc/self/mountinfo"));
    const QByteArray mountinfo = table.open(QIODevice::ReadOnly) ? table.readAll() : QByteArray();
    const std::lock_guard lock(mutex);
    return letters.Assign(VolumesIn(mountinfo));
}

QString FromNative(const QByteArray& native) {
    return FromNative(native, Drives());
}

std::optional<QByteArray> ToNative(const QString& path) {
    // C: is what it is without a look at the mount table, which costs more than everything else here.
    static const QList<Drive> drive_c = DriveLetters().Assign({});
    const bool fixed = path.startsWith(u'/') || path.startsWith(QStringLiteral("C:"), Qt::CaseInsensitive);
    return ToNative(path, fixed ? drive_c : Drives());
}

std::optional<QByteArray> Resolve(const QString& path) {
    const auto native = ToNative(path);
    if (!native || Exists(*native)) {
        return native;
    }
    QByteArray found;
    const QList<QByteArray> names = native->sliced(1).split('/');
    for (qsizetype i = 0; i < names.size(); ++i) {
        QByteArray next = found + '/' + names[i];
        if (!Exists(next)) {
            const QByteArray match = OnlyMatch(found.isEmpty() ? "/" : found, names[i]);
            if (match.isEmpty()) {
                return found + '/' + names.sliced(i).join('/');
            }
            next = found + '/' + match;
        }
        found = next;
    }
    return found;
}

QString Join(const QString& path, const QString& name) {
    return path.endsWith(u'\\') ? path + name : path + u'\\' + name;
}

// From the bytes, both ways: a name need not be text.
QUrl ToUrl(const QString& path) {
    const auto native = ToNative(path);
    return native ? QUrl::fromEncoded("file://" + native->toPercentEncoding("/")) : QUrl();
}

std::optional<QString> FromUrl(const QUrl& url) {
    const bool here = url.host().isEmpty() || url.host() == QStringLiteral("localhost");
    const QByteArray native = QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
    if (!url.isLocalFile() || !here || native.contains('\0')) return std::nullopt;
    return FromNative(native);
}

}  // namespace platform
