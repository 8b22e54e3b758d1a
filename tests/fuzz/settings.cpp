// The settings file: whatever lies there is read or refused, and what is written is read back.

#include <QByteArray>
#include <QStringList>
#include <cstring>

#include "settings/settings_file.h"
#include "tests/fuzz/fuzz.h"

namespace {

using fuzz::Require;

void CheckFile(const QByteArray& bytes) {
    const auto sections = settings::Parse(bytes);
    if (sections)
        Require(settings::Parse(settings::Serialise(*sections)) == sections, "a file read is written alike");
}

/// The lines of the input as section, key, value, key, value ...
void CheckValues(const QString& text) {
    const QStringList words = text.split(u'\n');
    settings::Sections sections;
    for (qsizetype i = 2; i < words.size(); i += 2) sections[words[0]][words[i - 1]] = words[i];
    sections[text][text] = text;
    Require(settings::Parse(settings::Serialise(sections)) == sections, "any text is kept");
}

void CheckFileName(const QString& application) {
    if (application.isEmpty()) return;
    const QByteArray name = settings::FileName(application);
    Require(!name.isEmpty() && !name.startsWith('.'), "a file name is neither empty nor hidden");
    Require(!name.contains('/') && !name.contains('\\') && !name.contains('\0'),
            "a file name has no separator");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    CheckFile(bytes);
    // Read as UTF-16 it has lone surrogates, too.
    QString wide(bytes.size() / 2, Qt::Uninitialized);
    std::memcpy(wide.data(), data, static_cast<std::size_t>(wide.size()) * sizeof(QChar));
    for (const QString& text : {QString::fromUtf8(bytes), wide}) {
        CheckValues(text);
        CheckFileName(text);
    }
    return 0;
}
