#include "platform/mount_table.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(MountTable, TellsVolumesFromTheSystemsOwnMounts) {
    struct Row {
        const char* line;
        QList<QByteArray> volumes;
    };
    const Row rows[] = {
        {"22 1 8:2 / / rw,relatime shared:1 - ext4 /dev/sda2 rw", {}},
        {"22 1 7:0 / / ro,relatime - iso9660 /dev/sr0 ro", {}},
        {"30 22 8:1 / /boot/efi rw shared:5 - vfat /dev/sda1 rw", {}},
        {"30 22 8:1 / /boot rw shared:5 - vfat /dev/sda1 rw", {}},
        {"30 22 8:1 / /efi rw - vfat /dev/sda1 rw", {}},
        {"31 22 0:5 / /proc rw - proc proc rw", {}},
        {"32 22 0:25 / /media rw - tmpfs tmpfs rw", {}},
        {"32 22 0:25 / /mnt/auto rw - autofs systemd-1 rw", {}},
        {"33 22 8:17 / /media/anna/USB rw shared:7 master:2 - ext4 /dev/sdb1 rw", {"/media/anna/USB"}},
        {"33 22 8:17 / /run/media/anna/KAMERA rw - vfat /dev/sdb1 rw", {"/run/media/anna/KAMERA"}},
        {"33 22 8:17 / /mnt/disk rw - btrfs /dev/sdb1 rw", {"/mnt/disk"}},
        {"33 22 8:17 / /mediaplayer rw - ext4 /dev/sdb1 rw", {}},
        {"34 22 0:40 / /srv/delad rw - cifs //server/delad rw", {"/srv/delad"}},
        {"34 22 0:40 / /srv/nfs rw - nfs4 server:/ rw", {"/srv/nfs"}},
        {"34 22 0:40 / /home/anna/fj\303\244rr rw - fuse.sshfs anna@server: rw", {"/home/anna/fj\303\244rr"}},
        {"34 22 0:40 / /cdrom ro - udf /dev/sr0 ro", {"/cdrom"}},
        {"35 22 8:17 / /media/Min\\040disk\\134x\\011\\012\\043 rw - vfat /dev/sdb1 rw",
         {"/media/Min disk\\x\t\n#"}},
        {"35 22 8:17 / /media/\\9z\\04 rw - vfat /dev/sdb1 rw", {"/media/\\9z\\04"}},
        {"35 22 8:17 / /media/a", {}},
        {"35 22 8:17 / /media/a rw -", {}},
        {"35 22 8:17 / media/a rw - vfat /dev/sdb1 rw", {}},
        {"- - - - - - -", {}},
        {"", {}},
        {"\n\n \n", {}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(VolumesIn(row.line), row.volumes) << row.line;
    }
}

TEST(MountTable, ListsEachMountPointOnceInOrder) {
    EXPECT_EQ(VolumesIn("1 1 8:1 / /mnt/b rw - ext4 x rw\n"
                        "2 1 8:2 / /media/z rw - vfat x rw\n"
                        "3 1 8:3 / /mnt/b rw - ext4 y rw\n"
                        "4 1 8:4 / /media/a rw - vfat x rw\n"),
              (QList<QByteArray>{"/media/a", "/media/z", "/mnt/b"}));
}

QByteArray Letters(const QList<Drive>& drives) {
    QByteArray letters;
    for (const Drive& drive : drives) {
        letters += drive.root.left(1).toLatin1() + drive.native + ' ';
    }
    return letters;
}

TEST(DriveLetters, FollowTheOrderOfMountPoints) {
    const QList<Drive> drives = DriveLetters().Assign({"/media/a", "/media/b"});
    ASSERT_EQ(Letters(drives), "C/ D/media/a E/media/b ");
    EXPECT_EQ(drives[0].root, "C:\\");
    EXPECT_EQ(drives[0].label, "");
    EXPECT_EQ(drives[2].label, "b");
}

