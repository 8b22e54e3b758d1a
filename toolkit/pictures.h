#pragma once
// The pictures of the drive and folder lists and of the message box. UI thread only.

#include <QIcon>

namespace toolkit {

QIcon DrivePicture();
QIcon FolderPicture();
QIcon OpenFolderPicture();
QIcon InformationPicture();

}  // namespace toolkit
