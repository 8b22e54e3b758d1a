#include <QCheckBox>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>

#include "settings/favourites.h"
#include "tests/forms/session/session.h"
#include "tests/support/longest_work.h"
#include "toolkit/message_box.h"

using ftp_test::Make;
using ftp_test::Say;
using ftp_test::Stall;
using ftp_test::TakeData;
using toolkit_test::ExpectBox;

namespace forms {
namespace {

namespace fs = std::filesystem;

const QString kDone = QStringLiteral("Överföringen av mapparna är nu klar!");

/// What lies below a folder: files with their bytes, and folders, whose paths end in "/".
using Tree = std::map<std::string, std::string>;

/// A large file's bytes are told by their number and a hash.
std::string BytesOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(in), {});
    if (bytes.size() < 20) return bytes;
    return std::to_string(bytes.size()) + ':' + std::to_string(std::hash<std::string>()(bytes));
}

Tree TreeBelow(const fs::path& folder) {
    Tree tree;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        const std::string path = entry.path().lexically_relative(folder);
        tree.emplace(entry.is_directory() ? path + '/' : path,
                     entry.is_directory() ? "" : BytesOf(entry.path()));
    }
    return tree;
}

/// What the lines of a job list make of an empty server.
Tree Promised(const QStringList& jobs) {
    Tree tree;
    std::vector<std::string> here{""};
    for (qsizetype row = 0; row < jobs.size(); ++row) {
        const QString& line = jobs[row];
        if (line == "cd ..") {
            if (row > 0 && here.size() > 1) here.pop_back();
        } else if (line.startsWith("Skapa ")) {
            here.push_back(here.back() + line.mid(6).toStdString() + '/');
            tree.emplace(here.back(), "");
        } else {
            const auto source = platform::Resolve(line.mid(4));
            tree[here.back() + line.mid(line.lastIndexOf('\\') + 1).toStdString()] =
                BytesOf(source.value_or("").toStdString());
        }
    }
    return tree;
}

class FolderUpload : public Session {
 protected:
    void MakeFile(const std::string& path, const std::string& bytes) {
        const fs::path file = fs::path(files_.path().toStdString()) / path;
        fs::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << bytes;
    }

    template <class Widget = QWidget>
    Widget& InDialog(const char* name) {
        Widget* found = Dialog().findChild<Widget*>(QString::fromLatin1(name));
        if (!found) throw std::runtime_error(name);
        return *found;
    }
    /// The last one that was opened, also after it has been closed.
    static QWidget& Dialog() {
        for (QWidget* window : QApplication::topLevelWidgets())
            if (window->objectName() == "fmRekurs") return *window;
        throw std::runtime_error("fmRekurs");
    }
    toolkit::DirListBox& Dir2() { return InDialog<toolkit::DirListBox>("Dir2"); }

    void Choose(const QString& folder, bool with_statistics = true) {
        ClickOn("Command23");
        ASSERT_TRUE(QTest::qWaitFor([] { return QApplication::activeWindow() == &Dialog(); }));
        InDialog<QCheckBox>("Check1").setChecked(true);
        InDialog<QCheckBox>("c2").setChecked(with_statistics);
        ASSERT_TRUE(Dir2().SetPath(Folder() + u'\\' + folder));
    }

    static QString Question(const QString& name) {
        return "Är du säker på att du vill skicka upp katalogen [" + name + "] samt dess innehåll?";
    }
    /// Sends what is chosen, but not to the end.
    void Begin(const QString& name) {
        const ExpectBox question("Bekräfta!", Question(name), "cmdYes");
        QTest::mouseClick(&InDialog("Command3"), Qt::LeftButton);
    }
    /// Sends what is chosen, to the end; the job list that was carried out.
    QStringList Send(const QString& name) {
        QStringList jobs;
        const ExpectBox question("Bekräfta!", Question(name), "cmdYes");
        ExpectBox done(toolkit::kDefaultTitle, kDone, "cmdOk");
        done.Meanwhile([&](QDialog&) { jobs = Jobs(); });
        QTest::mouseClick(&InDialog("Command3"), Qt::LeftButton);
        return jobs;
    }
    QStringList Jobs() {
        QStringList jobs;
        const auto& list = InDialog<toolkit::ListBox>("List1");
        for (int row = 0; row < list.ListCount(); ++row) jobs.append(list.List(row));
        return jobs;
    }

