#include <sys/fsuid.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/forms/folderupload/folder_upload_dialog.h"
#include "tests/platform/as_nobody.h"
#include "tests/support/longest_work.h"

namespace forms {
namespace {

class FolderScan : public FolderUploadDialog {
 protected:
    void TearDown() override {
        EXPECT_TRUE(trace_.isEmpty()) << qUtf8Printable(trace_.join('\n'));
        FolderUploadDialog::TearDown();
    }
    QStringList TakeTrace() {
        const QStringList lines = Trace();
        trace_.clear();
        return lines;
    }
};

TEST_F(FolderScan, MakesALineForEachStep) {
    MakeFile("R/INDEX.HTM");
    MakeFile("R/Bilder/LOGO.GIF");
    MakeFile("R/Bilder/b.gif");
    MakeFile("R/Ljud/a.wav");
    MakeFile("R/Ljud/Gamla/o.wav");
    MakeFile("R/text/t.txt");
    Choose("R");
    EXPECT_EQ(Lines(), QStringList({"Skapa r", "Fil R\\index.htm",                                      //
                                    "Skapa bilder", "Fil R\\Bilder\\b.gif", "Fil R\\Bilder\\logo.gif",  //
                                    "cd ..", "Skapa ljud", "Fil R\\Ljud\\a.wav",                        //
                                    "Skapa gamla", "Fil R\\Ljud\\Gamla\\o.wav",                         //
                                    "cd ..", "cd ..", "Skapa text", "Fil R\\text\\t.txt"}));
    EXPECT_EQ(Statistics(), "5 st|6 st|0 KB|00 tim. 01 min.");
    EXPECT_EQ(Get("Dir1").property("tag"), "text\\");
    EXPECT_EQ(Dir2().property("tag"), "");
    EXPECT_EQ(app::Globals().ScanCounter, 0);
}

TEST_F(FolderScan, WithoutSubfoldersListsTheFolderAlone) {
    MakeFile("R/a.txt");
    MakeFile("R/b.txt");
    MakeFile("R/u/c.txt");
    Choose("R", false);
    EXPECT_EQ(Lines(), QStringList({"Skapa r", "Fil R\\a.txt", "Fil R\\b.txt"}));
    EXPECT_EQ(Statistics(), "1 st|2 st|0 KB|00 tim. 01 min.");
}

TEST_F(FolderScan, WithoutStatisticsCountsNothing) {
    MakeFile("R/a.txt", std::string(5000, 'a'));
    Choose("R", true, false);
    Scan();
    EXPECT_EQ(Lines(), QStringList({"Skapa r", "Fil R\\a.txt"}));
    EXPECT_EQ(Statistics(), kNothing);
}

TEST_F(FolderScan, SizesAddUpAsTheyAreShown) {
    MakeFile("R/a", std::string(600, 'a'));
    MakeFile("R/b", std::string(500, 'a'));
    MakeFile("R/c", std::string(1'024'000, 'a'));
    Choose("R");
    EXPECT_EQ(Statistics(), "1 st|3 st| 1 001 KB|00 tim. 05 min.");
}

// From R\a\b\c to R\x there are three steps up, and four are the most.
TEST_F(FolderScan, ClimbsFourLevelsAtMost) {
    MakeFolder("R/a/b/c");
    MakeFolder("R/m/n/o/p");
    MakeFolder("R/x");
    Choose("R");
    EXPECT_EQ(Lines(),
              QStringList({"Skapa r", "Skapa a", "Skapa b", "Skapa c", "cd ..", "cd ..", "cd ..", "Skapa m",
                           "Skapa n", "Skapa o", "Skapa p", "cd ..", "cd ..", "cd ..", "cd ..", "Skapa x"}));
}

TEST_F(FolderScan, FindsNoWayBackFromADeeperBranch) {
    MakeFolder("R/a/b/c/d/e");
    MakeFile("R/x/f");
    MakeFolder("R/y");
    Choose("R");
    EXPECT_EQ(Lines(), QStringList({"Skapa r", "Skapa a", "Skapa b", "Skapa c", "Skapa d", "Skapa e",
                                    "Skapa x", "Fil R\\x\\f", "cd ..", "Skapa y"}));
}

TEST_F(FolderScan, LeavesOutWhatIsHiddenAndWhatIsNoFile) {
    MakeFile("R/.htaccess");
    MakeFile("R/.a/.b");
    MakeFile("R/.a/c");
    MakeFile("R/d");
    MakeLink("R/dangling", "nowhere");
    MakeLink("R/to d", "d");
    ASSERT_EQ(mkfifo(Native("R/pipe").c_str(), 0600), 0);
    Choose("R");
    EXPECT_EQ(Lines(), QStringList({"Skapa r", "Fil R\\d", "Fil R\\to d", "Skapa .a", "Fil R\\.a\\c"}));
    EXPECT_EQ(TakeTrace(), QStringList({"Dolda filer togs inte med: 2 st", "Dolda mappar togs med: 1 st"}));
    Scan();
    EXPECT_EQ(TakeTrace(), QStringList()) << "told already";
}

TEST_F(FolderScan, WalksALinkThatDoesNotLeadBack) {
    MakeFile("elsewhere/f");
    MakeFolder("R/a");
    MakeLink("R/a/out", "../../elsewhere");
    MakeLink("R/b", "a");
    Choose("R");
    EXPECT_EQ(Lines(), QStringList({"Skapa r", "Skapa a", "Skapa out", "Fil R\\a\\out\\f", "cd ..", "cd ..",
                                    "Skapa b", "Skapa out", "Fil R\\b\\out\\f"}));
}

TEST_F(FolderScan, SkipsALinkThatLeadsBack) {
    MakeFolder("R/a/b");
    MakeFolder("R/c");
    MakeLink("R/a/self", ".");
    MakeLink("R/a/b/top", "../..");
    MakeLink("R/c/to a", "../a");
    MakeLink("R/a/to c", "../c");
    Choose("R");
    EXPECT_EQ(Lines(), QStringList({"Skapa r", "Skapa a", "Skapa b", "cd ..", "Skapa to c", "cd ..", "cd ..",
                                    "Skapa c", "Skapa to a", "Skapa b"}));
    const QString skipped = "Länken leder tillbaka och togs inte med: ";
    EXPECT_EQ(TakeTrace(), QStringList({skipped + "R\\a\\b\\top", skipped + "R\\a\\self",
                                        skipped + "R\\a\\to c\\to a", skipped + "R\\c\\to a\\b\\top",
                                        skipped + "R\\c\\to a\\self", skipped + "R\\c\\to a\\to c"}));
}

TEST_F(FolderScan, SkipsALinkThatLeadsAboveTheChosenFolder) {
    MakeFile("private/diary");
    MakeFile("private/R/page");
    MakeLink("private/R/up", "..");
    MakeLink("private/R/root", "/");
    Choose("private/R");
    EXPECT_EQ(Lines(), QStringList({"Skapa r", "Fil private\\R\\page"}));
    const QString skipped = "Länken leder tillbaka och togs inte med: ";
    EXPECT_EQ(TakeTrace(), QStringList({skipped + "private\\R\\root", skipped + "private\\R\\up"}));
}

TEST_F(FolderScan, NamesThatDifferOnlyByCaseAreBothListed) {
    MakeFile("R/LOGO.GIF");
    MakeFile("R/logo.gif");
    MakeFile("R/Bilder/a");
    MakeFile("R/bilder/a");
    MakeFolder("R/z");
    Choose("R");
    EXPECT_EQ(Lines(), QStringList({"Skapa r", "Fil R\\logo.gif", "Fil R\\logo.gif", "Skapa bilder",
                                    "Fil R\\Bilder\\a", "cd ..", "Skapa bilder", "Fil R\\bilder\\a", "cd ..",
                                    "Skapa z"}));
    EXPECT_EQ(Statistics(), "4 st|4 st|0 KB|00 tim. 01 min.");
    EXPECT_EQ(TakeTrace(), QStringList({"R\\LOGO.GIF skrivs över på servern av R\\logo.gif",
                                        "R\\Bilder\\a skrivs över på servern av R\\bilder\\a"}));
}

TEST_F(FolderScan, TellsOfTwentyFilesThatAreReplaced) {
    for (int i = 0; i < 25; ++i) {
        MakeFile("R/a" + std::to_string(i));
        MakeFile("R/A" + std::to_string(i));
    }
    Choose("R");
    const QStringList trace = TakeTrace();
    ASSERT_EQ(trace.size(), 21);
    EXPECT_EQ(trace.last(), "Ytterligare filer som skrivs över på servern: 5 st");
}

/// Without the superuser's rights in the file system, which know no closed doors.
class Unprivileged {
 public:
    Unprivileged() { setfsuid(kNobody); }
    ~Unprivileged() { setfsuid(0); }
};

class UnreadableFolder : public FolderScan {
 protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "gives up the rights of root";
        FolderScan::SetUp();
        ASSERT_EQ(chmod(Native("").c_str(), 0755), 0);
    }
};

// Its own line is dropped, and with it the rest of the walk.
TEST_F(UnreadableFolder, EndsTheWalk) {
    MakeFile("R/a/f");
    MakeFile("R/b/closed/f");
    MakeFile("R/b/open/f");
    MakeFile("R/c/f");
    ASSERT_EQ(chmod(Native("R/b/closed").c_str(), 0), 0);
    Open();
    const Unprivileged user;
    Choose("R");
    EXPECT_EQ(Lines(), QStringList({"Skapa r", "Skapa a", "Fil R\\a\\f", "cd ..", "Skapa b"}));
    EXPECT_EQ(TakeTrace(), QStringList("Mappen kan inte läsas, resten togs inte med: R\\b\\closed"));
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
    EXPECT_EQ(Statistics(), "4 st|1 st|0 KB|00 tim. 01 min.");
    ASSERT_TRUE(Dir2().SetPath(Path("R/c")));  // and the next one is as any other
    EXPECT_EQ(Lines(), QStringList({"Skapa c", "Fil R\\c\\f"}));
}

// A path longer than paths may be cannot be read.
TEST_F(FolderScan, APathThatIsTooLongEndsTheWalk) {
    const std::string name(200, 'n');
    MakeFile("R/a/f");
    MakeChain("R", name, 25);
    MakeFile("R/z/f");
    Choose("R");
    const QStringList lines = Lines();
    EXPECT_GE(lines.size(), 20);
    EXPECT_LE(lines.size(), 24);
    EXPECT_EQ(lines.last(), "Skapa " + QString::fromStdString(name));
    EXPECT_EQ(TakeTrace().size(), 1);
}

TEST_F(FolderScan, AFolderThatHasGoneGivesAnEmptyList) {
    MakeFile("R/a");
    Choose("R");
    std::filesystem::remove_all(Native("R"));
    Scan();
    EXPECT_EQ(Lines(), QStringList());
    EXPECT_EQ(Statistics(), kNothing);
    EXPECT_EQ(TakeTrace(), QStringList("Mappen kan inte läsas, resten togs inte med: R"));
}

TEST_F(FolderScan, AChainOfAThousandFoldersIsWalked) {
    MakeChain("R", "d", 1000);
    Choose("R");
    const QStringList lines = Lines();
    ASSERT_EQ(lines.size(), 1002);
    EXPECT_TRUE(lines.last().endsWith("\\d\\f"));
    EXPECT_EQ(Text("l1"), "1001 st");
    EXPECT_EQ(Text("l2"), "1 st");
}

/// A tree that takes a while, made once.
class LargeTree : public FolderScan {
 protected:
    static void SetUpTestSuite() {
        tree_ = std::make_unique<ScratchFolder>();
        for (int folder = 0; folder < kFolders; ++folder) {
            const std::filesystem::path path = tree_->FilePath("R").toStdString() + '/' +
                                               std::to_string(folder % 10) + "/m" + std::to_string(folder);
            std::filesystem::create_directories(path);
            for (int file = 0; file < kFilesPerFolder; ++file)
                std::ofstream(path / ("fil" + std::to_string(file) + ".txt"));
        }
    }
    static void TearDownTestSuite() { tree_.reset(); }
    void SetUp() override {
        FolderScan::SetUp();
        MakeLink("R", tree_->FilePath("R").toStdString());
    }

