#pragma once
// The favourite folders over a bare window, with folders and settings of its own, driven by real events.

#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QTest>

#include "forms/favourites/favourites_form.h"
#include "platform/drive_path.h"
#include "platform/folder.h"
#include "tests/platform/scratch_folder.h"

namespace forms {

class FavouritesDialog : public ::testing::Test {
 protected:
    void SetUp() override {
        window_.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
        QObject::connect(&drive_, &toolkit::DriveListBox::Change, &window_,
                         [this] { steps_.append("drive"); });
        QObject::connect(&dir_, &toolkit::DirListBox::Change, &window_, [this] { steps_.append("dir"); });
    }

    /// A folder on the disk, as the program writes it.
    QString MakeFolder(const QString& name) {
        QDir().mkpath(files_.FilePath(name));
        return platform::FromNative(QFile::encodeName(files_.FilePath(name)));
    }

    void Set(const char* key, const QString& value) {
        store_.SaveSetting("Websmide", "Favvisar", QString::fromLatin1(key), value);
    }

    QString Setting(const char* key) const {
        return store_.GetSetting("Websmide", "Favvisar", QString::fromLatin1(key));
    }

    void Open() {
        dialog_.Form_Load();
        // A window counts as active with its owner already; the keyboard comes later.
        ASSERT_TRUE(QTest::qWaitFor([this] { return QApplication::activeWindow() == &dialog_; }));
    }

    /// Opens with "a", "b", ... in the folders "C:\a", "C:\b", ..., of which none is on the disk.
    void OpenWith(const QString& letters) {
        QStringList names, folders;
        for (const QChar letter : letters) {
            names.append(letter);
            folders.append("C:\\inte här\\" + QString(letter));
        }
        settings::SaveFavourites(store_, names, folders);
        Open();
    }

    template <class Widget = QWidget>
    Widget& Get(const char* name) {
        Widget* found = dialog_.findChild<Widget*>(QString::fromLatin1(name));
        if (!found) throw std::runtime_error(name);
        return *found;
    }

    toolkit::ListBox& List(const char* name = "List1") { return Get<toolkit::ListBox>(name); }
    QPushButton& Button(const char* name) { return Get<QPushButton>(name); }
    void ClickOn(const char* button) { QTest::mouseClick(&Button(button), Qt::LeftButton); }
    void Press(Qt::Key key, Qt::KeyboardModifiers with = Qt::NoModifier) {
        QTest::keyClick(dialog_.focusWidget(), key, with);
    }
    QPoint Middle(int row) { return List().visualRect(List().model()->index(row, 0)).center(); }
    void ClickRow(int row, Qt::KeyboardModifiers with = Qt::NoModifier) {
        QTest::mouseClick(List().viewport(), Qt::LeftButton, with, Middle(row));
    }

    QStringList Items(const char* list) {
        QStringList items;
        for (int row = 0; row < List(list).ListCount(); ++row) items.append(List(list).List(row));
        return items;
    }
    QString Names() { return Items("List1").join(""); }
    /// The last names of the folders.
    QString Folders() {
        QString letters;
        for (const QString& folder : Items("List2")) letters += folder.right(1);
        return letters;
    }
    QString Path() { return Get<QLineEdit>("label1").text(); }
    QString Caption() { return Get<QGroupBox>("Frame1").title(); }
    int Selected() { return List().SelectedRows().value(0, -1); }

    ScratchFolder files_, settings_;
    settings::Store store_{settings_.Path()};
    QWidget window_;
    toolkit::DriveListBox drive_{&window_};
    toolkit::DirListBox dir_{&window_};
    QStringList steps_;  // which of the window's two lists has changed
    favviskat dialog_{{window_, store_, drive_, dir_}};
};

}  // namespace forms
