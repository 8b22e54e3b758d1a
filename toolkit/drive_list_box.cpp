#include <QSignalBlocker>

#include "platform/drive_path.h"
#include "toolkit/file_controls.h"
#include "toolkit/pictures.h"

namespace toolkit {
namespace {

QString TextOf(const platform::Drive& drive) {
    const QString letter = drive.root.left(2);
    return drive.label.isEmpty() ? letter : letter + QStringLiteral("  [") + drive.label + u']';
}

}  // namespace

DriveListBox::DriveListBox(QWidget* parent) : QComboBox(parent) {
    Refresh();
    connect(this, &QComboBox::currentIndexChanged, this, &DriveListBox::Change);
}

QString DriveListBox::Drive() const {
    return currentData().toString();
}

bool DriveListBox::SetDrive(const QString& drive) {
    if (drive.isEmpty()) return false;
    Refresh();
    const int row = findData(drive.left(1).toUpper() + QStringLiteral(":\\"));
    if (row >= 0) setCurrentIndex(row);
    return row >= 0;
}

void DriveListBox::Refresh() {
    const QSignalBlocker blocker(this);
    const QString chosen = Drive();
    const QString chosen_text = currentText();
    clear();
    for (const platform::Drive& drive : platform::Drives())
        addItem(DrivePicture(), TextOf(drive), drive.root);
    if (findData(chosen) < 0 && !chosen.isEmpty()) addItem(DrivePicture(), chosen_text, chosen);
    setCurrentIndex(std::max(0, findData(chosen)));
}

void DriveListBox::showPopup() {
    Refresh();
    QComboBox::showPopup();
}

}  // namespace toolkit
