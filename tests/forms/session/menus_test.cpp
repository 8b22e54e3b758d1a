#include <QClipboard>
#include <QMenu>

#include "settings/favourites.h"
#include "tests/forms/session/session.h"

using toolkit_test::ExpectBox;

namespace forms {
namespace {

// Context menus and keys, against a server whose every command is seen.
class Menus : public Session {
 protected:
    void SetUp() override {
        Session::SetUp();
        for (const char* name : {"a.txt", "b.txt"}) WriteLocalFile(name, name);
        ASSERT_TRUE(QDir(files_.path()).mkdir("mapp"));
        server_.SetListing({"drwxr-xr-x 2 u g 512 Jan 1 10:00 pub", "-rw-r--r-- 1 u g 3 Jan 1 10:00 x.txt",
                            "-rw-r--r-- 1 u g 3 Jan 1 10:00 y.txt"});
        for (const char* name : {"x.txt", "y.txt"}) server_.AddFile(name, "hej");
        Open();
    }

    /// The context menu that a click with the right button on the row (-1: beside the rows) brings up.
    QMenu* MenuOf(const char* list, int row) {
        auto& view = Get<QAbstractItemView>(list);
        QPoint place(20, view.viewport()->height() - 4);
        if (row >= 0) {
            const QModelIndex index = view.model()->index(row, 0);
            view.scrollTo(index);
            place = view.visualRect(index).center();
        }
        QWidget& window = *view.window();
        QTest::mousePress(window.windowHandle(), Qt::RightButton, {}, view.viewport()->mapTo(&window, place));
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        EXPECT_TRUE(menu) << list;
        if (menu) QTest::mouseRelease(menu, Qt::RightButton, {}, QPoint(-1, -1));
        return menu;
    }

    /// "Command11 Command12" of those that may be chosen.
    static QString Possible(const QMenu& menu) {
        QStringList names;
        for (const QAction* action : menu.actions())
            if (action->isEnabled() && !action->isSeparator()) names.append(action->objectName());
        return names.join(' ');
    }

    static void Choose(QMenu& menu, const char* name) {
        auto* action = menu.findChild<QAction*>(QString::fromLatin1(name));
        ASSERT_TRUE(action) << name;
        QTest::mouseClick(&menu, Qt::LeftButton, {}, menu.actionGeometry(action).center());
        QApplication::processEvents();  // the command begins when its menu is gone
    }

    int Count(const std::string& command) const {
        const auto commands = server_.Commands();
        return static_cast<int>(std::ranges::count_if(
            commands, [&](const std::string& line) { return line.starts_with(command); }));
    }

    toolkit::ListBox& TraceList() { return Get<toolkit::ListBox>("listTrace"); }

