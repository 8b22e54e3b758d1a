#include "tools/demo/screens.h"

#include <QGuiApplication>
#include <QScreen>

#include "tools/demo/look.h"

namespace demo {
namespace {

using namespace Qt::StringLiterals;

const QString kTransfer = u"Form1"_s;
const QString kBox = u"MsgBox"_s;
const QString kPage = u"index.htm"_s;       // on both sides
const QString kNewPage = u"nyheter.htm"_s;  // to be sent
const QString kPicture = u"stuga.png"_s;    // on the user's side only
const QString kArchive = u"sommar.zip"_s;   // the server stops in the middle of it
const QString kHeld = u"Överfört: 204800 av 486400  42 %"_s;

// Numbered as in the document.
const std::vector<Mark> kRegions = {
    {u"Picture2"_s, Qt::AlignRight | Qt::AlignVCenter},
    {u"Text1"_s, Qt::AlignCenter},
    {u"lk"_s, Qt::AlignCenter},
    {u"Dir1"_s, Qt::AlignCenter},
    {u"list2"_s, Qt::AlignHCenter | Qt::AlignBottom},
    {u"Label2"_s, Qt::AlignRight | Qt::AlignBottom},
    {u"local_buttons"_s, Qt::AlignRight | Qt::AlignVCenter, {18, 0}},
    {u"listdir2"_s, Qt::AlignHCenter | Qt::AlignBottom},
    {u"server_buttons"_s, Qt::AlignRight | Qt::AlignVCenter},
    {u"Picture1"_s, Qt::AlignRight | Qt::AlignVCenter},
    {u"p1"_s, Qt::AlignLeft | Qt::AlignVCenter},
    {u"lblLastError"_s, Qt::AlignCenter},
    {u"listTrace"_s, Qt::AlignCenter},
};

// Out of the way, so that nothing looks pressed or explains itself.
QPoint RestingPlace() {
    return QGuiApplication::primaryScreen()->geometry().bottomRight();
}

}  // namespace

std::vector<Step> Screens(Input& input) {
    const auto press = [&input](const QString& window, const QString& name) {
        return [=, &input] { input.Click(PlaceOf(window, name)); };
    };
    const auto mark = [&input](QAbstractItemView& (*list)(), const QString& name) {
        return [=, &input] { input.Click(PlaceOf(list(), name)); };
    };
    const auto ready = [](const QString& window) { return [=] { return IsReady(window); }; };
    const auto enabled = [](const QString& name) { return [=] { return IsEnabled(name); }; };
    const auto server_has = [](const QString& name) {
        return [=] {
            return IsReady(kMain) && IsEnabled(u"Command21"_s) && Names(ServerFiles()).contains(name);
        };
    };
    const auto picture = [&](const QString& name, const QString& window, std::vector<Mark> marks = {}) {
        return Step{name, [&input] { input.Move(RestingPlace()); }, ready(window),
                    [=] { return FrameOf(window); }, std::move(marks)};
    };

    return {
        {u"start the program"_s, [] {}, ready(kMain)},
        {u"open the connection dialog"_s, press(kMain, u"cmdConnection"_s), ready(kConnection)},
        picture(u"kontakta"_s, kConnection),
        {u"connect"_s, press(kConnection, u"cmdConnect"_s), server_has(kPage)},
        {u"mark a file to send"_s, mark(LocalFiles, kNewPage), enabled(u"Command1"_s)},
        {u"send it"_s, press(kMain, u"Command1"_s), server_has(kNewPage)},
        {u"mark a file of the server"_s, mark(ServerFiles, kPage), enabled(u"Command2"_s)},
        {u"mark another local file"_s, mark(LocalFiles, kPicture), enabled(u"Command1"_s)},
        picture(u"programmet"_s, kMain, kRegions),
        {u"ask for the file"_s, press(kMain, u"Command2"_s), ready(kQuestion)},
        picture(u"spara-som"_s, kQuestion),
        {u"give it up"_s, press(kQuestion, u"cmdCancel"_s), ready(kMain)},
        {u"mark the first of several"_s, mark(ServerFiles, kArchive), enabled(u"Command2"_s)},
        {u"mark the second too"_s,
         [=, &input] {
             input.Press(Key::Control);
             mark(ServerFiles, kPage)();
         },
         [] { return ServerFiles().selectionModel()->selectedRows().size() == 2; }},
        {u"fetch both"_s,
         [=, &input] {
             input.Release(Key::Control);
             press(kMain, u"Command2"_s)();
         },
         [] { return IsReady(kTransfer) && OpenWindow(kTransfer)->windowTitle() == kHeld; }},
        picture(u"overforing"_s, kTransfer),
        {u"ask for an end"_s, press(kTransfer, u"Command1"_s), ready(kBox)},
        picture(u"avbryt"_s, kBox),
        {u"end it"_s, press(kBox, u"cmdYes"_s), ready(kMain)},
        {u"close the program"_s, [&input] { input.CloseWindow(); }, [] { return !OpenWindow(kMain); }},
    };
}

}  // namespace demo