    static constexpr int kFolders = 1'000, kFilesPerFolder = 20;
    static inline std::unique_ptr<ScratchFolder> tree_;
};

TEST_F(LargeTree, IsScannedWhileTheWindowLives) {
    Open();
    int grown = 0;
    QString last;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &look, [&] {
        EXPECT_NE(QGuiApplication::overrideCursor(), nullptr);
        if (std::exchange(last, Text("l2")) != last) ++grown;
    });
    look.start(0);
    const toolkit_test::LongestWork work;
    Choose("R");
    EXPECT_LT(work.Milliseconds(), toolkit_test::kLongestWork);
    EXPECT_GE(grown, 3);
    EXPECT_EQ(Text("l1"), "1011 st");
    EXPECT_EQ(Text("l2"), "20000 st");
    EXPECT_EQ(Lines().size(), 1011 + 20000 + 2 * 9 + 990);
}

TEST_F(LargeTree, InputWaitsForTheEndOfTheScan) {
    Open();
    bool pressed = false;
    When([this] { return QGuiApplication::overrideCursor() && Text("l2") != "0 st"; },
         [&] {
             pressed = true;
             ClickOn("Command3");
             QTest::keyClick(dialog_->windowHandle(), Qt::Key_M, Qt::AltModifier);
             ClickOn("Check1");
             Scan();  // nor does another one begin in the middle
         });
    Choose("R");
    EXPECT_TRUE(pressed);
    EXPECT_TRUE(Get<QCheckBox>("Check1").isChecked());
    EXPECT_EQ(Text("l2"), "20000 st");
}

TEST_F(LargeTree, ClosingTheDialogEndsTheScan) {
    Open();
    When([this] { return Text("l2") != "0 st"; }, [this] { dialog_->close(); });
    Choose("R");
    EXPECT_FALSE(dialog_->isVisible());
    EXPECT_TRUE(window_.isEnabled());
    EXPECT_LT(Lines().size(), 20000);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

// Found in its folder's list, and gone when its turn comes.
TEST_F(FolderScan, AFolderThatGoesMeanwhileEndsTheWalk) {
    app::LongWork::longest_step = 0;
    for (int i = 0; i < 10; ++i) MakeFolder("R/a/" + std::to_string(i));
    MakeFolder("R/b");
    Open();
    When([this] { return Text("l1") != "0 st"; }, [this] { std::filesystem::remove(Native("R/b")); });
    Choose("R");
    EXPECT_EQ(TakeTrace(), QStringList("Mappen kan inte läsas, resten togs inte med: R\\b"));
    EXPECT_EQ(Text("l1"), "13 st");
    EXPECT_EQ(Lines().last(), "cd ..");
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

}  // namespace
}  // namespace forms
