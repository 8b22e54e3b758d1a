#pragma once
// A main window over a folder and settings of its own, driven by real events.

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

#include "app/shared/ftpglob.h"
#include "forms/main/main_form.h"
#include "platform/drive_path.h"
#include "toolkit/file_controls.h"
#include "toolkit/lists.h"

namespace forms {

class MainWindow : public ::testing::Test {
 protected:
    void SetUp() override {
        app::Globals() = {};
        start_folder_ = QDir::currentPath();
        ASSERT_TRUE(QDir::setCurrent(files_.path()));
    }

    void TearDown() override {
        window_.reset();
        QDir::setCurrent(start_folder_);
    }

    /// A file of `size` bytes in the window's folder.
    void MakeFile(const QString& name, qint64 size) {
        QFile file(files_.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_TRUE(file.resize(size));
    }

    void Open() {
        window_ = std::make_unique<MainForm>(store_);
        window_->show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));
    }

    void Close() {
        window_->close();
        window_.reset();
    }

    template <class Widget = QWidget>
    Widget& Get(const char* name) {
        Widget* found = window_->findChild<Widget*>(QString::fromLatin1(name));
        if (!found) throw std::runtime_error(name);
        return *found;
    }

    QPushButton& Button(const char* name) { return Get<QPushButton>(name); }

    void ClickOn(const char* button) { QTest::mouseClick(&Button(button), Qt::LeftButton); }

    void ClickRow(const char* list, int row, Qt::KeyboardModifiers keys = Qt::NoModifier) {
        auto& view = Get<QAbstractItemView>(list);
        const QModelIndex index = view.model()->index(row, 0);
        view.scrollTo(index);
        QTest::mouseClick(view.viewport(), Qt::LeftButton, keys, view.visualRect(index).center());
    }

    QStringList Names() {
        QStringList names;
        const auto& list = Get<toolkit::ListBox>("List1");
        for (int row = 0; row < list.ListCount(); ++row) names.append(list.List(row));
        return names;
    }

    QString Folder() const { return platform::FromNative(QFile::encodeName(files_.path())); }

    QTemporaryDir files_, settings_;
    settings::Store store_{settings_.path()};
    std::unique_ptr<MainForm> window_;

 private:
    QString start_folder_;
};

}  // namespace forms
