#include "tools/demo/session.h"

#include <QComboBox>
#include <QFile>

#include "tools/demo/look.h"

namespace demo {
namespace {

using namespace Qt::StringLiterals;

const QString kPicture = u"segelbåt.png"_s;
const QString kPage = u"nyheter.htm"_s;
const QString kPagePicture = u"stuga.png"_s;

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
        {u"close the program"_s, [&input] { input.CloseWindow(); }, [] { return !OpenWindow(kMain); }},
    };
}

}  // namespace demo
