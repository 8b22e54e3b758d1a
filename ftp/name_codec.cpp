#include "ftp/name_codec.h"

#include <QStringConverter>
#include <algorithm>
#include <array>
#include <iterator>
#include <optional>

#include "ftp/listing_rows.h"
#include "ftp/visible_text.h"

namespace ftp {
namespace {

// Windows-1252 differs from Latin-1 in these 32 places only.
constexpr char16_t kFirstSpecial = 0x80;
constexpr std::array<char16_t, 32> kSpecial = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

bool IsAscii(std::string_view text) {
    return std::ranges::all_of(text, [](unsigned char c) { return c < 0x80; });
}

std::optional<QString> FromUtf8(std::string_view text) {
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    QString decoded = decoder.decode(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())));
    if (decoder.hasError()) return std::nullopt;
    return decoded;
}

QString FromWindows1252(std::string_view text) {
    QString decoded = QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
    for (QChar& c : decoded) {
        const std::size_t place = c.unicode() - kFirstSpecial;
        if (place < kSpecial.size()) c = kSpecial[place];
    }
    return decoded;
}

/// As NameOfListingLine, of the bytes: the blank is the same byte in every encoding here.
std::string_view NameBytes(std::string_view line) {
    return line.empty() ? line : line.substr(line.substr(0, line.size() - 1).rfind(' ') + 1);
}

}  // namespace

void NameCodec::Reset() {
    legacy_ = false;
    NewListing();
}

void NameCodec::NewListing() {
    exact_.clear();
}

QString NameCodec::DecodeListing(std::string_view line) {
    const QString text = Text(line);
    QString shown = VisibleText(text);
    const std::string_view name = NameBytes(line);
    const bool ascii = IsAscii(name);
    if (!ascii && !FromUtf8(name)) legacy_ = true;
    // Kept also where Encode would make the same bytes now: a later name may switch to the legacy encoding.
    if (ascii && shown == text) return shown;
    const QString shown_name = NameOfListingLine(shown);
    if (Keep(shown_name, name)) return shown;
    const QString in_bytes = VisibleBytes(name);
    Keep(in_bytes, name);
    return shown.chopped(shown_name.size()) + in_bytes;
}

/// Whether `shown` stands for these bytes alone in this listing.
bool NameCodec::Keep(const QString& shown, std::string_view name) {
    const QByteArrayView bytes(name.data(), static_cast<qsizetype>(name.size()));
    const auto known = exact_.constFind(shown);
    if (known != exact_.constEnd()) return *known == bytes;
    exact_.insert(shown, bytes.toByteArray());
    return true;
}

QString NameCodec::Decode(std::string_view text) const {
    return VisibleText(Text(text));
}

std::string NameCodec::Encode(const QString& name) const {
    if (const auto shown = exact_.constFind(name); shown != exact_.constEnd()) return shown->toStdString();
    if (legacy_) {
        if (auto encoded = Legacy(name)) return *std::move(encoded);
    }
    return name.toStdString();
}

QString NameCodec::Text(std::string_view bytes) {
    if (IsAscii(bytes)) return QString::fromLatin1(bytes.data(), static_cast<qsizetype>(bytes.size()));
    const auto decoded = FromUtf8(bytes);
    return decoded ? *decoded : FromWindows1252(bytes);
}

std::optional<std::string> NameCodec::Legacy(const QString& text) {
    std::string encoded;
    for (const QChar each : text) {
        char16_t c = each.unicode();
        const auto special = std::ranges::find(kSpecial, c);
        if (special != kSpecial.end()) {
            c = static_cast<char16_t>(kFirstSpecial + std::distance(kSpecial.begin(), special));
        } else if (c > 0xFF || (c >= kFirstSpecial && c < kFirstSpecial + kSpecial.size())) {
            return std::nullopt;
        }
        encoded += static_cast<char>(c);
    }
    return encoded;
}

}  // namespace ftp
