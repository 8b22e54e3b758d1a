#include "platform/shell.h"

#include <QDesktopServices>
#include <QUrl>

#include "platform/drive_path.h"
#include "platform/folder.h"

namespace platform {

int OpenDocument(const QString& path) {
    const auto native = Resolve(path);
    if (!native || !(FileLength(path) || FolderExists(path))) {
        return kShellNotFound;
    }
    // Percent-encoded from the bytes, so that names that are not UTF-8 reach the program unharmed.
    const QUrl url = QUrl::fromEncoded("file://" + native->toPercentEncoding("/"));
    return QDesktopServices::openUrl(url) ? kShellStarted : kShellNoAssociation;
}

}  // namespace platform