    void ExpectIdle() {
        EXPECT_FALSE(Window("fmRekurs"));
        EXPECT_TRUE(window_->isEnabled());
        EXPECT_EQ(Enabled(kRowButtons + QStringList("Command1")), QStringList());
        EXPECT_TRUE(Button("Command23").isEnabled());
        EXPECT_EQ(Strip("antal"), "0 %");
        EXPECT_EQ(BarWidth(), 15);
        EXPECT_FALSE(app::Globals().FolderUploadRunning);
        EXPECT_FALSE(app::Globals().ServerListBusy);
        EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
    }
};

class FolderUploadTo : public FolderUpload, public ::testing::WithParamInterface<Make> {
 protected:
    void SetUp() override {
        if (auto reason = ftp_test::WhyMissing(GetParam())) GTEST_SKIP() << *reason;
        FolderUpload::SetUp();
        // pyftpdlib looks into the folder in which it was started at each change of directory.
        fs::permissions(files_.path().toStdString(), fs::perms(0755));
    }

    /// A tree of any shape, deep branches and folders that differ only by case among it.
    void MakeTree(unsigned seed) {
        std::mt19937 random(seed);
        const auto any = [&random](unsigned below) { return random() % below; };
        const std::string names[] = {"a", "A", "Bilder", "å ä ö", "sub", "SUB", "x y"};
        std::vector<std::string> folders{"Tree"};
        for (int i = 0; i < 24; ++i)
            folders.push_back(
                folders[any(2) ? folders.size() - 1 : any(static_cast<unsigned>(folders.size()))] + '/' +
                names[any(std::size(names))]);
        for (const std::string& folder : folders) {
            fs::create_directories(fs::path(files_.path().toStdString()) / folder);
            for (unsigned file = any(4); file > 0; --file) {
                const std::size_t size = any(12) == 0 ? 300'000 : any(3000);
                MakeFile(folder + "/Fil" + std::to_string(file) + (any(2) ? ".TXT" : ".txt"),
                         std::string(size, static_cast<char>('a' + any(26))));
            }
        }
    }
};

TEST_P(FolderUploadTo, TheServerHasWhatTheJobListPromises) {
    for (const unsigned seed : {1U, 2U, 3U}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        fs::remove_all(files_.filePath("Tree").toStdString());
        MakeTree(seed);
        ftp_test::Server server(GetParam());
        Open();
        Connect(server.HostField());
        Choose("Tree");
        const Tree promised = Promised(Send("tree"));
        EXPECT_GT(promised.size(), 25u);
        EXPECT_EQ(TreeBelow(server.Home()), promised);
        ExpectIdle();
        EXPECT_EQ(ServerRowOf("tree"), 0);  // back where it began
        EXPECT_EQ(ServerLines().ListCount(), 1);

        // Once more: the folders are there already, and that stops nothing.
        Choose("Tree", false);
        Send("tree");
        EXPECT_EQ(TreeBelow(server.Home()), promised);
        ExpectIdle();
        EXPECT_EQ(ServerRowOf("tree"), 0);
        EXPECT_EQ(ServerLines().ListCount(), 1);
        Close();
    }
}

TEST_P(FolderUploadTo, GoesWhereTheWindowIs) {
    MakeFile("Webb/a.txt", "hej");
    ftp_test::Server server(GetParam());
    server.MakeFolder("inne");
    Open();
    Connect(server.HostField());
    DoubleClickServer("inne");
    Choose("Webb");
    Send("webb");
    EXPECT_EQ(TreeBelow(server.Home()),
              Tree({{"inne/", ""}, {"inne/webb/", ""}, {"inne/webb/a.txt", "hej"}}));
    EXPECT_EQ(ServerRowOf("webb"), 0);
    EXPECT_EQ(Get<QLabel>("label7").property("tag"), "3");
}

