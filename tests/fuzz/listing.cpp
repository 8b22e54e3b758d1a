// A directory listing, from the bytes of the data connection to rows, names and back.

#include <string>
#include <vector>

#include "ftp/engine/wire/listing_lines.h"
#include "ftp/engine/wire/local_name.h"
#include "ftp/listing_rows.h"
#include "ftp/name_codec.h"
#include "tests/fuzz/fuzz.h"

namespace {

using fuzz::Require;

struct Cut {
    std::vector<std::string> lines;
    std::size_t dropped = 0;
    bool operator==(const Cut&) const = default;
};

Cut CutInPieces(std::string_view bytes, std::size_t piece) {
    ftp::ListingLines cutter;
    Cut cut;
    for (; bytes.size() > piece; bytes.remove_prefix(piece)) cutter.Feed(bytes.substr(0, piece), cut.lines);
    cutter.Feed(bytes, cut.lines);
    cutter.Finish(cut.lines);
    cut.dropped = cutter.Dropped();
    return cut;
}

/// The same with all bytes at hand.
Cut CutAtOnce(std::string_view bytes) {
    Cut cut;
    while (!bytes.empty()) {
        const std::size_t end = std::min(bytes.find('\n'), bytes.size());
        std::string_view line = bytes.substr(0, end);
        bytes.remove_prefix(std::min(end + 1, bytes.size()));
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (line.size() > ftp::ListingLines::kMaxLine)
            ++cut.dropped;
        else if (!line.empty())
            cut.lines.emplace_back(line);
    }
    return cut;
}

std::string_view LastWord(std::string_view line) {
    return line.substr(line.substr(0, line.size() - 1).rfind(' ') + 1);
}

void CheckName(const QString& name) {
    if (!ftp::IsPlainName(name.toStdString())) return;
    Require(!name.isEmpty() && name != QStringLiteral(".") && name != QStringLiteral(".."),
            "a plain name is a name");
    Require(!name.contains(u'/') && !name.contains(u'\\'), "a plain name has no separator");
    Require(!name.contains(QChar(u'\0')), "a plain name has no NUL");
}

void CheckRow(ftp::NameCodec& codec, const std::string& line) {
    const QString text = codec.DecodeListing(line);
    const int icon = ftp::ListingIcon(text);
    Require(icon >= 1 && icon <= 9, "an icon is 1..9");
    Require(ftp::IsDirectoryOrLink(text) || (icon != 2 && icon != 6 && icon != 7),
            "files have no folder's icon");
    Require(ftp::IsSummaryLine(text) == line.starts_with("total"),
            "the summary line is known by its letters");

    const QString name = ftp::NameOfListingLine(text);
    Require(!name.isEmpty() && text.endsWith(name), "a name ends its line");
    Require(!name.chopped(1).contains(u' '), "a name has no blank");
    Require(codec.Encode(name) == LastWord(line), "what was shown is what is sent back");
    CheckName(name);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes = fuzz::AsText(data, size);
    const Cut cut = CutInPieces(bytes, size + 1);
    Require(cut == CutAtOnce(bytes), "no byte is lost");
    Require(cut == CutInPieces(bytes, 1), "single bytes are cut as the whole is");
    Require(cut == CutInPieces(bytes, size == 0 ? 1 : 1 + data[0] % 16), "pieces are cut as the whole is");

    ftp::NameCodec codec;
    for (const std::string& line : cut.lines) CheckRow(codec, line);
    return 0;
}
