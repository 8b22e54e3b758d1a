#include "tools/demo/screens.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QScreen>

#include "tools/demo/look.h"

namespace demo {
namespace {

using namespace Qt::StringLiterals;

const QString kCertificate = u"frmCertificate"_s;
const QString kTransfer = u"Form1"_s;
const QString kAbout = u"Form2"_s;
const QString kFilter = u"Form3"_s;
const QString kHelpPanel = u"Form4"_s;
const QString kFavourites = u"favviskat"_s;
const QString kFolderUpload = u"fmRekurs"_s;
const QString kBox = u"MsgBox"_s;
const QString kPage = u"index.htm"_s;       // on both sides
const QString kNewPage = u"nyheter.htm"_s;  // to be sent
const QString kFolder = u"bilder"_s;
const QString kPicture = u"stuga.png"_s;   // on the user's side only
const QString kArchive = u"sommar.zip"_s;  // the server stops in the middle of it
const QString kFilesInFolder = u"7 st"_s;
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

constexpr int kBesideMenu = 60, kBelowMenu = 8;  // pixels

// A list of the main window down to the end of the menu that has popped up on it.
QRect MenuOn(QAbstractItemView& list) {
    QRect part(list.mapToGlobal(QPoint(0, 0)), list.size());
    part.setBottom(QApplication::activePopupWidget()->geometry().bottom() + kBelowMenu);
    return part;
}

// Far to the left on the row, so that the menu finds room on the list.
QPoint PlaceForMenu(QAbstractItemView& list, const QString& name) {
    return {list.mapToGlobal(QPoint(kBesideMenu, 0)).x(), PlaceOf(list, name).y()};
}

bool MenuIsOpen() {
    return QApplication::activePopupWidget() != nullptr;
}

bool NoMenuIsOpen() {
    return IsReady(kMain) && !MenuIsOpen();
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
    const auto rest = [&input] { input.Move(RestingPlace()); };
    const auto picture = [&](const QString& name, const QString& window,
                             const std::vector<Mark>& marks = {}) {
        return Step{name, rest, [=] { return IsShown(window); }, [=] { return FrameOf(window); }, marks};
    };
    const auto pop_up = [&input](QAbstractItemView& (*list)(), const QString& name) {
        return Step{u"pop up a menu"_s, [=, &input] { input.RightClick(PlaceForMenu(list(), name)); },
                    MenuIsOpen};
    };
    const auto menu_picture = [&](const QString& name, QAbstractItemView& (*list)()) {
        return Step{name, rest, MenuIsOpen, [=] { return MenuOn(list()); }};
    };
    const Step close_menu = {u"close the menu"_s, [&input] { input.Type({Key::Escape}); }, NoMenuIsOpen};
    const auto open = [&](const QString& button, const QString& window) {
        return Step{u"open a window"_s, press(kMain, button), ready(window)};
    };
    const auto close = [&](const QString& window, const QString& button) {
        return Step{u"close the window"_s, press(window, button), ready(kMain)};
    };

    const auto tick = [&](const QString& box) {
        return Step{u"tick a box"_s, press(kFolderUpload, box),
                    [=] { return Control<QCheckBox>(kFolderUpload, box).isChecked(); }};
    };

    return {
        {u"start the program"_s, [] {}, ready(kMain)},
        open(u"cmdConnection"_s, kConnection),
        picture(u"kontakta"_s, kConnection),
        {u"connect"_s, press(kConnection, u"cmdConnect"_s), ready(kCertificate)},
        picture(u"certifikat"_s, kCertificate),
        {u"trust the server"_s, press(kCertificate, u"cmdNow"_s), server_has(kPage)},
        {u"mark a file to send"_s, mark(LocalFiles, kNewPage), enabled(u"Command1"_s)},
        {u"send it"_s, press(kMain, u"Command1"_s), server_has(kNewPage)},
        {u"mark a file of the server"_s, mark(ServerFiles, kPage), enabled(u"Command2"_s)},
        {u"mark another local file"_s, mark(LocalFiles, kPicture), enabled(u"Command1"_s)},
        picture(u"window"_s, kMain),
        picture(u"programmet"_s, kMain, kRegions),
        pop_up(LocalFolders, kFolder),
        menu_picture(u"meny-katalog"_s, LocalFolders),
        close_menu,
        pop_up(LocalFiles, kPage),
        menu_picture(u"meny-dator"_s, LocalFiles),
        close_menu,
        pop_up(ServerFiles, kPage),
        menu_picture(u"meny-server"_s, ServerFiles),
        close_menu,
        open(u"Label2"_s, kFilter),
        {u"go to the number"_s, press(kFilter, u"bytes"_s),
         [] { return Control(kFilter, u"bytes"_s).hasFocus(); }},
        {u"make it 100 KB"_s,
         [&input] {
             input.Type({Key::Zero, Key::Zero, Key::Tab, Key::K});
         },
         [] {
             return Control<QComboBox>(kFilter, u"bytes"_s).currentText() == u"100"_s &&
                    Control<QComboBox>(kFilter, u"typ"_s).currentText() == u"KB"_s;
         }},
        picture(u"filter"_s, kFilter),
        close(kFilter, u"Command2"_s),
        open(u"Command29"_s, kFavourites),
        picture(u"favoriter"_s, kFavourites),
        close(kFavourites, u"Command2"_s),
        open(u"Command23"_s, kFolderUpload),
        tick(u"Check1"_s),
        tick(u"c2"_s),
        {u"ask for a favourite"_s, press(kFolderUpload, u"Command29"_s), ready(kFavourites)},
        {u"choose it"_s, press(kFavourites, u"Command1"_s),
         [] {
             return IsReady(kFolderUpload) &&
                    Control<QLabel>(kFolderUpload, u"l2"_s).text() == kFilesInFolder;
         }},
        picture(u"mapp"_s, kFolderUpload),
        close(kFolderUpload, u"Command2"_s),
        open(u"Command18"_s, kAbout),
        picture(u"om"_s, kAbout),
        close(kAbout, u"Command1"_s),
        {u"show the three steps"_s, press(kMain, u"Command19"_s), [] { return IsShown(kHelpPanel); }},
        picture(u"ett-tva-tre"_s, kHelpPanel),
        {u"hide them"_s, press(kMain, u"Command19"_s), [] { return !OpenWindow(kHelpPanel); }},
        open(u"Command13"_s, kBox),
        picture(u"ta-bort"_s, kBox),
        close(kBox, u"cmdNo"_s),
        open(u"Command2"_s, kQuestion),
        picture(u"spara-som"_s, kQuestion),
        close(kQuestion, u"cmdCancel"_s),
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
