#pragma once
// What a person sees of the program, and where it takes clicks. Windows and controls go by their object
// names. UI thread only; what is not there is thrown as std::runtime_error.

#include <QAbstractItemView>
#include <QString>
#include <QStringList>
#include <QWidget>
#include <stdexcept>

namespace demo {

inline const QString kMain = QStringLiteral("MainForm");
inline const QString kConnection = QStringLiteral("frmConnection");
inline const QString kQuestion = QStringLiteral("InputBox");

/// Null when no such window is open.
QWidget* OpenWindow(const QString& name);

/// Whether the window is there, in its place.
bool IsShown(const QString& name);
/// Whether it takes clicks and has the keyboard besides.
bool IsReady(const QString& name);

/// Where it stands, with the frame that the window manager has put around it.
QRect FrameOf(const QString& name);

template <typename T = QWidget>
T& Control(const QString& window, const QString& name) {
    QWidget* const owner = OpenWindow(window);
    T* const control = owner ? owner->findChild<T*>(name) : nullptr;
    if (!control) throw std::runtime_error(qPrintable(window + u'.' + name + QStringLiteral(" is missing")));
    return *control;
}

/// Whether a control of the main window is.
bool IsEnabled(const QString& name);

QAbstractItemView& ServerFiles();
QAbstractItemView& LocalFiles();
QAbstractItemView& LocalFolders();
/// The names in the list; a row of the server is a whole line of its listing, with the name at the end.
QStringList Names(const QAbstractItemView& list);

/// Where to click, in pixels of the screen: the middle of a control, or a row of a list.
QPoint PlaceOf(const QString& window, const QString& name);
QPoint PlaceOf(const QAbstractItemView& list, const QString& name);

}  // namespace demo
