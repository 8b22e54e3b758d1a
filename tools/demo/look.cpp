#include "tools/demo/look.h"

#include <QApplication>
#include <QWindow>

namespace demo {
namespace {

using namespace Qt::StringLiterals;

QPoint PlaceOf(const QWidget& widget, QPoint place) {
    if (!widget.isVisible() || !widget.isEnabled())
        throw std::runtime_error(qPrintable(widget.objectName() + u" takes no clicks"_s));
    if (!widget.rect().contains(place))
        throw std::runtime_error(qPrintable(widget.objectName() + u" has to be scrolled"_s));
    return (QPointF(widget.mapToGlobal(place)) * widget.devicePixelRatioF()).toPoint();
}

}  // namespace

QWidget* OpenWindow(const QString& name) {
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->objectName() == name && window->isVisible()) return window;
    return nullptr;
}

// Where the window manager has not yet framed a window, the window has not come to its place. The widget
// keeps the frame that it has been told of first, if only to say that there is none; the window behind it
// knows.
bool IsShown(const QString& name) {
    const QWidget* const window = OpenWindow(name);
    return window && !window->windowHandle()->frameMargins().isNull();
}

bool IsReady(const QString& name) {
    return IsShown(name) && OpenWindow(name)->isEnabled() && OpenWindow(name)->isActiveWindow();
}

QRect FrameOf(const QString& name) {
    const QWidget* const window = OpenWindow(name);
    if (!window) throw std::runtime_error(qPrintable(name + u" is not open"_s));
    return window->windowHandle()->frameGeometry();
}

bool IsEnabled(const QString& name) {
    return Control(kMain, name).isEnabled();
}

QAbstractItemView& ServerFiles() {
    return Control<QAbstractItemView>(kMain, u"listdir2"_s);
}

QAbstractItemView& LocalFiles() {
    return Control<QAbstractItemView>(kMain, u"list2"_s);
}

QAbstractItemView& LocalFolders() {
    return Control<QAbstractItemView>(kMain, u"Dir1"_s);
}

QStringList Names(const QAbstractItemView& list) {
    QStringList names;
    for (int row = 0; row < list.model()->rowCount(); ++row)
        names.append(list.model()->index(row, 0).data().toString().section(u' ', -1));
    return names;
}

QPoint PlaceOf(const QString& window, const QString& name) {
    const QWidget& widget = Control(window, name);
    return PlaceOf(widget, widget.rect().center());
}

QPoint PlaceOf(const QAbstractItemView& list, const QString& name) {
    const auto row = static_cast<int>(Names(list).indexOf(name));
    if (row < 0) throw std::runtime_error(qPrintable(name + u" is not listed"_s));
    return PlaceOf(*list.viewport(), list.visualRect(list.model()->index(row, 0)).center());
}

}  // namespace demo