    ftp_test::ScriptedServer server_;
};

TEST_F(Menus, TheLocalFilesMenuOffersWhatTheButtonsDo) {
    QMenu* menu = MenuOf("list2", 0);
    ASSERT_TRUE(menu);
    EXPECT_EQ(Possible(*menu), "Command5 Command4 Command6 Command8 Command3 Command7");
    EXPECT_EQ(Names().at(Get<toolkit::ListBox>("List1").SelectedRows().first()), "a.txt");
    const QString question = QStringLiteral("Vill du ta bort [") + Folder() + "\\a.txt] ?";
    {
        ExpectBox box("Ta bort fil", question, "cmdYes");
        Choose(*menu, "Command8");
    }
    EXPECT_EQ(Names(), QStringList("b.txt"));

    menu = MenuOf("list2", -1);
    ASSERT_TRUE(menu);
    EXPECT_EQ(Possible(*menu), "Command3 Command7");
    menu->close();
}

TEST_F(Menus, SeveralLocalFilesAreDeletedFromTheMenu) {
    ClickLocal("a.txt");
    ClickLocal("b.txt", Qt::ControlModifier);
    QMenu* menu = MenuOf("list2", 1);
    ASSERT_TRUE(menu);
    EXPECT_EQ(Possible(*menu), "fleratabort2 Command3 Command7");
    ExpectBox box("Ta bort filer", "Vill du ta bort alla markerade filer ?", "cmdYes");
    Choose(*menu, "fleratabort2");
    EXPECT_EQ(Names(), QStringList());
}

TEST_F(Menus, TheServerMenuFollowsTheSelection) {
    Connect(server_.HostField());
    struct {
        const char* name;
        const char* possible;
    } const table[] = {
        {"x.txt", "Command11 Command12 Command10 Command13 Command2 Command21 Command14 Command9"},
        {"pub", "Command13 Command21 Command14 Command9"}};
    for (const auto& row : table) {
        QMenu* menu = MenuOf("listdir2", ServerRowOf(row.name));
        ASSERT_TRUE(menu);
        EXPECT_EQ(Possible(*menu), row.possible) << row.name;
        menu->close();
    }
    QMenu* menu = MenuOf("listdir2", ServerRowOf("y.txt"));
    ASSERT_TRUE(menu);
    ExpectBox box("Döp om fil", "Nytt namn på [y.txt]", "cmdOk", "z.txt");
    Choose(*menu, "Command10");
    EXPECT_EQ(Count("RNFR y.txt"), 1);
    EXPECT_EQ(Count("RNTO z.txt"), 1);
}

TEST_F(Menus, UploadingFromTheMenu) {
    Connect(server_.HostField());
    QMenu* menu = MenuOf("list2", 1);
    ASSERT_TRUE(menu);
    Choose(*menu, "Command1");
    EXPECT_EQ(server_.File("b.txt"), "b.txt");
}

TEST_F(Menus, AFolderBecomesAFavourite) {
    auto& folders = Get<toolkit::DirListBox>("Dir1");
    const int row = folders.ListCount() - 1;
    ASSERT_EQ(folders.List(row), Folder() + "\\mapp");
    for (const auto& [press, typed] :
         {std::pair<const char*, const char*>("cmdCancel", "x"), {"cmdOk", ""}, {"cmdOk", "Mina sidor"}}) {
        QMenu* menu = MenuOf("Dir1", row);
        ASSERT_TRUE(menu);
        ExpectBox box("Lägg till i favoriter", "Namn på favoriten " + Folder() + "\\mapp", press, typed);
        Choose(*menu, "favourite");
    }
    const settings::Favourites favourites = settings::LoadFavourites(store_);
    ASSERT_EQ(favourites.names.size(), 4);
    EXPECT_EQ(favourites.names.last(), "Mina sidor");
    EXPECT_EQ(favourites.folders.last(), Folder() + "\\mapp");
}

TEST_F(Menus, TheFolderMenuOpensFolders) {
    auto& folders = Get<toolkit::DirListBox>("Dir1");
    QMenu* menu = MenuOf("Dir1", folders.ListCount() - 1);
    ASSERT_TRUE(menu);
    Choose(*menu, "open");
    EXPECT_EQ(folders.Path(), Folder() + "\\mapp");
    menu = MenuOf("Dir1", 0);
    ASSERT_TRUE(menu);
    Choose(*menu, "parent");
    EXPECT_EQ(folders.Path(), Folder());
}

TEST_F(Menus, TheTraceIsCopiedSavedAndCleared) {
    window_->Trace("Första raden åäö");
    window_->Trace("Andra raden");
    TraceList().setFocus();
    QMenu* menu = MenuOf("listTrace", 0);
    ASSERT_TRUE(menu);
    Choose(*menu, "copy");
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "Första raden åäö");
    ASSERT_TRUE(menu = MenuOf("listTrace", 0));
    Choose(*menu, "all");
    EXPECT_EQ(TraceList().SelCount(), 2);

    const QString proposed = Folder() + QStringLiteral("\\ftp-händelser.txt");
    for (const char* press : {"cmdCancel", "cmdOk"}) {
        ASSERT_TRUE(menu = MenuOf("listTrace", 0));
        ExpectBox box("Spara händelserna", "Spara händelserna som", press);
        box.Meanwhile(
            [&](QDialog& dialog) { EXPECT_EQ(dialog.findChild<QLineEdit*>("txtInput")->text(), proposed); });
        Choose(*menu, "save");
    }
    EXPECT_EQ(LocalFile("ftp-händelser.txt"), "Första raden åäö\nAndra raden\n");
    EXPECT_TRUE(Names().contains("ftp-händelser.txt"));