TEST_P(FolderUploadTo, GoesOnAfterAFolderThatIsRefused) {
    MakeFile("A/closed/new/f", "1");
    MakeFile("A/closed/f", "2");
    MakeFile("A/open/f", "3");
    ftp_test::Server server(GetParam());
    for (const char* folder : {"a", "a/closed", "a/closed/new"}) server.MakeFolder(folder);
    server.ProtectFolder("a/closed/new");
    server.ProtectFolder("a/closed");
    Open();
    Connect(server.HostField());
    Choose("A");
    Send("a");
    EXPECT_EQ(
        TreeBelow(server.Home()),
        Tree({{"a/", ""}, {"a/closed/", ""}, {"a/closed/new/", ""}, {"a/open/", ""}, {"a/open/f", "3"}}));
    EXPECT_GE(TraceLines().filter("Fel nummer:55").size(), 2) << qPrintable(TraceLines().join('\n'));
    ExpectIdle();
}

TEST_P(FolderUploadTo, GoesOnWhereNothingMayBeMade) {
    MakeFile("A/b/f", "1");
    ftp_test::Server server(GetParam());
    server.ProtectFolder("");
    Open();
    Connect(server.HostField());
    Choose("A");
    Send("a");
    EXPECT_EQ(TreeBelow(server.Home()), Tree());
    ExpectIdle();
}

TEST_P(FolderUploadTo, GoesOnAfterAFileThatHasNoRoom) {
    if (GetParam() == Make::PyFtpdLib) GTEST_SKIP() << "falls silent when its disk is full";
    MakeFile("A/1.txt", "ett");
    MakeFile("A/2.bin", std::string(3 << 20, 'x'));
    MakeFile("A/b/3.txt", "tre");
    ftp_test::Server server(GetParam(), {.home_bytes = 1 << 20});
    Open();
    Connect(server.HostField());
    Choose("A");
    Send("a");
    const Tree tree = TreeBelow(server.Home());
    EXPECT_EQ(tree.at("a/1.txt"), "ett");
    EXPECT_TRUE(tree.contains("a/b/"));
    EXPECT_GE(TraceLines().filter("Fel nummer:").size(), 1);
    ExpectIdle();
}