TEST(DriveLetters, NeverComeToMeanAnotherVolume) {
    DriveLetters letters;
    EXPECT_EQ(Letters(letters.Assign({"/media/b", "/media/c"})), "C/ D/media/b E/media/c ");
    EXPECT_EQ(Letters(letters.Assign({"/media/a", "/media/c"})), "C/ E/media/c F/media/a ");
    EXPECT_EQ(Letters(letters.Assign({})), "C/ ");
    EXPECT_EQ(Letters(letters.Assign({"/media/a", "/media/b"})), "C/ D/media/b F/media/a ");
}

TEST(DriveLetters, EndAtZ) {
    QList<QByteArray> many;
    for (int i = 0; i < 40; ++i) {
        many += "/media/" + QByteArray::number(i);
    }
    const QList<Drive> drives = DriveLetters().Assign(many);
    ASSERT_EQ(drives.size(), 24);
    EXPECT_EQ(drives.last().root, "Z:\\");
    EXPECT_EQ(drives.last().native, "/media/22");
}

const QList<Drive> kDrives = DriveLetters().Assign({"/media/usb", "/media/usb/inre", "/srv/Mitt \\ namn"});

TEST(DrivePath, FromNative) {
    struct Row {
        QByteArray native;
        QString path;
    };
    const Row rows[] = {
        {"/", "C:\\"},
        {"", "C:\\"},
        {"//", "C:\\"},
        {"/home/anna/webb", "C:\\home\\anna\\webb"},
        {"/home//anna/", "C:\\home\\anna"},
        {"/home/./anna/../eva", "C:\\home\\eva"},
        {"/..", "C:\\"},
        {"/media", "C:\\media"},
        {"/media/usb", "D:\\"},
        {"/media/usb/", "D:\\"},
        {"/media/usb/bilder", "D:\\bilder"},
        {"/media/usbs", "C:\\media\\usbs"},
        {"/media/usb/inre/x", "E:\\x"},
        {"/srv/Mitt \\ namn/b", "F:\\b"},
        {"/home/a\\b", QStringLiteral("C:\\home\\a") + QChar(0xF05C) + QStringLiteral("b")},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(FromNative(row.native, kDrives), row.path) << row.native.toStdString();
    }
}

TEST(DrivePath, ToNative) {
    struct Row {
        QString path;
        std::optional<QByteArray> native;
    };
    const Row rows[] = {
        {"C:\\", "/"},
        {"C:", "/"},
        {"c:\\", "/"},
        {"C:\\\\", "/"},
        {"C:/", "/"},
        {"C:\\home\\anna", "/home/anna"},
        {"c:\\home\\anna\\", "/home/anna"},
        {"C:\\\\home\\\\anna\\\\", "/home/anna"},
        {"C:/home/anna", "/home/anna"},
        {"C:\\program\\..\\hjälp\\.\\helpftp.htm", "/hj\303\244lp/helpftp.htm"},
        {"C:\\..\\..\\etc", "/etc"},
        {"D:\\", "/media/usb"},
        {"d:", "/media/usb"},
        {"D:\\bilder", "/media/usb/bilder"},
        {"D:\\..\\..\\etc", "/media/usb/etc"},
        {"F:\\b", "/srv/Mitt \\ namn/b"},
        {"/home/anna", "/home/anna"},
        {"/home//anna/", "/home/anna"},
        {"/", "/"},
        {"/a\\b", "/a\\b"},
        {"C:\\...", "/..."},
        {"C:\\ namn \\", "/ namn "},
        {"", std::nullopt},
        {"C", std::nullopt},
        {"C:home", std::nullopt},
        {"G:\\x", std::nullopt},
        {"Å:\\x", std::nullopt},
        {"1:\\x", std::nullopt},
        {"home\\anna", std::nullopt},
        {"\\home", std::nullopt},
        {"\\\\server\\delad", std::nullopt},
        {"~", std::nullopt},
        {"~/webb", std::nullopt},
        {".", std::nullopt},
        {"..\\x", std::nullopt},
        {" C:\\x", std::nullopt},
        {QStringLiteral("C:\\a") + QChar(0) + QStringLiteral("b"), std::nullopt},
        {QStringLiteral("/a") + QChar(0), std::nullopt},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(ToNative(row.path, kDrives), row.native) << row.path.toStdString();
    }
}

}  // namespace
}  // namespace platform
