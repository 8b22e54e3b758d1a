#include "tools/demo/session.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <stdexcept>

namespace demo {
namespace {

using namespace Qt::StringLiterals;

const QString kMain = u"MainForm"_s;
const QString kConnection = u"frmConnection"_s;
const QString kQuestion = u"InputBox"_s;
const QString kPicture = u"segelbåt.png"_s;
const QString kPage = u"nyheter.htm"_s;
const QString kPagePicture = u"stuga.png"_s;

QWidget* OpenWindow(const QString& name) {
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->objectName() == name && window->isVisible()) return window;
    return nullptr;
}

// Where the window manager has not yet framed a window, the window has not come to its place.
bool IsReady(const QString& name) {
    const QWidget* const window = OpenWindow(name);
    return window && window->isEnabled() && window->isActiveWindow() &&
           window->frameGeometry() != window->geometry();
}

template <typename T = QWidget>
T& Control(const QString& window, const QString& name) {
    QWidget* const owner = OpenWindow(window);
    T* const control = owner ? owner->findChild<T*>(name) : nullptr;
    if (!control) throw std::runtime_error(qPrintable(window + u'.' + name + u" is missing"_s));
    return *control;
}

QAbstractItemView& ServerFiles() {
    return Control<QAbstractItemView>(kMain, u"listdir2"_s);
}

QAbstractItemView& LocalFiles() {
    return Control<QAbstractItemView>(kMain, u"list2"_s);
}

bool IsEnabled(const QString& name) {
    return Control(kMain, name).isEnabled();
}

// A row of the server is a whole line of its listing, with the name at the end.
QStringList Names(const QAbstractItemView& list) {
    QStringList names;
    for (int row = 0; row < list.model()->rowCount(); ++row)
        names.append(list.model()->index(row, 0).data().toString().section(u' ', -1));
    return names;
}

bool Shows(const QAbstractItemView& list, const QDir& folder) {
    QStringList shown = Names(list);
    QStringList there = folder.entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    shown.sort();
    there.sort();
    return shown == there;
}

bool AreSame(const QString& path, const QString& other_path) {
    QFile file(path);
    QFile other(other_path);
    return file.open(QIODevice::ReadOnly) && other.open(QIODevice::ReadOnly) && file.size() > 0 &&
           file.readAll() == other.readAll();
}

QPoint PlaceOf(const QWidget& widget, QPoint place) {
    if (!widget.isVisible() || !widget.isEnabled())
        throw std::runtime_error(qPrintable(widget.objectName() + u" takes no clicks"_s));
    if (!widget.rect().contains(place))
        throw std::runtime_error(qPrintable(widget.objectName() + u" has to be scrolled"_s));
    return (QPointF(widget.mapToGlobal(place)) * widget.devicePixelRatioF()).toPoint();
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

}  // namespace

std::vector<Step> Session(Input& input, const QDir& server, const QDir& local) {
    const QDir pictures(server.filePath(u"bilder"_s));
    const auto press = [&input](const QString& window, const QString& name) {
        return [=, &input] { input.Click(PlaceOf(window, name)); };
    };
    const auto server_shows = [=](const QDir& folder) {
        return [=] { return IsReady(kMain) && IsEnabled(u"Command21"_s) && Shows(ServerFiles(), folder); };
    };
    const auto selected = [](int count) {
        return [=] {
            return LocalFiles().selectionModel()->selectedRows().size() == count && IsEnabled(u"Command1"_s);
        };
    };

    return {
        {u"start the program"_s, [] {}, [=] { return IsReady(kMain) && Shows(LocalFiles(), local); }},
        {u"open the profile Demo"_s, press(kMain, u"cmdConnection"_s),
         [] {
             return IsReady(kConnection) &&
                    Control<QComboBox>(kConnection, u"Combo1"_s).currentText() == u"Demo"_s;
         }},
        {u"connect"_s, press(kConnection, u"cmdConnect"_s), server_shows(server)},
        {u"list what has come meanwhile"_s,
         [=] {
             QFile::copy(server.filePath(u"index.htm"_s), server.filePath(u"gästbok.htm"_s));
             press(kMain, u"Command9"_s)();
         },
         server_shows(server)},
        {u"enter a directory"_s, [&input] { input.Click(PlaceOf(ServerFiles(), u"bilder"_s), 2); },
         server_shows(pictures)},
        {u"mark a file"_s, [&input] { input.Click(PlaceOf(ServerFiles(), kPicture)); },
         [] { return IsEnabled(u"Command2"_s); }},
        {u"ask for the file"_s, press(kMain, u"Command2"_s), [] { return IsReady(kQuestion); }},
        {u"fetch the file"_s, press(kQuestion, u"cmdOk"_s),
         [=] {
             return IsReady(kMain) && AreSame(local.filePath(kPicture), pictures.filePath(kPicture)) &&
                    Shows(LocalFiles(), local);
         }},
        {u"leave the directory"_s, press(kMain, u"Command21"_s), server_shows(server)},
        {u"mark the first file to send"_s, [&input] { input.Click(PlaceOf(LocalFiles(), kPage)); },
         selected(1)},
        {u"mark the second one too"_s,
         [&input] {
             input.Press(Key::Control);
             input.Click(PlaceOf(LocalFiles(), kPagePicture));
         },
         selected(2)},
        {u"send both files"_s,
         [=, &input] {
             input.Release(Key::Control);
             input.Click(PlaceOf(kMain, u"Command1"_s));
         },
         [=] {
             return AreSame(server.filePath(kPage), local.filePath(kPage)) &&
                    AreSame(server.filePath(kPagePicture), local.filePath(kPagePicture)) &&
                    server_shows(server)();
         }},
        {u"close the program"_s,
         [&input] {
             input.Press(Key::Alt);
             input.Press(Key::F4);
             input.Release(Key::F4);
             input.Release(Key::Alt);
         },
         [] { return !OpenWindow(kMain); }},
    };
}

}  // namespace demo
