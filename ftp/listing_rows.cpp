#include "ftp/listing_rows.h"

#include <QStringView>
#include <algorithm>
#include <initializer_list>

namespace ftp {
namespace {

enum Icon { kPage = 1, kFolder, kFile, kImage, kSound, kParentFolder, kDottedFolder, kArchive, kProgram };

bool EndsWithOneOf(const QString& line, std::initializer_list<QStringView> endings) {
    return std::ranges::any_of(endings, [&](QStringView ending) { return line.endsWith(ending); });
}

Icon FolderIcon(const QString& line) {
    if (line.contains(QStringLiteral(".."))) return kParentFolder;
    if (line.contains(u'.')) return kDottedFolder;
    return kFolder;
}

}  // namespace

int ListingIcon(const QString& line) {
    // The ending decides before the type letter: a folder "old.zip" shows as an archive.
    const QString ending = line.right(5).toLower();
    if (EndsWithOneOf(ending, {u".htm", u".html", u".asp", u".txt"})) return kPage;
    if (EndsWithOneOf(ending, {u".gif", u".jpg", u".png"})) return kImage;
    if (EndsWithOneOf(ending, {u".wav", u".mid"})) return kSound;
    if (EndsWithOneOf(ending, {u".zip"})) return kArchive;
    if (EndsWithOneOf(ending, {u".exe"})) return kProgram;
    return IsDirectoryOrLink(line) ? FolderIcon(line) : kFile;
}

bool IsSummaryLine(const QString& line) {
    return line.startsWith(QStringLiteral("total"));
}

bool IsDirectoryOrLink(const QString& line) {
    return line.startsWith(u'd', Qt::CaseInsensitive) || line.startsWith(u'l', Qt::CaseInsensitive);
}

QString NameOfListingLine(const QString& line) {
    if (line.isEmpty()) return {};
    return line.mid(QStringView(line).chopped(1).lastIndexOf(u' ') + 1);
}

}  // namespace ftp
