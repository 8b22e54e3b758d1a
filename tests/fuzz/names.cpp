// What a server or a disk calls things, on its way to the screen and back: marks for what hides, the names'
// own bytes, and the session's secrets.

#include <QChar>
#include <algorithm>
#include <string>
#include <vector>

#include "ftp/name_codec.h"
#include "ftp/secret_mask.h"
#include "ftp/visible_text.h"
#include "tests/fuzz/fuzz.h"

namespace {

using fuzz::Require;

bool Hides(char32_t c) {
    switch (QChar::category(c)) {
        case QChar::Other_Control:
        case QChar::Other_Format:
        case QChar::Other_Surrogate:
        case QChar::Separator_Line:
        case QChar::Separator_Paragraph:
            return true;
        default:
            return QChar::isSpace(c) && c != U' ';
    }
}

/// What VisibleText has made, read back: each mark as the character that it stands for.
QString WithoutMarks(const QString& shown) {
    QString text;
    for (qsizetype i = 0; i < shown.size(); ++i) {
        const char16_t unit = shown[i].unicode();
        const qsizetype end = shown.indexOf(u'›', i);
        if (unit >= 0x2400 && unit <= 0x2421) {
            text += QChar(unit == 0x2421 ? char16_t{0x7F} : static_cast<char16_t>(unit - 0x2400));
        } else if (shown.sliced(i).startsWith(QStringLiteral("‹U+")) && end > i) {
            const char32_t c = shown.sliced(i + 3, end - i - 3).toUInt(nullptr, 16);
            if (QChar::requiresSurrogates(c)) {
                text += QChar(QChar::highSurrogate(c));
                text += QChar(QChar::lowSurrogate(c));
            } else {
                text += QChar(static_cast<char16_t>(c));
            }
            i = end;
        } else {
            text += shown[i];
        }
    }
    return text;
}

void CheckVisible(const QString& text) {
    const QString shown = ftp::VisibleText(text);
    for (const char32_t c : shown.toStdU32String()) Require(!Hides(c), "what is shown does not hide");
    Require(WithoutMarks(shown) == text, "what is shown tells what it is");
    const bool plain = std::ranges::all_of(text, [](QChar c) { return c >= u' ' && c < u'\x7F'; });
    Require(!plain || shown == text, "plain text is shown as it is");
}

/// As a listing line's name is found.
std::string LastWord(const std::string& line) {
    return line.substr(line.substr(0, line.empty() ? 0 : line.size() - 1).rfind(' ') + 1);
}

QString LastWord(const QString& line) {
    return line.sliced(line.chopped(line.isEmpty() ? 0 : 1).lastIndexOf(u' ') + 1);
}

void CheckCodec(const std::vector<std::string>& names) {
    ftp::NameCodec codec;
    std::vector<QString> shown;
    for (const std::string& name : names) {
        const QString read = codec.Decode(name);
        const auto reads_the_same = [&](const QString& each) { return LastWord(each) == read; };
        const bool is_taken =
            std::ranges::any_of(shown, reads_the_same);  // by itself, or in the other encoding
        shown.push_back(codec.DecodeListing("-rw-r--r-- 1 a a 1 Jan 1 1980 " + name));
        Require(shown.back().endsWith(read) || is_taken || name.find(' ') != name.npos || name.empty(),
                "a name is shown alike in a listing and in a trace");
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string last = LastWord(names[i]);
        const QString name = LastWord(shown[i]);
        Require(last.empty() || codec.Encode(name) == last, "what was shown is what is sent back");
    }
    codec.Reset();
    for (const std::string& name : names) {
        const QString typed = ftp::NameCodec::Text(name);
        Require(codec.Encode(typed) == typed.toStdString(), "what is typed goes as UTF-8");
        if (const auto legacy = ftp::NameCodec::Legacy(typed))
            Require(legacy->size() == static_cast<std::size_t>(typed.size()), "a letter is a byte there");
    }
}

/// The first line is the password, the second the user name, the rest what a server says.
void CheckSecrets(const std::vector<std::string>& lines) {
    const std::string& secret = lines.front();
    const std::string& user = lines[lines.size() > 1 ? 1 : 0];
    ftp::SecretMask mask;
    mask.Set(user, {secret});
    const bool is_one = !secret.empty() && secret != user;
    for (const std::string& line : lines) {
        const std::string words = mask.Words(line);
        Require(is_one || words == line, "without a secret nothing is masked");
        const bool may_arise = secret.find('*') != secret.npos;  // from the mask itself, beside other letters
        if (is_one && !may_arise) {
            Require(words == line || words.find("****") != words.npos, "a mask is seen");
            Require(line.find(secret) != line.npos || words.find(secret) == words.npos, "none comes to be");
        }
        if (is_one && line == secret) Require(words == "****", "a secret is masked");
        const std::string said = "550 " + line;
        const std::string reply = mask.Reply(said);
        Require(reply.starts_with("550 "), "the code of a reply stays");
        Require(is_one || reply == said, "without a secret a reply stays");
    }
    mask.Clear();
    for (const std::string& line : lines) Require(mask.Words(line) == line, "a mask forgets");
}

std::vector<std::string> Lines(std::string_view bytes) {
    std::vector<std::string> lines;
    for (;;) {
        const auto end = bytes.find('\n');
        lines.emplace_back(bytes.substr(0, end));
        if (end == bytes.npos) return lines;
        bytes.remove_prefix(end + 1);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes = fuzz::AsText(data, size);
    CheckVisible(ftp::NameCodec::Text(bytes));
    QString wide(static_cast<qsizetype>(size / sizeof(QChar)), Qt::Uninitialized);
    std::copy_n(data, static_cast<std::size_t>(wide.size()) * sizeof(QChar),
                reinterpret_cast<std::uint8_t*>(wide.data()));
    CheckVisible(wide);
    const auto lines = Lines(bytes);
    CheckCodec(lines);
    CheckSecrets(lines);
    return 0;
}
