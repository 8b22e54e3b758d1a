#include "toolkit/pictures.h"

// The resources of a static library register only when asked to, and that macro works outside namespaces
// only.
static void RegisterResources() {
    Q_INIT_RESOURCE(toolkit);
}

namespace toolkit {
namespace {

QIcon Picture(const QString& name) {
    RegisterResources();
    return QIcon(QStringLiteral(":/toolkit/") + name);
}

}  // namespace

QIcon DrivePicture() {
    return Picture(QStringLiteral("drive.svg"));
}

QIcon FolderPicture() {
    return Picture(QStringLiteral("folder.svg"));
}

QIcon OpenFolderPicture() {
    return Picture(QStringLiteral("folder_open.svg"));
}

QIcon InformationPicture() {
    return Picture(QStringLiteral("information.svg"));
}

}  // namespace toolkit
