#pragma once
// The pictures of the drive and folder lists. UI thread only.

#include <QIcon>

namespace toolkit {

QIcon DrivePicture();
QIcon FolderPicture();
QIcon OpenFolderPicture();

}  // namespace toolkit