TEST_P(FolderUploadTo, EndsWhenTheServerDies) {
    for (int i = 0; i < 40; ++i) MakeFile("A/m" + std::to_string(i) + "/f.txt", std::string(20'000, 'x'));
    ftp_test::Server server(GetParam());
    Open();
    Connect(server.HostField());
    Choose("A");
    When([&] { return server.ReadFile("a/m1/f.txt").has_value(); }, [&] { server.Kill(); });
    Send("a");
    EXPECT_FALSE(fs::exists(server.Home() / "a/m9/f.txt"));
    EXPECT_GE(TraceLines().filter("Fel nummer:").size(), 40);
    ExpectIdle();
}

TEST_P(FolderUploadTo, TheWindowLivesMeanwhile) {
    for (int i = 0; i < 300; ++i)
        MakeFile("A/m" + std::to_string(i % 20) + "/f" + std::to_string(i), std::string(200, 'x'));
    ftp_test::Server server(GetParam());
    Open();
    Connect(server.HostField());
    Choose("A");
    const toolkit_test::LongestWork work;
    Send("a");
    EXPECT_LT(work.Milliseconds(), toolkit_test::kLongestWork);
    EXPECT_EQ(TreeBelow(server.Home()).size(), 321u);
}

INSTANTIATE_TEST_SUITE_P(Servers, FolderUploadTo, ::testing::ValuesIn(ftp_test::AllServers()),
                         [](const auto& server) { return ftp_test::Name(server.param); });

/// Over a scripted server.
class FolderUploadWindows : public FolderUpload {
 protected:
    void SetUp() override {
        FolderUpload::SetUp();
        MakeFile("Webb/a.txt", std::string(2000, 'a'));
        MakeFile("Webb/b.txt", std::string(2000, 'b'));
        Open();
        Connect(server_.HostField());
    }

    void ExpectAllClosed() {
        EXPECT_FALSE(window_->isVisible());
        for (const char* name : {"fmRekurs", "favviskat", "MsgBox"}) EXPECT_FALSE(Window(name)) << name;
        EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
        EXPECT_FALSE(app::Globals().FolderUploadRunning);
        EXPECT_FALSE(app::Globals().ServerListBusy);
    }

    ftp_test::ScriptedServer server_;
};

TEST_F(FolderUploadWindows, TheDialogHoldsTheMainWindow) {
    Button("Command23").setFocus();
    ClickOn("Command23");
    ASSERT_TRUE(Window("fmRekurs"));
    EXPECT_FALSE(window_->isEnabled());
    EXPECT_EQ(InDialog<QPushButton>("Command29").icon().cacheKey(), Button("Command29").icon().cacheKey());
    QTest::mouseClick(&InDialog("Command2"), Qt::LeftButton);
    EXPECT_FALSE(Window("fmRekurs"));
    EXPECT_TRUE(window_->isEnabled());
    EXPECT_TRUE(Button("Command23").hasFocus());
}

TEST_F(FolderUploadWindows, AFavouriteIsChosenInTheDialog) {
    settings::SaveFavourites(store_, {"Webb"}, {Folder() + "\\Webb"});
    ClickOn("Command23");
    InDialog<QCheckBox>("c2").setChecked(true);
    const QString local_folder = Get<toolkit::DirListBox>("Dir1").Path();
    QTest::mouseClick(&InDialog("Command29"), Qt::LeftButton);
    QWidget* favourites = Window("favviskat");
    ASSERT_TRUE(favourites);
    EXPECT_EQ(favourites->property("tag").toString(), "");
    EXPECT_FALSE(Dialog().isEnabled());
    EXPECT_FALSE(window_->isEnabled());
    EXPECT_EQ(favourites->windowHandle()->transientParent(), Dialog().windowHandle());
    QTest::mouseClick(favourites->findChild<QPushButton*>("Command1"), Qt::LeftButton);
    EXPECT_FALSE(Window("favviskat"));
    EXPECT_TRUE(Dialog().isEnabled());
    EXPECT_FALSE(window_->isEnabled());
    EXPECT_EQ(Dir2().Path(), Folder() + "\\Webb");
    EXPECT_TRUE(InDialog<QLabel>("Label6").text().startsWith("Mappen [webb] "));
    EXPECT_EQ(InDialog<QLabel>("l2").text(), "2 st");
    EXPECT_EQ(Get<toolkit::DirListBox>("Dir1").Path(), local_folder);
    QTest::mouseClick(&InDialog("Command2"), Qt::LeftButton);
    EXPECT_TRUE(window_->isEnabled());
}

TEST_F(FolderUploadWindows, TheMainWindowsOwnFavouritesAreAsBefore) {
    settings::SaveFavourites(store_, {"Webb"}, {Folder() + "\\Webb"});
    ClickOn("Command29");
    EXPECT_EQ(Window("favviskat")->property("tag"), "frmmdi");
    QTest::mouseClick(Window("favviskat")->findChild<QPushButton*>("Command1"), Qt::LeftButton);
    EXPECT_EQ(Get<toolkit::DirListBox>("Dir1").Path(), Folder() + "\\Webb");
}

// The bytes of all files together, against the total of the scan.
TEST_F(FolderUploadWindows, TheStripShowsTheWholeRun) {
    bool seen = false;
    Choose("Webb");
    server_.At("STOR b.txt", {Say("150 Send it."), TakeData(2000), ftp_test::Hold(), ftp_test::CloseData(),
                              Say("226 Done.")});
    When([this] { return Strip("label7") == "4096"; },
         [&] {
             seen = true;
             EXPECT_EQ(app::Globals().FolderUploadTotal, 4 * 1024);
             EXPECT_EQ(Strip("antal"), "100 %");
             EXPECT_FALSE(window_->isEnabled());
             server_.Release();
         });
    Send("webb");
    EXPECT_TRUE(seen);
    EXPECT_EQ(Strip("antal"), "0 %");
    EXPECT_EQ(Get<QLabel>("label7").property("tag"), "4000");
    Choose("Webb");
    server_.At("STOR b.txt", {ftp_test::Proper()});
    Send("webb");
    EXPECT_EQ(Get<QLabel>("label7").property("tag"), "8000");  // it is never taken back
}

TEST_F(FolderUploadWindows, ClosingTheMainWindowEndsTheSending) {
    server_.At("STOR a.txt", {Say("150 Send it."), TakeData(10), Stall()});
    server_.At("STOR b.txt", {Say("150 Send it."), TakeData(10), Stall()});
    Choose("Webb");
    When(
        [this] {
            const auto commands = server_.Commands();
            return std::ranges::any_of(commands, [](const std::string& c) { return c.starts_with("STOR"); });
        },
        [this] { window_->close(); });
    Begin("webb");
    ExpectAllClosed();
}

TEST_F(FolderUploadWindows, ClosingTheMainWindowEndsTheScan) {
    for (int i = 0; i < 500; ++i) MakeFile("Webb/m" + std::to_string(i) + "/f", "");
    ClickOn("Command23");
    InDialog<QCheckBox>("Check1").setChecked(true);
    InDialog<QCheckBox>("c2").setChecked(true);
    When([this] { return InDialog<QLabel>("l2").text() != "0 st"; }, [this] { window_->close(); });
    Dir2().SetPath(Folder() + "\\Webb");
    ExpectAllClosed();
    EXPECT_LT(Jobs().size(), 1500);
}

TEST_F(FolderUploadWindows, ClosingTheMainWindowEndsTheScanBeforeTheSending) {
    for (int i = 0; i < 500; ++i) MakeFile("Webb/m" + std::to_string(i) + "/f", "");
    Choose("Webb");
    When([] { return app::Globals().FolderUploadRunning; }, [this] { window_->close(); });
    Begin("webb");
    ExpectAllClosed();
    const auto commands = server_.Commands();
    EXPECT_TRUE(std::ranges::none_of(commands, [](const std::string& c) { return c.starts_with("MKD"); }));
}

TEST_F(FolderUploadWindows, ClosingTheMainWindowAnswersTheQuestion) {
    Choose("Webb");
    ExpectBox question("Bekräfta!", Question("webb"), ExpectBox::kNothing);
    question.Meanwhile([this](QDialog&) { window_->close(); });
    QTest::mouseClick(&InDialog("Command3"), Qt::LeftButton);
    ExpectAllClosed();
}

TEST_F(FolderUploadWindows, ClosingTheMainWindowAtTheEndIsFine) {
    Choose("Webb");
    const ExpectBox question("Bekräfta!", Question("webb"), "cmdYes");
    ExpectBox done(toolkit::kDefaultTitle, kDone, ExpectBox::kNothing);
    done.Meanwhile([this](QDialog&) { window_->close(); });
    QTest::mouseClick(&InDialog("Command3"), Qt::LeftButton);
    ExpectAllClosed();
}

TEST_F(FolderUploadWindows, ClosingTheMainWindowClosesTheFavouritesToo) {
    ClickOn("Command23");
    QTest::mouseClick(&InDialog("Command29"), Qt::LeftButton);
    ASSERT_TRUE(Window("favviskat"));
    window_->close();
    ExpectAllClosed();
}

}  // namespace
}  // namespace forms
