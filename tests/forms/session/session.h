#pragma once
// The main window in a session with a server, driven by real events.

#include <QApplication>
#include <QLineEdit>
#include <QTimer>
#include <functional>

#include "tests/forms/main/main_window.h"
#include "tests/support/box_answerer.h"
#include "tests/support/ftp_server.h"
#include "tests/support/scripted_server.h"
#include "toolkit/picture_bar.h"

namespace forms {

class Session : public MainWindow {
 protected:
    /// The visible window of that name, or none.
    static QWidget* Window(const char* name) {
        for (QWidget* window : QApplication::topLevelWidgets())
            if (window->isVisible() && window->objectName() == QString::fromLatin1(name)) return window;
        return nullptr;
    }

    static void Replace(QLineEdit& field, const QString& text) {
        QTest::mouseClick(&field, Qt::LeftButton);
        QTest::keyClick(&field, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(&field, Qt::Key_Delete);
        QTest::keyClicks(&field, text);
    }

    /// Opens the connection dialog and fills it in.
    QWidget* OpenConnectionDialog(const std::string& host) {
        ClickOn("cmdConnection");
        QWidget* dialog = Window("frmConnection");
        EXPECT_TRUE(dialog && QTest::qWaitFor([dialog] { return QApplication::activeWindow() == dialog; }));
        Replace(*dialog->findChild<QLineEdit*>("txtHost"), QString::fromStdString(host));
        Replace(*dialog->findChild<QComboBox*>("txtusername")->lineEdit(), QStringLiteral("demo"));
        Replace(*dialog->findChild<QLineEdit*>("txtPassword"), QStringLiteral("demo"));
        return dialog;
    }

    void Connect(const std::string& host) {
        QWidget* dialog = OpenConnectionDialog(host);
        QTest::mouseClick(dialog->findChild<QPushButton*>("cmdConnect"), Qt::LeftButton);
        ASSERT_TRUE(app::Globals().SessionOpen);
        ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));
    }

    toolkit::ListBox& ServerLines() { return Get<toolkit::ListBox>("listDir"); }

    /// The row whose line ends with the name.
    int ServerRowOf(const QString& name) {
        for (int row = 0; row < ServerLines().ListCount(); ++row)
            if (ServerLines().List(row).endsWith(QChar(u' ') + name)) return row;
        ADD_FAILURE() << "not listed: " << qUtf8Printable(name);
        return -1;
    }

    void ClickServer(const QString& name, Qt::KeyboardModifiers keys = Qt::NoModifier) {
        ClickRow("listdir2", ServerRowOf(name), keys);
    }

    void DoubleClickServer(const QString& name) {
        ClickServer(name);
        auto& view = Get<QAbstractItemView>("listdir2");
        const QRect row = view.visualRect(view.model()->index(ServerRowOf(name), 0));
        QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, row.center());
    }

    void ClickLocal(const QString& name, Qt::KeyboardModifiers keys = Qt::NoModifier) {
        ClickRow("list2", static_cast<int>(Names().indexOf(name)), keys);
    }

    /// Which of the named buttons are enabled.
    QStringList Enabled(const QStringList& names) {
        QStringList enabled;
        for (const QString& name : names)
            if (Button(qPrintable(name)).isEnabled()) enabled.append(name);
        return enabled;
    }

    /// Acts once, as soon as the condition holds, in whatever event loop then runs.
    void When(std::function<bool()> condition, std::function<void()> act) {
        auto* poll = new QTimer(window_.get());
        QObject::connect(poll, &QTimer::timeout, poll, [poll, condition, act] {
            if (!condition()) return;
            poll->stop();
            poll->deleteLater();
            act();
        });
        poll->start(1);
    }

    QString Strip(const char* label) { return Get<QLabel>(label).text(); }
    double BarWidth() { return Get<toolkit::PictureBox>("p2").Width(); }
    double FullWidth() { return Get<toolkit::PictureBox>("p1").Width(); }

    QByteArray LocalFile(const QString& name) const {
        QFile file(files_.filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(missing)");
    }

    void WriteLocalFile(const QString& name, const QByteArray& bytes) {
        QFile file(files_.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    /// Every name in the local folder: nothing half-written may be among them.
    QStringList LocalNames() const {
        return QDir(files_.path())
            .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name);
    }

    QStringList TraceLines() {
        QStringList lines;
        const auto& list = Get<toolkit::ListBox>("listTrace");
        for (int row = 0; row < list.ListCount(); ++row) lines.append(list.List(row));
        return lines;
    }
};

/// What the panel of the server has: its buttons that act on a row, and those that act on the directory.
inline const QStringList kRowButtons{"Command2", "Command10", "Command11", "Command12", "Command13"};
inline const QStringList kPanelButtons{"Command1",  "Command2",  "Command9",  "Command10", "Command11",
                                       "Command12", "Command13", "Command14", "Command21", "Command23"};

inline const QString kAbortTitle = QStringLiteral("Avbryt överföring!");
inline const QString kAbortQuestion = QStringLiteral("Vill du avbryta överföringen ?");

}  // namespace forms
