#include "app/shared/file_errors.h"

namespace app {
namespace {

QString Sentence(platform::FileResult result) {
    switch (result) {
        case platform::FileResult::NotFound:
            return QStringLiteral("Filen finns inte");
        case platform::FileResult::AlreadyExists:
            return QStringLiteral("Namnet är upptaget");
        case platform::FileResult::DiskFull:
            return QStringLiteral("Disken är full");
        case platform::FileResult::Denied:
            return QStringLiteral("Åtkomst nekas");
        default:
            return QStringLiteral("Sökvägen kan inte användas");
    }
}

}  // namespace

QString FileErrorText(platform::FileResult result, const QString& path) {
    return Sentence(result) + QStringLiteral(": ") + path;
}

}  // namespace app