    ASSERT_TRUE(menu = MenuOf("listTrace", 0));
    Choose(*menu, "clear");
    EXPECT_EQ(TraceList().ListCount(), 0);
    ASSERT_TRUE(menu = MenuOf("listTrace", -1));
    EXPECT_EQ(Possible(*menu), "");
    menu->close();
}

TEST_F(Menus, ASavedTraceReplacesNothingUnasked) {
    window_->Trace("En rad");
    for (const char* press : {"cmdNo", "cmdYes"}) {
        QMenu* menu = MenuOf("listTrace", 0);
        ASSERT_TRUE(menu);
        ExpectBox name("Spara händelserna", "Spara händelserna som", "cmdOk", "a.txt");
        ExpectBox question("Spara händelserna", "Vill du skriva över [" + Folder() + "\\a.txt] ?", press);
        EXPECT_EQ(LocalFile("a.txt"), "a.txt");
        Choose(*menu, "save");
    }
    EXPECT_EQ(LocalFile("a.txt"), "En rad\n");
}

TEST_F(Menus, ATraceThatCannotBeSavedSaysSo) {
    window_->Trace("En rad");
    QMenu* menu = MenuOf("listTrace", 0);
    ASSERT_TRUE(menu);
    ExpectBox name("Spara händelserna", "Spara händelserna som", "cmdOk", "C:\\finns\\inte\\a.txt");
    Choose(*menu, "save");
    EXPECT_EQ(TraceLines().filter("Fel nummer:").size(), 1);
}

// While an operation runs the trace can be read and kept; every other menu stays away.
TEST_F(Menus, WhileAnOperationRunsOnlyTheTraceHasItsMenu) {
    Connect(server_.HostField());
    server_.At("LIST", {ftp_test::Hold(), ftp_test::Proper()});
    bool seen = false;
    When([&] { return Count("LIST") == 2; },
         [&] {
             seen = true;
             for (const char* list : {"list2", "listdir2", "Dir1"}) {
                 auto& view = Get<QAbstractItemView>(list);
                 QTest::mousePress(window_->windowHandle(), Qt::RightButton, {},
                                   view.viewport()->mapTo(window_.get(), QPoint(20, 10)));
                 EXPECT_FALSE(QApplication::activePopupWidget()) << list;
             }
             QMenu* menu = MenuOf("listTrace", 0);
             ASSERT_TRUE(menu);
             Choose(*menu, "all");
             EXPECT_EQ(TraceList().SelCount(), TraceList().ListCount());
             server_.Release();
         });
    ClickOn("Command9");
    EXPECT_TRUE(seen);
}

TEST_F(Menus, KeysOfTheLocalFiles) {
    auto& list = Get("list2");
    ClickLocal("a.txt");
    {
        ExpectBox box("Döp om fil", "Nytt namn på [a.txt]", "cmdOk", "c.txt");
        QTest::keyClick(&list, Qt::Key_F2);
    }
    EXPECT_EQ(Names(), QStringList({"b.txt", "c.txt"}));
    ClickLocal("b.txt");
    {
        ExpectBox box("Ta bort fil", "Vill du ta bort [" + Folder() + "\\b.txt] ?", "cmdYes");
        QTest::keyClick(&list, Qt::Key_Delete);
    }
    WriteLocalFile("d.txt", "d");
    QTest::keyClick(&list, Qt::Key_F5);
    EXPECT_EQ(Names(), QStringList({"c.txt", "d.txt"}));
    ClickLocal("c.txt");
    QTest::keyClick(&list, Qt::Key_A, Qt::ControlModifier);
    {
        ExpectBox box("Ta bort filer", "Vill du ta bort alla markerade filer ?", "cmdYes");
        QTest::keyClick(&list, Qt::Key_Delete);
    }
    EXPECT_EQ(Names(), QStringList());
    WriteLocalFile("e.txt", "e");
    ClickOn("Command7");
    ClickLocal("e.txt");
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Delete, {}, QString(), true);
    QApplication::sendEvent(&list, &held);  // asks nothing
    ASSERT_TRUE(QFile::remove(files_.filePath("e.txt")));
    ClickOn("Command7");
    QTest::keyClick(&list, Qt::Key_Delete);  // nothing is marked
    QTest::keyClick(&list, Qt::Key_F2);
    QTest::keyClick(&list, Qt::Key_Backspace);
    EXPECT_EQ(Folder(), Get<toolkit::DirListBox>("Dir1").Path() + '\\' + Folder().section('\\', -1));
}

TEST_F(Menus, BackspaceStopsAtTheRoot) {
    auto& folders = Get<toolkit::DirListBox>("Dir1");
    folders.setFocus();
    for (int i = 0; i < 20; ++i) QTest::keyClick(&folders, Qt::Key_Backspace);
    EXPECT_EQ(folders.Path(), "C:\\");
}

TEST_F(Menus, KeysOfTheServerList) {
    Connect(server_.HostField());
    auto& list = Get("listdir2");
    ClickServer("x.txt");
    {
        ExpectBox box("Döp om fil", "Nytt namn på [x.txt]", "cmdCancel");
        QTest::keyClick(&list, Qt::Key_F2);
    }
    {
        ExpectBox box("Ta bort fil/katalog från server", "Vill du ta bort [x.txt] ?", "cmdYes");
        QTest::keyClick(&list, Qt::Key_Delete);
    }
    EXPECT_EQ(Count("DELE x.txt"), 1);
    QTest::keyClick(&list, Qt::Key_Backspace);
    EXPECT_EQ(Count("CDUP") + Count("CWD .."), 1);
    QTest::keyClick(&list, Qt::Key_F5);
    EXPECT_EQ(Count("LIST"), 4);
    QTest::keyClick(&list, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(ServerLines().SelCount(), 3);
}

// The keys of the lists are no keys of the fields beside them.
TEST_F(Menus, FieldsKeepTheirKeys) {
    auto& pattern = Get<QComboBox>("Text1");
    Replace(*pattern.lineEdit(), "*.txt");
    ClickLocal("a.txt");
    pattern.lineEdit()->setFocus();
    pattern.lineEdit()->end(false);
    QTest::keyClick(pattern.lineEdit(), Qt::Key_Backspace);
    EXPECT_EQ(pattern.currentText(), "*.tx");
    pattern.lineEdit()->home(false);
    QTest::keyClick(pattern.lineEdit(), Qt::Key_Delete);
    EXPECT_EQ(pattern.currentText(), ".tx");
    EXPECT_EQ(Get<toolkit::DirListBox>("Dir1").Path(), Folder());
}

}  // namespace
}  // namespace forms
